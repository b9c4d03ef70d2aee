#include "update/BRVPreferencesController.h"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"

#include <algorithm>

using namespace platform::ui;
using platform::Dictionary;

namespace {

// With it in the right's rule whoever administers the machine changes the schedule without a password.
constexpr const char* passwordlessRule = "is-admin";

bool requiresPassword(const Dictionary& definition)
{
    const auto* const rule = definition.arrayForKey("rule");
    return rule && std::ranges::none_of(*rule, [](const platform::PropertyList& name) {
               return name == platform::PropertyList(passwordlessRule);
           });
}

} // namespace

std::shared_ptr<BRVPreferencesController> BRVPreferencesController::create()
{
    return std::shared_ptr<BRVPreferencesController>(new BRVPreferencesController);
}

std::string BRVPreferencesController::windowNibName() const
{
    return "BRVPreferencesController";
}

void BRVPreferencesController::showWindow()
{
    if (!_interface) {
        loadWindow();
        windowDidLoad();
    }
    _interface->window()->makeKeyAndOrderFront();
}

void BRVPreferencesController::loadWindow()
{
    _interface = Interface::load(windowNibName());
    _autoUpdatesCheckbox = _interface->outlet<CheckBox>("autoUpdatesCheckBox");
    _requirePasswordCheckbox = _interface->outlet<CheckBox>("requirePasswordCheckBox");
    _autoUpdatesCheckbox->setAction([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->changeAutoUpdates();
    });
    _requirePasswordCheckbox->setAction([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->changeRequirePassword();
    });
}

void BRVPreferencesController::windowDidLoad()
{
    updateAutoUpdates();
    updateRequirePassword();
    _enablingObserver.emplace(BRVDidEnableAutoUpdates, [box = _autoUpdatesCheckbox] { box->setOn(true); });
    _interface->window()->layoutIfNeeded();
    _interface->window()->center();
}

void BRVPreferencesController::updateAutoUpdates()
{
    const auto reply = BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageGetAutoUpdates);
    if (!reply)
        return;
    const auto* const settings = reply->dictionary();
    _autoUpdatesCheckbox->setOn(settings && settings->boolForKey(PayloadKey::Enabled));
}

void BRVPreferencesController::updateRequirePassword()
{
    const auto definition = platform::Authorization::right(BRVRightModifySettings1);
    if (definition)
        _requirePasswordCheckbox->setOn(requiresPassword(*definition));
}

void BRVPreferencesController::changeAutoUpdates()
{
    const bool isOn = _autoUpdatesCheckbox->isOn();
    const Dictionary settings{{PayloadKey::Enabled, isOn}};
    if (BRVHelperMessager::sharedMessager()->sendSynchronousMessage(BRVMessageSetAutoUpdates, settings))
        return;
    _autoUpdatesCheckbox->setOn(!isOn); // as the helper had it, should it not answer now
    updateAutoUpdates();
}

void BRVPreferencesController::changeRequirePassword()
{
    const Dictionary settings{{PayloadKey::Allow, !_requirePasswordCheckbox->isOn()}};
    const auto& messager = BRVHelperMessager::sharedMessager();
    if (messager->sendSynchronousMessage(BRVMessageSetAllowWithoutPassword, settings))
        ZRKAuthorizationManager::sharedManager().invalidate(); // the next change is authorized under the new rule
    else
        updateRequirePassword();
}
