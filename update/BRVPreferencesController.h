#pragma once

#include "platform/NotificationCenter.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/Interface.h"

#include <memory>
#include <optional>
#include <string>

// Posted when automatic updates were switched on elsewhere than in the preferences.
inline constexpr const char* BRVDidEnableAutoUpdates = "BRVDidEnableAutoUpdates";

// The preferences window. Its two check boxes show what the scheduler helper and the rights database hold; a change
// that they refuse puts the box back and says nothing. Main thread only; the exchanges block it.
class BRVPreferencesController : public std::enable_shared_from_this<BRVPreferencesController> {
public:
    static std::shared_ptr<BRVPreferencesController> create();

    std::string windowNibName() const;
    // Loads the window the first time. Brings it to the front.
    void showWindow();

    void windowDidLoad();
    void updateAutoUpdates();
    void updateRequirePassword();
    void changeAutoUpdates();
    void changeRequirePassword();

private:
    BRVPreferencesController() = default;
    void loadWindow();

    std::unique_ptr<platform::ui::Interface> _interface;
    std::shared_ptr<platform::ui::CheckBox> _autoUpdatesCheckbox;
    std::shared_ptr<platform::ui::CheckBox> _requirePasswordCheckbox;
    std::optional<platform::NotificationObserver> _enablingObserver;
};
