#!/usr/bin/env bash
# Runs a program with a journal of its own and prints what the journal kept of it, one JSON object a line; or runs the
# command that follows the program, which is to read that journal.
# To be run as root in a private mount namespace.
set -euo pipefail
program=$1

mount -t tmpfs tmpfs /run
mkdir -p /run/systemd/journal /run/systemd/journald.conf.d /run/log/journal
cat > /run/systemd/journald.conf.d/private.conf <<'CONFIGURATION'
[Journal]
Storage=volatile
ReadKMsg=no
Audit=no
ForwardToSyslog=no
RateLimitIntervalSec=0
CONFIGURATION
touch /run/systemd/journal/flushed

setpriv --pdeathsig KILL /usr/lib/systemd/systemd-journald &
journal=$!
trap 'kill $journal' EXIT
for _ in $(seq 100); do
    [ -S /run/systemd/journal/socket ] && break
    sleep 0.05
done

# By its number, which the socket tells; its path is only known if the journal looked in time.
"$program" 2>/dev/null &
probe=$!
wait "$probe"
journalctl --sync
shift
if [ $# -gt 0 ]; then
    "$@"
    exit
fi
journalctl --output=json --no-pager "_PID=$probe"
