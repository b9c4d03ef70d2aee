#include "tests/platform/ScriptedPlatform.h"

#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedBackgroundItem.h"
#include "tests/platform/ScriptedBackupFacility.h"
#include "tests/platform/ScriptedBackups.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedConditions.h"
#include "tests/platform/ScriptedFiles.h"
#include "tests/platform/ScriptedLegacyLogSearch.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedPowerSources.h"
#include "tests/platform/ScriptedPreferences.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/platform/ScriptedServiceConnection.h"
#include "tests/platform/ScriptedSnapshots.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/platform/ScriptedUserDefaults.h"
#include "tests/platform/ScriptedVolumes.h"
#include "tests/platform/ScriptedWorkspace.h"

namespace scripted {

void reset()
{
    service::reset(); // first: old connections still log that they became invalid
    authorization::reset();
    background::reset();
    backups::reset();
    facility::reset();
    clock::reset();
    conditions::reset();
    notifications::reset();
    files::reset();
    legacylog::reset();
    power::reset();
    process::reset();
    snapshots::reset();
    volumes::reset();
    preferences::reset();
    system::reset();
    defaults::reset();
    workspace::reset();
    log::reset();
}

} // namespace scripted
