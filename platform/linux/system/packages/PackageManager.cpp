#include "platform/linux/system/packages/PackageManager.h"

#include "platform/linux/system/packages/PackageTransaction.h"

#include <algorithm>
#include <cstdint>

namespace platform {

namespace {

using Failure = PackageManager::Failure;
using Kind = Failure::Kind;

constexpr std::uint64_t noFilter = 1 << 1;
constexpr std::uint64_t installedOnly = 1 << 2;
constexpr std::uint64_t trustedOnly = 1 << 1;

int appendOne(sd_bus_message* message, const std::string& text)
{
    return sd_bus_message_append(message, "as", 1, text.c_str());
}

std::optional<std::string> identifierOf(const std::vector<std::string>& identifiers, const std::string& package)
{
    const auto found =
        std::ranges::find_if(identifiers, [&](const auto& each) { return each.starts_with(package + ";"); });
    return found == identifiers.end() ? std::nullopt : std::optional(*found);
}

// What is on offer, by lists that were fetched anew.
std::expected<std::optional<std::string>, Failure> offeredPackage(const std::string& package,
                                                                  const PackageManager::GivenUp& isGivenUp)
{
    const auto refreshed = PackageTransaction::run(
        "RefreshCache", [](auto* message) { return sd_bus_message_append(message, "b", 0); }, isGivenUp);
    if (!refreshed)
        return std::unexpected(refreshed.error());
    const auto offered = PackageTransaction::run(
        "GetUpdates", [](auto* message) { return sd_bus_message_append(message, "t", noFilter); }, isGivenUp);
    if (!offered)
        return std::unexpected(offered.error());
    return identifierOf(*offered, package);
}

} // namespace

std::expected<std::optional<std::string>, Failure> PackageManager::newerVersion(const std::string& package,
                                                                                const GivenUp& isGivenUp)
{
    const auto offered = offeredPackage(package, isGivenUp);
    if (!offered)
        return std::unexpected(offered.error());
    if (!*offered)
        return std::nullopt;
    const auto start = (*offered)->find(';') + 1;
    return (*offered)->substr(start, (*offered)->find(';', start) - start);
}

std::expected<bool, Failure> PackageManager::update(const std::string& package, const GivenUp& isGivenUp)
{
    const auto offered = offeredPackage(package, isGivenUp);
    if (!offered)
        return std::unexpected(offered.error());
    if (!*offered)
        return false;
    const auto compose = [&](sd_bus_message* message) {
        const int result = sd_bus_message_append(message, "t", trustedOnly);
        return result < 0 ? result : appendOne(message, **offered);
    };
    if (const auto done = PackageTransaction::run("UpdatePackages", compose, isGivenUp); !done)
        return std::unexpected(done.error());
    return true;
}

std::expected<void, Failure> PackageManager::remove(const std::string& package, const GivenUp& isGivenUp)
{
    const auto installed = PackageTransaction::run(
        "Resolve",
        [&](auto* message) {
            const int result = sd_bus_message_append(message, "t", installedOnly);
            return result < 0 ? result : appendOne(message, package);
        },
        isGivenUp);
    if (!installed)
        return std::unexpected(installed.error());
    const auto identifier = identifierOf(*installed, package);
    if (!identifier)
        return std::unexpected(Failure{Kind::Other, "The package manager does not know the package."});
    const auto compose = [&](sd_bus_message* message) {
        int result = sd_bus_message_append(message, "t", std::uint64_t(0));
        result = result < 0 ? result : appendOne(message, *identifier);
        return result < 0 ? result : sd_bus_message_append(message, "bb", 0, 0);
    };
    if (const auto done = PackageTransaction::run("RemovePackages", compose, isGivenUp); !done)
        return std::unexpected(done.error());
    return {};
}

} // namespace platform
