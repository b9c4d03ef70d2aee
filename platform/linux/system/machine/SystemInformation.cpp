#include "platform/SystemInformation.h"

#include "platform/AtomicFile.h"
#include "platform/ProgramPath.h"
#include "platform/PropertyListCoding.h"
#include "platform/Root.h"

#include <atomic>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <pthread.h>
#include <pwd.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr OperatingSystemVersion defaultVersion{14, 0, 0};

bool isBefore(OperatingSystemVersion left, OperatingSystemVersion right)
{
    return std::tie(left.major, left.minor, left.patch) < std::tie(right.major, right.minor, right.patch);
}

// One to three numbers between dots.
std::optional<OperatingSystemVersion> parseVersion(std::string_view text)
{
    OperatingSystemVersion version;
    const char* at = text.data();
    const char* end = at + text.size();
    for (auto* number : {&version.major, &version.minor, &version.patch}) {
        auto [next, failure] = std::from_chars(at, end, *number);
        if (failure != std::errc() || *number < 0)
            return std::nullopt;
        if (next == end)
            return version;
        if (*next != '.')
            return std::nullopt;
        at = next + 1;
    }
    return std::nullopt;
}

OperatingSystemVersion systemVersion()
{
    const char* text = std::getenv("BREVANE_SYSTEM_VERSION");
    return text ? parseVersion(text).value_or(defaultVersion) : defaultVersion;
}

// Every line of the log asks for it, and the system call would cost more than all else in a line but the write.
// 0 when it has not been asked for since the process began.
constinit std::atomic<pid_t> knownProcess = 0;

std::string accountHome()
{
    std::vector<char> buffer(16384);
    passwd account{};
    passwd* found = nullptr;
    if (::getpwuid_r(::geteuid(), &account, buffer.data(), buffer.size(), &found) != 0 || !found)
        return {};
    return account.pw_dir;
}

// That of the installation which this program is part of, for whoever packages it may count it up without building it
// anew.
std::optional<std::string> installedVersion()
{
    const auto folder = programFolder();
    for (const auto* list : {"/installation.plist", "/../installation.plist"}) {
        const auto bytes = readFile(folder + list);
        const auto value = bytes ? propertyListWithData(*bytes) : Result<PropertyList>();
        const auto* const record = value ? value->dictionary() : nullptr;
        const auto* const version = record ? record->stringForKey("Version") : nullptr;
        if (version)
            return *version;
    }
    return std::nullopt;
}

} // namespace

bool offersOperatingSystemQuery()
{
    return !isBefore(systemVersion(), {10, 10, 0});
}

bool isOperatingSystemAtLeast(OperatingSystemVersion version)
{
    return !isBefore(systemVersion(), version);
}

std::uint32_t userIdentifier()
{
    return ::getuid();
}

std::uint32_t effectiveUserIdentifier()
{
    return ::geteuid();
}

std::int32_t processIdentifier()
{
    static const bool forgetsOnFork = ::pthread_atfork(nullptr, nullptr, [] { knownProcess = 0; }) == 0;
    pid_t process = knownProcess.load(std::memory_order_relaxed);
    if (process == 0) {
        process = ::getpid();
        knownProcess = forgetsOnFork ? process : 0;
    }
    return process;
}

std::string homeDirectory()
{
    const char* variable = std::getenv("HOME");
    std::string home = variable && *variable ? variable : accountHome();
    while (home.ends_with('/'))
        home.pop_back();
    return home;
}

std::string bundleVersion()
{
    // Read once: an update replaces the list while this process goes on as the old version.
    static const auto& version = *new std::string(installedVersion().value_or(BREVANE_BUNDLE_VERSION));
    return version;
}

// A session here always asks first, with a signal.
void disableSuddenTermination() { }
void enableSuddenTermination() { }

std::string systemPath(std::string_view path)
{
    return systemRoot().append(path);
}

bool fileExists(const std::string& path)
{
    return ::access(path.c_str(), F_OK) == 0;
}

} // namespace platform
