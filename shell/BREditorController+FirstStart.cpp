#include "firststart/model/FirstStartCondition.h"
#include "platform/UserDefaults.h"
#include "shell/BREditorController.h"
#include "shell/ReplyWhileWaiting.h"
#include "shell/UserDefaultKeys.h"

bool BREditorController::beginFirstStart()
{
    if (!mayBeFirstStart(*_currentSettings) || platform::userDefaultBool(BRVDidDismissFirstStart))
        return false;
    const auto reply = replyWhileWaiting(BRVMessageGetBackupProgram);
    const auto* const told = reply && *reply ? (*reply)->dictionary() : nullptr;
    if (!told || !isFirstStart(*told))
        return false;
    _firstStartController = BRVFirstStartController::create(
        *_currentSettings, _capabilities, ProgramOffer::inReply(*told), [weak = weak_from_this()](const auto& end) {
            if (const auto self = weak.lock())
                self->endFirstStart(end);
        });
    _firstStartController->showWindow();
    return true;
}

void BREditorController::endFirstStart(const BRVFirstStartController::End& end)
{
    if (end.applied) {
        _currentSettings = end.applied;
        updateSettings();
    } else {
        (void)platform::setUserDefault(BRVDidDismissFirstStart, true);
    }
    if (end.edits) {
        showSettings(*end.edits);
        _backupProgramController = BRVBackupProgramController::create();
        _backupProgramController->setEdits(end.program);
    }
    showMainWindowAtFirst();
    if (end.applied)
        displayDidApplyAlertForSettings(*end.applied);
}
