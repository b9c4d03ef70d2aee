#pragma once

#include "platform/ui/Menu.h"
#include "tests/shell/support/WindowUser.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A person in front of the main window and its menu bar.
class MainWindowUser : public WindowUser {
public:
    MainWindowUser() : WindowUser("mainWindow") { }

    // The direct rows of the stack view, from top to bottom.
    std::vector<std::string> rows() const;

    std::shared_ptr<platform::ui::MenuItem> menuItem(std::string_view identifier) const;
    void clickMenuItem(std::string_view identifier);
};
