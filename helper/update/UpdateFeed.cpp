#include "helper/update/UpdateFeed.h"

#include "helper/update/Cryptography.h"
#include "helper/update/Download.h"
#include "helper/update/MachineIdentity.h"
#include "messaging/ZRKError.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <utility>

namespace helper {

using platform::Dictionary;

namespace {

constexpr std::size_t maximumTextLength = 2048;

const std::string* presentText(const Dictionary& feed, const char* key)
{
    const auto* text = feed.stringForKey(key);
    return text && !text->empty() && text->size() <= maximumTextLength ? text : nullptr;
}

// The number under the key or, when the key is absent, the usual one; nullopt when it is out of range.
std::optional<std::int64_t> numberForKey(const Dictionary& feed, const char* key, std::int64_t usual,
                                         std::int64_t highest)
{
    const auto* value = feed.find(key);
    if (!value)
        return usual;
    auto number = value->integerValue();
    return value->isNumber() && number >= 0 && number <= highest ? std::optional(number) : std::nullopt;
}

std::optional<UpdateInformation> readFeed(const Dictionary& feed, const std::string& url)
{
    const auto* version = presentText(feed, PayloadKey::Version);
    const auto* humanVersion = presentText(feed, PayloadKey::HumanVersion);
    const auto* package = presentText(feed, "Package");
    if (!version || !humanVersion || !package)
        return std::nullopt;
    auto number = VersionNumber::parse(*version);
    auto address = Download::resolve(*package, url);
    auto size = numberForKey(feed, "Size", 0, UpdateFeed::maximumPackageSize);
    auto share = numberForKey(feed, "Share", 100, 100);
    const auto* byHand = feed.find("URL");
    if (!number || !address || !size || !share
        || (byHand && !(byHand->string() && Download::isWebAddress(*byHand->string()))))
        return std::nullopt;
    Dictionary reply{{PayloadKey::Version, *version}, {PayloadKey::HumanVersion, *humanVersion}};
    if (byHand)
        reply.set("URL", *byHand);
    return UpdateInformation{std::move(*number), std::move(*address), static_cast<std::uint64_t>(*size), *share,
                             std::move(reply)};
}

} // namespace

platform::Result<UpdateInformation> UpdateFeed::informationInFeed(const platform::Data& bytes, const std::string& url)
{
    auto value = platform::propertyListWithData(bytes);
    if (!value)
        return std::unexpected(
            ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, ZRKUpdaterErrorReadData, {}, std::move(value.error())));
    auto information = value->dictionary() ? readFeed(*value->dictionary(), url) : std::nullopt;
    if (!information)
        return std::unexpected(
            ZRKError::errorWithDomain(ZRKUpdaterErrorDomain, ZRKUpdaterErrorInvalidInfo, {{"info", *value}}));
    return std::move(*information);
}

int UpdateFeed::placeOfMachine(const std::string& version)
{
    // The machine's identity leaves the machine in no form, and each version has another order.
    auto identity = machineIdentity();
    identity.insert(identity.end(), version.begin(), version.end());
    const auto digest = sha256(identity);
    return (digest[0] << 8 | digest[1]) % 100;
}

} // namespace helper
