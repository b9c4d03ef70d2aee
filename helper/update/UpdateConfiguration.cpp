#include "helper/update/UpdateConfiguration.h"

#include "platform/AtomicFile.h"
#include "platform/FileDescriptor.h"
#include "platform/PropertyListCoding.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace helper {

namespace {

constexpr std::chrono::seconds usualPatience{30};
constexpr std::chrono::seconds usualInterval = std::chrono::hours(24);
constexpr std::chrono::seconds usualKeeping{60};
constexpr std::chrono::seconds usualTrial{60};
constexpr std::size_t maximumFileSize = 65536;

std::optional<UpdateConfiguration::PublicKey> keyOfHexadecimal(std::string_view text)
{
    UpdateConfiguration::PublicKey key{};
    if (text.size() != 2 * key.size())
        return std::nullopt;
    for (std::size_t index = 0; index < key.size(); ++index) {
        const char* at = text.data() + 2 * index;
        auto [end, failure] = std::from_chars(at, at + 2, key[index], 16);
        if (failure != std::errc() || end != at + 2)
            return std::nullopt;
    }
    return key;
}

// Whether only root and this user can have written it.
bool isTrustworthy(int file)
{
    struct stat status{};
    return ::fstat(file, &status) == 0 && (status.st_uid == 0 || status.st_uid == ::geteuid())
        && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// What is checked is what is read: one descriptor, whatever the path leads to meanwhile.
std::expected<platform::Data, int> readTrustworthyFile(const std::string& path)
{
    const platform::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file || !isTrustworthy(file.get()))
        return std::unexpected(EACCES);
    return platform::readFile(file.get(), maximumFileSize);
}

} // namespace

UpdateConfiguration UpdateConfiguration::builtIn()
{
    return {BREVANE_UPDATE_FEED, keyOfHexadecimal(BREVANE_UPDATE_KEY), {}, usualPatience, usualInterval, usualKeeping,
            usualTrial};
}

std::expected<UpdateConfiguration, std::string> UpdateConfiguration::inFile(const std::string& path)
{
    const auto bytes = readTrustworthyFile(path);
    if (!bytes && bytes.error() == EACCES)
        return std::unexpected("The file '" + path + "' is missing, or others may write it.");
    auto value = bytes ? platform::propertyListWithData(*bytes) : platform::Result<platform::PropertyList>();
    const auto* record = value ? value->dictionary() : nullptr;
    const auto* feed = record ? record->stringForKey("Feed") : nullptr;
    const auto* keyValue = record ? record->find("PublicKey") : nullptr;
    const auto* key = keyValue ? keyValue->data() : nullptr;
    if (!feed || !key || key->size() != std::tuple_size_v<PublicKey>)
        return std::unexpected("The file '" + path + "' does not name a feed and a public key of 32 bytes.");

    UpdateConfiguration configuration{*feed, PublicKey(), {}, usualPatience, usualInterval, usualKeeping, usualTrial};
    std::ranges::copy(*key, configuration.key->begin());
    if (const auto* authorities = record->stringForKey("Authorities"))
        configuration.authorities = *authorities;
    if (auto seconds = record->integerForKey("Patience"); seconds > 0 && seconds <= 3600)
        configuration.patience = std::chrono::seconds(seconds);
    if (auto seconds = record->integerForKey("Interval"); seconds > 0 && seconds <= usualInterval.count() * 366)
        configuration.interval = std::chrono::seconds(seconds);
    if (auto seconds = record->integerForKey("Keeping"); record->find("Keeping") && seconds >= 0 && seconds <= 3600)
        configuration.keeping = std::chrono::seconds(seconds);
    if (auto seconds = record->integerForKey("Trial"); seconds > 0 && seconds <= 3600)
        configuration.trial = std::chrono::seconds(seconds);
    return configuration;
}

} // namespace helper
