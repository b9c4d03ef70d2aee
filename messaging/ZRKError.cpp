#include "messaging/ZRKError.h"

#include "platform/Format.h"
#include "platform/Localization.h"
#include "protocol/ErrorCodes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

namespace {

// How one placeholder of a message is filled.
enum class Fill {
    None,
    Object,         // the value's description
    Signed,         // the value as a C int
    Unsigned,       // the value as a message number
    Joined,         // the elements of an array, with commas between them
    ErrnoText,      // the C library's text for the value
    SignalText,     // likewise for a signal number
    StatusCodeText, // the standard phrase for an HTTP status code
    LocalizedText,  // `key` is itself a text to look up
};

struct Placeholder {
    Fill fill = Fill::None;
    const char* key = nullptr;
};

struct Message {
    const char* domain;
    std::int64_t code;
    const char* text;
    std::array<Placeholder, 3> placeholders = {};
    const char* requiredKey = nullptr; // the message is only for errors that have this key
};

using enum Fill;

// The first message that fits an error is the one.
constexpr Message messages[] = {
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate, "You are already running the latest version."},
    {ZRKUpdaterErrorDomain,
     ZRKUpdaterErrorFetchInfo,
     "%@ %@ (%@).",
     {{{LocalizedText, "Could not fetch update information."},
       {StatusCodeText, "status-code"},
       {Object, "status-code"}}},
     "status-code"},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo, "Could not fetch update information."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorReadData, "Could not read update data."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorInvalidInfo, "Invalid update information: %@.", {{{Object, "info"}}}},
    {ZRKUpdaterErrorDomain,
     ZRKUpdaterErrorDownload,
     "%@ %@ (%@).",
     {{{LocalizedText, "Could not download update."}, {StatusCodeText, "status-code"}, {Object, "status-code"}}},
     "status-code"},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorDownload, "Could not download update."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorMovePackage, "Could not move update package."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorValidate, "Could not validate update."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorInstall, "Could not install update."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorCannotUpdateNow, "Update cannot be performed now."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorPhasedDeferral, "Update has been deferred due to phased update."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorUntrustedServer,
     "The update server could not be trusted, you may be victim of SSL/TLS decryption."},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorTooManyRequests,
     "You have made too many requests to the update server. Please try again later."},

    {ZRKInstallerPackageErrorDomain,
     ZRKInstallerPackageErrorRead,
     "Could not read installer package at path '%@'.",
     {{{Object, "path"}}}},
    {ZRKInstallerPackageErrorDomain, ZRKInstallerPackageErrorNotSigned, "Installer package is not signed."},
    {ZRKInstallerPackageErrorDomain, ZRKInstallerPackageErrorInvalidSignature,
     "Installer package signature is invalid."},

    {ZRKSpawnerErrorDomain,
     ZRKSpawnerErrorSpawn,
     "Could not spawn '%@'. %s (%d).",
     {{{Object, "tool"}, {ErrnoText, "errno"}, {Signed, "errno"}}}},
    {ZRKSpawnerErrorDomain,
     ZRKSpawnerErrorExitStatus,
     "%@ exited with status %@.",
     {{{Object, "tool"}, {Object, "exit-status"}}}},
    {ZRKSpawnerErrorDomain,
     ZRKSpawnerErrorSignal,
     "%@ received signal %d (%s).",
     {{{Object, "tool"}, {Signed, "signal"}, {SignalText, "signal"}}}},

    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorAuthorize,
     "Could not authorize message (%lu).",
     {{{Unsigned, "message"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorMissingAuthorization,
     "Authorization data is missing for message (%lu).",
     {{{Unsigned, "message"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorSerializeMessage,
     "Could not serialize message (%lu), payload: %@.",
     {{{Unsigned, "message"}, {Object, "payload"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorDeserializeMessage,
     "Could not deserialize message (%lu).",
     {{{Unsigned, "message"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorSerializeReply,
     "Could not serialize reply for message (%lu), reply: %@.",
     {{{Unsigned, "message"}, {Object, "reply"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorDeserializeReply,
     "Could not deserialize reply for message (%lu).",
     {{{Unsigned, "message"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorUnarchiveReplyError,
     "Could not unarchive reply error for message (%lu).",
     {{{Unsigned, "message"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorServiceUnavailable,
     "Could not send message (%lu), the service is not available (%@).",
     {{{Unsigned, "message"}, {Object, "service"}}},
     "message"},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorServiceUnavailable,
     "The service is not available (%@).",
     {{{Object, "service"}}}},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorServiceDisappeared,
     "Could not send message (%lu), the service disappeared (crash?) (%@).",
     {{{Unsigned, "message"}, {Object, "service"}}},
     "message"},
    {ZRKMessagerErrorDomain,
     ZRKMessagerErrorServiceDisappeared,
     "The service disappeared (%@).",
     {{{Object, "service"}}}},

    {ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorUserCanceled, "User canceled authentication."},
    {ZRKAuthorizationErrorDomain,
     ZRKAuthorizationErrorCreate,
     "Could not create authorization: %@.",
     {{{Object, "status"}}}},
    {ZRKAuthorizationErrorDomain,
     ZRKAuthorizationErrorMakeExternalForm,
     "Could not make external form: %@.",
     {{{Object, "status"}}}},
    {ZRKAuthorizationErrorDomain,
     ZRKAuthorizationErrorCreateFromExternalForm,
     "Could not create from external form: %@.",
     {{{Object, "status"}}}},
    {ZRKAuthorizationErrorDomain,
     ZRKAuthorizationErrorSetRights,
     "Could not set rights (%@): %@.",
     {{{Object, "status"}, {Joined, "rights"}}},
     "status"},
    {ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorSetRights, "Could not set rights: %@.", {{{Joined, "rights"}}}},
    {ZRKAuthorizationErrorDomain,
     ZRKAuthorizationErrorValidateRights,
     "Could not validate rights: %@.",
     {{{Object, "rights"}}}},
    {ZRKAuthorizationErrorDomain,
     ZRKAuthorizationErrorAuthorizeRights,
     "Could not authorize rights: %@.",
     {{{Object, "rights"}}}},

    {BRVErrorDomain, BRVErrorBackupRunning, "A backup operation is currently running."},
    {BRVErrorDomain, BRVErrorUpdateRunning, "An update operation is currently running."},
    {BRVErrorDomain, BRVErrorPeersConnected, "Peers are connected."},
    {BRVErrorDomain, BRVErrorMissingValue, "Missing value for key: '%@'.", {{{Object, "key"}}}},
    {BRVErrorDomain,
     BRVErrorWrongType,
     "Wrong type for key: '%@', expected: '%@'.",
     {{{Object, "key"}, {Object, "expected"}}}},
    {BRVErrorDomain, BRVErrorUnknownKey, "Unknown key: '%@'.", {{{Object, "key"}}}},
};

// Expected outcomes and refusals; every other error is a failure.
constexpr struct {
    const char* domain;
    std::int64_t code;
    LogLevel level;
} levels[] = {
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate, LogLevelDefault},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorCannotUpdateNow, LogLevelDefault},
    {ZRKUpdaterErrorDomain, ZRKUpdaterErrorPhasedDeferral, LogLevelDefault},
    {ZRKMessagerErrorDomain, ZRKMessagerErrorServiceUnavailable, LogLevelDefault},
    {ZRKMessagerErrorDomain, ZRKMessagerErrorServiceDisappeared, LogLevelDefault},
    {ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorUserCanceled, LogLevelInfo},
    {BRVErrorDomain, BRVErrorBackupRunning, LogLevelDefault},
    {BRVErrorDomain, BRVErrorUpdateRunning, LogLevelDefault},
    {BRVErrorDomain, BRVErrorPeersConnected, LogLevelDefault},
};

// Absent values are 0, and a string counts by the number that it begins with.
std::int64_t integerValue(const platform::PropertyList* value)
{
    if (!value)
        return 0;
    const auto* string = value->string();
    if (!string)
        return value->integerValue();
    auto text = std::string_view(*string);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
    if (text.starts_with('+'))
        text.remove_prefix(1);
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string joined(const platform::PropertyList& value)
{
    const auto* elements = value.array();
    if (!elements)
        return platform::description(value);
    std::string text;
    for (const auto& element : *elements) {
        if (!text.empty())
            text += ", ";
        text += platform::description(element);
    }
    return text;
}

// A text made for a placeholder, or a value to print as it is.
using Filling = std::variant<const platform::PropertyList*, std::string, std::int64_t, std::uint64_t>;

Filling filling(const Placeholder& placeholder, const platform::Dictionary& userInfo)
{
    if (placeholder.fill == None)
        return nullptr;
    if (placeholder.fill == LocalizedText)
        return platform::localizedString(placeholder.key);
    const auto* value = userInfo.find(placeholder.key);
    switch (placeholder.fill) {
    case Signed:
        return std::int64_t(static_cast<std::int32_t>(integerValue(value)));
    case Unsigned:
        return static_cast<std::uint64_t>(integerValue(value));
    case Joined:
        return value ? Filling(joined(*value)) : nullptr;
    case ErrnoText:
        return std::string(std::strerror(static_cast<int>(integerValue(value))));
    case SignalText:
        return std::string(strsignal(static_cast<int>(integerValue(value))));
    case StatusCodeText:
        return platform::localizedStringForStatusCode(integerValue(value));
    default:
        return value;
    }
}

platform::FormatArgument argument(const Filling& filling)
{
    return std::visit([](const auto& value) { return platform::FormatArgument(value); }, filling);
}

std::string filledText(const Message& message, const platform::Dictionary& userInfo)
{
    const Filling fillings[] = {filling(message.placeholders[0], userInfo), filling(message.placeholders[1], userInfo),
                                filling(message.placeholders[2], userInfo)};
    const auto fill = [&](std::string_view format) {
        return platform::formatString(format, {argument(fillings[0]), argument(fillings[1]), argument(fillings[2])});
    };
    // A translation with wrong placeholders must not cost the user the message.
    return fill(platform::localizedString(message.text))
        .or_else([&] { return fill(message.text); })
        .value_or(message.text);
}

} // namespace

platform::Error ZRKError::errorWithDomain(std::string domain, std::int64_t code, platform::Dictionary userInfo,
                                          std::shared_ptr<const platform::Error> underlying)
{
    platform::Error error{std::move(domain), code, std::move(userInfo), std::move(underlying)};
    log(error);
    return error;
}

platform::Error ZRKError::errorWithDomain(std::string domain, std::int64_t code, platform::Dictionary userInfo,
                                          platform::Error underlying)
{
    return errorWithDomain(std::move(domain), code, std::move(userInfo),
                           std::make_shared<const platform::Error>(std::move(underlying)));
}

void ZRKError::log(const platform::Error& error)
{
    ZRKLogMessage(logLevelForError(error), "%@", {localizedDescriptionForError(error)});
}

std::string ZRKError::localizedDescriptionForError(const platform::Error& error)
{
    auto text = _localizedDescriptionForError(error);
    for (const auto* next = error.underlying.get(); next; next = next->underlying.get())
        text += " " + _localizedDescriptionForError(*next);
    return text;
}

std::string ZRKError::_localizedDescriptionForError(const platform::Error& error)
{
    for (const auto& message : messages) {
        if (message.code == error.code && message.domain == error.domain
            && (!message.requiredKey || error.userInfo.contains(message.requiredKey)))
            return filledText(message, error.userInfo);
    }
    return platform::localizedDescription(error);
}

LogLevel ZRKError::logLevelForError(const platform::Error& error)
{
    for (const auto& rated : levels) {
        if (rated.code == error.code && rated.domain == error.domain)
            return rated.level;
    }
    return LogLevelError;
}

bool userCanceledAuthentication(const platform::Error& error)
{
    for (const auto* each = &error; each; each = each->underlying.get()) {
        if (each->domain == ZRKAuthorizationErrorDomain && each->code == ZRKAuthorizationErrorUserCanceled)
            return true;
    }
    return false;
}
