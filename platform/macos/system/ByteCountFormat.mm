#include "platform/ByteCountFormat.h"

#include "platform/macos/system/Foundation.h"

#include <algorithm>
#include <limits>

namespace platform {

struct ByteCountFormat::Native {
    NSByteCountFormatter* formatter = [[NSByteCountFormatter alloc] init];
};

ByteCountFormat::ByteCountFormat() : _native(std::make_unique<Native>())
{
    _native->formatter.countStyle = NSByteCountFormatterCountStyleFile;
}

ByteCountFormat::~ByteCountFormat() = default;

std::string ByteCountFormat::stringFromByteCount(std::uint64_t count)
{
    constexpr std::uint64_t most = std::numeric_limits<long long>::max();
    @autoreleasepool {
        const auto bytes = static_cast<long long>(std::min(count, most));
        return foundation::string([_native->formatter stringFromByteCount:bytes]);
    }
}

} // namespace platform
