#include "helper/linux/update/DownloadUnit.h"

#include "helper/linux/update/DownloadPipe.h"
#include "platform/linux/system/processes/ServiceUnit.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sysexits.h>
#include <unistd.h>
#include <vector>

namespace helper {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* credential = "authorities";
constexpr std::chrono::milliseconds restOfLife{500}; // between two signs of it
constexpr std::chrono::seconds timeToEnd{10};

// No user's rights, no file that is not everybody's, and the network.
constexpr const char* confinement[] = {
    "Description=Download by Brevane",
    "DynamicUser=yes",
    "ProtectHome=yes",
    "PrivateDevices=yes",
    "PrivateIPC=yes",
    "ProtectProc=invisible",
    "ProtectClock=yes",
    "ProtectControlGroups=yes",
    "ProtectHostname=yes",
    "ProtectKernelLogs=yes",
    "ProtectKernelModules=yes",
    "ProtectKernelTunables=yes",
    "CapabilityBoundingSet=",
    "RestrictAddressFamilies=AF_UNIX AF_NETLINK AF_INET AF_INET6",
    "RestrictNamespaces=yes",
    "RestrictRealtime=yes",
    "LockPersonality=yes",
    "MemoryDenyWriteExecute=yes",
    "SystemCallArchitectures=native",
    "SystemCallFilter=@system-service",
    "SystemCallFilter=~@privileged @resources",
    "SystemCallErrorNumber=EPERM",
    "MemoryMax=256M",
    "TasksMax=16",
    "UMask=0077",
};
// Which proxy the helper was told to use.
constexpr const char* variables[] = {"http_proxy",  "https_proxy", "all_proxy", "no_proxy",
                                     "HTTPS_PROXY", "ALL_PROXY",   "NO_PROXY"};

std::string assignment(std::string name, const std::string& value)
{
    name += '=';
    name += value;
    return name;
}

std::vector<std::string> properties(const UpdateConfiguration& configuration, std::chrono::seconds time)
{
    std::vector<std::string> all(std::begin(confinement), std::end(confinement));
    all.push_back(assignment("RuntimeMaxSec", std::to_string((time + timeToEnd).count())));
    if (!configuration.authorities.empty())
        all.push_back(assignment("LoadCredential", credential + (":" + configuration.authorities)));
    for (const char* const name : variables) {
        if (const char* const value = std::getenv(name))
            all.push_back(assignment("Environment", assignment(name, value)));
    }
    return all;
}

template <class Number>
std::optional<Number> numberIn(const char* text)
{
    Number number = 0;
    const auto* const end = text + std::strlen(text);
    const auto [rest, failure] = std::from_chars(text, end, number);
    return failure == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

std::string fileOfAuthorities()
{
    const char* const folder = std::getenv("CREDENTIALS_DIRECTORY");
    const auto path = folder ? std::string(folder) + "/" + credential : std::string();
    return !path.empty() && ::access(path.c_str(), R_OK) == 0 ? path : std::string();
}

} // namespace

bool DownloadUnit::isNeeded(const std::string& url)
{
    return Download::isWebAddress(url) && platform::isServiceUnit();
}

Download::Outcome<void> DownloadUnit::perform(const std::string& url, const UpdateConfiguration& configuration,
                                              const Download::Terms& terms, const Download::Sink& sink)
{
    const auto process =
        platform::startApart(properties(configuration, terms.time),
                             {"--download", url, std::to_string(terms.size), std::to_string(terms.time.count()),
                              std::to_string(configuration.patience.count())});
    if (!process)
        return std::unexpected(
            Download::Failure{Download::Fault::Network, 0, {platform::POSIXErrorDomain, process.error(), {}, nullptr}});
    return DownloadPipe::read([&](std::span<char> bytes) { return (*process)->read(bytes); }, terms, sink);
}

std::optional<int> runDownloadCommand(int count, const char* const* arguments)
{
    if (count < 2 || std::string_view(arguments[1]) != "--download")
        return std::nullopt;
    const auto size = count == 6 ? numberIn<std::uint64_t>(arguments[3]) : std::nullopt;
    const auto time = count == 6 ? numberIn<std::uint32_t>(arguments[4]) : std::nullopt;
    const auto silence = count == 6 ? numberIn<std::uint32_t>(arguments[5]) : std::nullopt;
    if (!size || !time || !silence || !Download::isWebAddress(arguments[2]))
        return EX_USAGE;
    ::signal(SIGPIPE, SIG_IGN); // writing says it
    auto configuration = UpdateConfiguration::builtIn();
    configuration.patience = std::chrono::seconds(*silence);
    configuration.authorities = fileOfAuthorities();
    const auto isGivenUp = [last = Clock::now()]() mutable {
        if (Clock::now() - last < restOfLife)
            return false;
        last = Clock::now();
        return DownloadPipe::writeSignOfLife(STDOUT_FILENO) != 0;
    };
    const auto outcome = Download(configuration)
                             .performHere(arguments[2], {*size, std::chrono::seconds(*time), isGivenUp},
                                          [](auto bytes) { return DownloadPipe::writePiece(STDOUT_FILENO, bytes); });
    return DownloadPipe::writeOutcome(STDOUT_FILENO, outcome) == 0 ? EXIT_SUCCESS : EX_IOERR;
}

} // namespace helper
