#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace platform {

// Prints sizes of files in the user's locale: in the largest unit that gives at least 1, units a thousand apart; whole
// bytes and kilobytes, megabytes with at most one decimal, larger units with at most two. One thread at a time.
class ByteCountFormat {
public:
    ByteCountFormat();
    ~ByteCountFormat();
    ByteCountFormat(const ByteCountFormat&) = delete;
    ByteCountFormat& operator=(const ByteCountFormat&) = delete;

    std::string stringFromByteCount(std::uint64_t count);

private:
    struct Native;
    std::unique_ptr<Native> _native;
};

} // namespace platform
