#include "tests/platform/ScriptedSystemInformation.h"

#include <mutex>
#include <set>
#include <tuple>

namespace scripted::system {

namespace {

struct Machine {
    platform::OperatingSystemVersion version{14, 0, 0};
    std::uint32_t user = 501;
    std::uint32_t effectiveUser = 501;
    std::int32_t process = 812;
    std::string home = "/dev/null/home";
    std::string bundleVersion = "1234";
    std::string root;
    std::set<std::string> files;
    int suddenTerminationDisabled = 0;
};

std::mutex& mutex()
{
    static std::mutex* const shared = new std::mutex;
    return *shared;
}

Machine& machine()
{
    static Machine* const shared = new Machine;
    return *shared;
}

// Runs the body on the machine with the lock held.
template <class Body>
auto locked(Body body)
{
    const std::lock_guard lock(mutex());
    return body(machine());
}

} // namespace

void reset()
{
    locked([](Machine& it) { it = Machine(); });
}

void setOperatingSystemVersion(platform::OperatingSystemVersion version)
{
    locked([&](Machine& it) { it.version = version; });
}

void setUserIdentifiers(std::uint32_t real, std::uint32_t effective)
{
    locked([&](Machine& it) {
        it.user = real;
        it.effectiveUser = effective;
    });
}

void setProcessIdentifier(std::int32_t identifier)
{
    locked([&](Machine& it) { it.process = identifier; });
}

void setHomeDirectory(const std::string& path)
{
    locked([&](Machine& it) { it.home = path; });
}

void setBundleVersion(const std::string& version)
{
    locked([&](Machine& it) { it.bundleVersion = version; });
}

int suddenTerminationDisabled()
{
    return locked([](Machine& it) { return it.suddenTerminationDisabled; });
}

void setRoot(const std::string& root)
{
    locked([&](Machine& it) { it.root = root; });
}

void addFile(const std::string& path)
{
    locked([&](Machine& it) { it.files.insert(path); });
}

void removeFile(const std::string& path)
{
    locked([&](Machine& it) { it.files.erase(path); });
}

} // namespace scripted::system

namespace platform {

using scripted::system::locked;
using scripted::system::Machine;

bool offersOperatingSystemQuery()
{
    return isOperatingSystemAtLeast({10, 10, 0});
}

bool isOperatingSystemAtLeast(OperatingSystemVersion version)
{
    return locked([&](Machine& it) {
        return std::tie(it.version.major, it.version.minor, it.version.patch)
            >= std::tie(version.major, version.minor, version.patch);
    });
}

std::uint32_t userIdentifier()
{
    return locked([](Machine& it) { return it.user; });
}

std::uint32_t effectiveUserIdentifier()
{
    return locked([](Machine& it) { return it.effectiveUser; });
}

std::int32_t processIdentifier()
{
    return locked([](Machine& it) { return it.process; });
}

std::string homeDirectory()
{
    return locked([](Machine& it) { return it.home; });
}

std::string bundleVersion()
{
    return locked([](Machine& it) { return it.bundleVersion; });
}

void disableSuddenTermination()
{
    locked([](Machine& it) { ++it.suddenTerminationDisabled; });
}

void enableSuddenTermination()
{
    locked([](Machine& it) { --it.suddenTerminationDisabled; });
}

std::string systemPath(std::string_view path)
{
    return locked([&](Machine& it) { return it.root + std::string(path); });
}

bool fileExists(const std::string& path)
{
    return locked([&](Machine& it) { return it.files.contains(path); });
}

} // namespace platform
