#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"
#include "tests/messaging/Logging.h"
#include "tests/platform/ScriptedAuthorization.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <string_view>

using platform::Dictionary;

namespace {

// The tables are read once in a process: its environment names the language and where they are.
bool isGerman()
{
    const auto* const language = std::getenv("LANGUAGE");
    return language && std::string_view(language) == "de" && std::getenv("BREVANE_RESOURCES");
}

std::string text(const char* domain, std::int64_t code, const Dictionary& userInfo = {})
{
    return ZRKError::localizedDescriptionForError({domain, code, userInfo, nullptr});
}

} // namespace

TEST_CASE("an error is described in the user's language")
{
    REQUIRE(isGerman());
    CHECK(text(BRVErrorDomain, BRVErrorPeersConnected) == "Andere sind verbunden.");
    CHECK(text(ZRKUpdaterErrorDomain, ZRKUpdaterErrorDownload) == "Die Aktualisierung kam nicht an.");
}

TEST_CASE("a translated format is filled after the lookup")
{
    CHECK(text(ZRKMessagerErrorDomain, ZRKMessagerErrorAuthorize, {{"message", 21}})
          == "Nachricht 21 wurde nicht erlaubt.");
}

TEST_CASE("a translation may name its values in another order")
{
    CHECK(text(BRVErrorDomain, BRVErrorWrongType, {{"key", "Minutes"}, {"expected", "number"}})
          == "Erwartet war 'number' als Typ von 'Minutes'.");
}

TEST_CASE("a text without translation stays English")
{
    CHECK(text(BRVErrorDomain, BRVErrorMissingValue, {{"key", "Mode"}}) == "Missing value for key: 'Mode'.");
}

TEST_CASE("a translation with more placeholders than values gives way to the English text")
{
    CHECK(text(BRVErrorDomain, BRVErrorUnknownKey, {{"key", "Colour"}}) == "Unknown key: 'Colour'.");
}

TEST_CASE("a failed download with a status code begins with the translated text")
{
    CHECK(text(ZRKUpdaterErrorDomain, ZRKUpdaterErrorDownload, {{"status-code", 404}})
              .starts_with("Die Aktualisierung kam nicht an. "));
}

TEST_CASE("an error is logged in the user's language")
{
    const Logging log;
    ZRKError::errorWithDomain(ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorUserCanceled);
    CHECK(Logging::unified() == UnifiedMessages{{1, "Die Anmeldung wurde abgebrochen."}});
    CHECK(log.fileTexts() == Texts{"Die Anmeldung wurde abgebrochen."});
}

TEST_CASE("the authentication dialog's prompt is in the user's language")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    REQUIRE(manager.authorizeRights({BRVRightUninstall}));
    const auto asked = scripted::authorization::calls(scripted::authorization::Operation::CopyRight);
    CHECK(asked[0].prompt == "Zum Ändern bitte anmelden.");
}
