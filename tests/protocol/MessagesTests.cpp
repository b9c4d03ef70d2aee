#include "protocol/ErrorCodes.h"
#include "protocol/Messages.h"

#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

using Rights = std::vector<std::string>;

TEST_CASE("each message number from 0 to 28 needs its rights, those for settings in their order")
{
    const Rights none;
    const Rights settings{"com.zerkolin.brevane.settings.modify-1", "com.zerkolin.brevane.settings.modify-2"};
    const Rights uninstall{"com.zerkolin.brevane.uninstall"};
    const std::vector<Rights> expected{
        none, none,     settings, settings, settings, none,     settings, none,     none,      none,
        none, settings, settings, settings, settings, none,     none,     settings, none,      none,
        none, settings, settings, settings, none,     settings, none,     settings, uninstall,
    };
    REQUIRE(expected.size() == 29);
    for (std::int64_t message = 0; message < 29; ++message) {
        CAPTURE(message);
        CHECK(BRVAuthorizationRightsForMessage(message) == expected[static_cast<std::size_t>(message)]);
    }
}

TEST_CASE("a number below 0 or above 28 has no entry, which is something else than an empty one")
{
    for (const std::int64_t message :
         {std::int64_t(-1), std::int64_t(29), std::int64_t(256), std::int64_t(1) << 32,
          std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        CAPTURE(message);
        CHECK(BRVAuthorizationRightsForMessage(message) == std::nullopt);
    }
    CHECK(BRVAuthorizationRightsForMessage(0) == Rights());
    CHECK(BRVMessageLast == 28);
}

TEST_CASE("the messages have the numbers that both sides were built with")
{
    CHECK(BRVMessageGetSettings == 1);
    CHECK(BRVMessageApplySettings == 2);
    CHECK(BRVMessageStartBackup == 3);
    CHECK(BRVMessageGetStatus == 5);
    CHECK(BRVMessageSetAllowWithoutPassword == 6);
    CHECK(BRVMessageGetBackupProgram == 7);
    CHECK(BRVMessageListSnapshots == 11);
    CHECK(BRVMessageSetBackupProgram == 12);
    CHECK(BRVMessageGetAutoUpdates == 18);
    CHECK(BRVMessageSetAutoUpdates == 21);
    CHECK(BRVMessageCheckForUpdates == 26);
    CHECK(BRVMessageInstallUpdate == 27);
    CHECK(BRVMessageUninstall == 28);
}

TEST_CASE("the service, the rights and the keys of the payloads have their names")
{
    using namespace std::string_view_literals;
    CHECK(BRVSchedulerServiceName == "com.zerkolin.brevane.scheduler"sv);
    CHECK(BRVRightModifySettings1 == "com.zerkolin.brevane.settings.modify-1"sv);
    CHECK(BRVRightModifySettings2 == "com.zerkolin.brevane.settings.modify-2"sv);
    CHECK(BRVRightUninstall == "com.zerkolin.brevane.uninstall"sv);
    CHECK(PayloadKey::Allow == "Allow"sv);
    CHECK(PayloadKey::Applied == "Applied"sv);
    CHECK(PayloadKey::Enabled == "Enabled"sv);
    CHECK(PayloadKey::Version == "Version"sv);
    CHECK(PayloadKey::HumanVersion == "HumanVersion"sv);
}

TEST_CASE("the error domains have their names")
{
    using namespace std::string_view_literals;
    CHECK(ZRKUpdaterErrorDomain == "com.zerkolin.updater"sv);
    CHECK(ZRKInstallerPackageErrorDomain == "com.zerkolin.installer-package"sv);
    CHECK(ZRKSpawnerErrorDomain == "com.zerkolin.spawner"sv);
    CHECK(ZRKMessagerErrorDomain == "com.zerkolin.messager"sv);
    CHECK(ZRKAuthorizationErrorDomain == "com.zerkolin.authorization"sv);
    CHECK(BRVErrorDomain == "com.zerkolin.brevane"sv);
}

TEST_CASE("the error codes count up from 0 in each domain")
{
    const auto countsUp = [](std::initializer_list<std::int64_t> codes) {
        std::int64_t expected = 0;
        for (const std::int64_t code : codes)
            CHECK(code == expected++);
    };
    countsUp({ZRKUpdaterErrorUpToDate, ZRKUpdaterErrorFetchInfo, ZRKUpdaterErrorReadData, ZRKUpdaterErrorInvalidInfo,
              ZRKUpdaterErrorDownload, ZRKUpdaterErrorMovePackage, ZRKUpdaterErrorValidate, ZRKUpdaterErrorInstall,
              ZRKUpdaterErrorCannotUpdateNow, ZRKUpdaterErrorPhasedDeferral, ZRKUpdaterErrorUntrustedServer,
              ZRKUpdaterErrorTooManyRequests});
    countsUp(
        {ZRKInstallerPackageErrorRead, ZRKInstallerPackageErrorNotSigned, ZRKInstallerPackageErrorInvalidSignature});
    countsUp({ZRKSpawnerErrorSpawn, ZRKSpawnerErrorExitStatus, ZRKSpawnerErrorSignal});
    countsUp({ZRKMessagerErrorAuthorize, ZRKMessagerErrorMissingAuthorization, ZRKMessagerErrorSerializeMessage,
              ZRKMessagerErrorDeserializeMessage, ZRKMessagerErrorSerializeReply, ZRKMessagerErrorDeserializeReply,
              ZRKMessagerErrorUnarchiveReplyError, ZRKMessagerErrorServiceUnavailable,
              ZRKMessagerErrorServiceDisappeared});
    countsUp({ZRKAuthorizationErrorUserCanceled, ZRKAuthorizationErrorCreate, ZRKAuthorizationErrorMakeExternalForm,
              ZRKAuthorizationErrorCreateFromExternalForm, ZRKAuthorizationErrorSetRights,
              ZRKAuthorizationErrorValidateRights, ZRKAuthorizationErrorAuthorizeRights});
    countsUp({BRVErrorBackupRunning, BRVErrorUpdateRunning, BRVErrorPeersConnected, BRVErrorMissingValue,
              BRVErrorWrongType, BRVErrorUnknownKey});
}
