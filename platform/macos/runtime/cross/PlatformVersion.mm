// What the compiler makes of availability checks calls these two. Apple's compiler brings them; others do not.
#include <cstdint>
#import <Foundation/Foundation.h>

namespace {

// A system without the query is 10.9, the oldest that the product runs on.
bool isAtLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t patch)
{
    NSProcessInfo* const process = NSProcessInfo.processInfo;
    if (![process respondsToSelector:@selector(isOperatingSystemAtLeastVersion:)])
        return major < 10 || (major == 10 && minor <= 9);
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunguarded-availability"
    return [process isOperatingSystemAtLeastVersion:NSOperatingSystemVersion{major, minor, patch}];
#pragma clang diagnostic pop
}

} // namespace

extern "C" {

std::int32_t __isOSVersionAtLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t patch);
std::int32_t __isPlatformVersionAtLeast(std::uint32_t platform, std::uint32_t major, std::uint32_t minor,
                                        std::uint32_t patch);

std::int32_t __isOSVersionAtLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t patch)
{
    return isAtLeast(major, minor, patch);
}

std::int32_t __isPlatformVersionAtLeast(std::uint32_t, std::uint32_t major, std::uint32_t minor, std::uint32_t patch)
{
    return isAtLeast(major, minor, patch);
}

} // extern "C"
