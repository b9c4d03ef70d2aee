#include "platform/linux/system/queues/EventDescriptor.h"

#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>

namespace platform {

EventDescriptor::EventDescriptor() : _descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) { }

void EventDescriptor::signal() const
{
    const int error = errno;
    const std::uint64_t one = 1;
    // It can only fail when the counter is full, and then it is signalled already.
    [[maybe_unused]] const ssize_t written = ::write(_descriptor.get(), &one, sizeof one);
    errno = error;
}

void EventDescriptor::reset() const
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = ::read(_descriptor.get(), &count, sizeof count);
}

} // namespace platform
