#pragma once

#include <cstdint>

inline constexpr const char* ZRKUpdaterErrorDomain = "com.zerkolin.updater";
inline constexpr const char* ZRKInstallerPackageErrorDomain = "com.zerkolin.installer-package";
inline constexpr const char* ZRKSpawnerErrorDomain = "com.zerkolin.spawner";
inline constexpr const char* ZRKMessagerErrorDomain = "com.zerkolin.messager";
inline constexpr const char* ZRKAuthorizationErrorDomain = "com.zerkolin.authorization";
inline constexpr const char* BRVErrorDomain = "com.zerkolin.brevane";

enum ZRKUpdaterErrorCode : std::int64_t {
    ZRKUpdaterErrorUpToDate = 0,
    ZRKUpdaterErrorFetchInfo = 1,
    ZRKUpdaterErrorReadData = 2,
    ZRKUpdaterErrorInvalidInfo = 3,
    ZRKUpdaterErrorDownload = 4,
    ZRKUpdaterErrorMovePackage = 5,
    ZRKUpdaterErrorValidate = 6,
    ZRKUpdaterErrorInstall = 7,
    ZRKUpdaterErrorCannotUpdateNow = 8,
    ZRKUpdaterErrorPhasedDeferral = 9,
    ZRKUpdaterErrorUntrustedServer = 10,
    ZRKUpdaterErrorTooManyRequests = 11,
};

enum ZRKInstallerPackageErrorCode : std::int64_t {
    ZRKInstallerPackageErrorRead = 0,
    ZRKInstallerPackageErrorNotSigned = 1,
    ZRKInstallerPackageErrorInvalidSignature = 2,
};

enum ZRKSpawnerErrorCode : std::int64_t {
    ZRKSpawnerErrorSpawn = 0,
    ZRKSpawnerErrorExitStatus = 1,
    ZRKSpawnerErrorSignal = 2,
};

enum ZRKMessagerErrorCode : std::int64_t {
    ZRKMessagerErrorAuthorize = 0,
    ZRKMessagerErrorMissingAuthorization = 1,
    ZRKMessagerErrorSerializeMessage = 2,
    ZRKMessagerErrorDeserializeMessage = 3,
    ZRKMessagerErrorSerializeReply = 4,
    ZRKMessagerErrorDeserializeReply = 5,
    ZRKMessagerErrorUnarchiveReplyError = 6,
    ZRKMessagerErrorServiceUnavailable = 7,
    ZRKMessagerErrorServiceDisappeared = 8,
};

enum ZRKAuthorizationErrorCode : std::int64_t {
    ZRKAuthorizationErrorUserCanceled = 0,
    ZRKAuthorizationErrorCreate = 1,
    ZRKAuthorizationErrorMakeExternalForm = 2,
    ZRKAuthorizationErrorCreateFromExternalForm = 3,
    ZRKAuthorizationErrorSetRights = 4,
    ZRKAuthorizationErrorValidateRights = 5,
    ZRKAuthorizationErrorAuthorizeRights = 6,
};

enum BRVErrorCode : std::int64_t {
    BRVErrorBackupRunning = 0,
    BRVErrorUpdateRunning = 1,
    BRVErrorPeersConnected = 2,
    BRVErrorMissingValue = 3,
    BRVErrorWrongType = 4,
    BRVErrorUnknownKey = 5,
};
