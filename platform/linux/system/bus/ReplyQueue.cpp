#include "platform/linux/system/bus/ReplyQueue.h"

#include <algorithm>
#include <iterator>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace platform {

namespace {

// What the system keeps on the way to the bus, in bytes; it tells of room from a quarter of it on.
constexpr int SocketSize = 16384;

} // namespace

ReplyQueue::ReplyQueue(sd_bus* bus, BusPeers& peers) : _bus(bus), _peers(peers)
{
    setsockopt(sd_bus_get_fd(bus), SOL_SOCKET, SO_SNDBUF, &SocketSize, sizeof SocketSize);
}

void ReplyQueue::add(const std::string& peer, std::size_t size, BusMessage message)
{
    _lines[_peers.userOf(peer)].push_back({peer, size, std::move(message)});
    send();
}

void ReplyQueue::send()
{
    while (!_lines.empty() && hasRoom())
        sendNext();
}

bool ReplyQueue::hasRoom() const
{
    std::uint64_t unsent = 0;
    if (sd_bus_get_n_queued_write(_bus, &unsent) < 0 || unsent > 0)
        return false;
    pollfd descriptor = {sd_bus_get_fd(_bus), POLLOUT, 0};
    return poll(&descriptor, 1, 0) > 0;
}

void ReplyQueue::sendNext()
{
    auto line = _lines.upper_bound(_last);
    if (line == _lines.end())
        line = _lines.begin();
    _last = line->first;
    const Reply reply = std::move(line->second.front());
    line->second.pop_front();
    if (line->second.empty())
        _lines.erase(line);
    if (!_peers.isKnown(reply.peer))
        return;
    sd_bus_send(_bus, reply.message.get(), nullptr);
    _peers.sent(reply.peer, reply.size);
}

void ReplyQueue::identify(const ServicePeer& peer)
{
    const auto unknown = _lines.find(std::nullopt);
    if (unknown == _lines.end())
        return;
    std::deque<Reply>& from = unknown->second;
    const auto first =
        std::stable_partition(from.begin(), from.end(), [&](const Reply& reply) { return reply.peer != peer.name; });
    if (first == from.end())
        return;
    std::move(first, from.end(), std::back_inserter(_lines[peer.user]));
    from.erase(first, from.end());
    if (from.empty())
        _lines.erase(unknown);
}

} // namespace platform
