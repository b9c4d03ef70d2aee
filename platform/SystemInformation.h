#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

struct OperatingSystemVersion {
    std::int64_t major = 0;
    std::int64_t minor = 0;
    std::int64_t patch = 0;
};

// False on systems that predate the version query (before 10.10); then isOperatingSystemAtLeast has no answer.
bool offersOperatingSystemQuery();
bool isOperatingSystemAtLeast(OperatingSystemVersion version);

std::uint32_t userIdentifier();
std::uint32_t effectiveUserIdentifier();
std::int32_t processIdentifier();
std::string homeDirectory(); // no trailing slash
std::string bundleVersion(); // CFBundleVersion

// From now on the system never ends this process without asking it to terminate, until that was enabled as often as it
// was disabled. Any thread.
void disableSuddenTermination();
void enableSuddenTermination();

// Where a fixed path of the product, such as "/Library/Brevane/...", stands on this edition.
std::string systemPath(std::string_view path);
bool fileExists(const std::string& path);

} // namespace platform
