// Runs one backup in the background, started by the scheduler helper and independent of it from then on.

#include "helper/linux/backupd/BackupSession.h"
#include "platform/Root.h"

#include <csignal>
#include <cstdio>
#include <string_view>
#include <sys/stat.h>
#include <sysexits.h>
#include <unistd.h>

int main(int count, char** arguments)
{
    if (count != 5 || std::string_view(arguments[1]) != "--root" || std::string_view(arguments[3]) != "--identifier") {
        std::fputs("usage: com.zerkolin.brevane.backupd --root FOLDER --identifier NAME\n"
                   "Runs the backup of that name, which the scheduler helper hands over on the standard input.\n",
                   stderr);
        return EX_USAGE;
    }
    ::umask(077);
    ::signal(SIGPIPE, SIG_IGN); // the helper may end before the backup
    platform::setSystemRoot(arguments[2]);
    if (::chdir("/") != 0)
        return EX_OSERR;
    return helper::BackupSession(arguments[4]).run();
}
