#pragma once

#include "platform/ui/Menu.h"
#include "platform/ui/MenuBar.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform::ui {

using NamedViews = std::map<std::string, std::shared_ptr<View>, std::less<>>;
using NamedMenuItems = std::map<std::string, std::shared_ptr<MenuItem>, std::less<>>;

// What an interface file creates: a window with its menus, or a view for another window. Outlets are found by their
// identifiers. An outlet that is missing or of another class is a defect of the build: the process reports its name and
// ends.
class Interface {
public:
    struct Contents {
        std::shared_ptr<Window> window;
        std::shared_ptr<View> view; // without a window
        NamedViews views;
        NamedMenuItems menuItems;
        // Views that stand in no other until they are put there.
        std::vector<std::shared_ptr<View>> detached;
    };

    // The names are those of the files, such as "MainWindow". A window that is given menus has the application's menu
    // bar.
    static std::unique_ptr<Interface> load(std::string_view name, const MenuBarDescription& menus = {});
    explicit Interface(Contents contents) : _contents(std::move(contents)) { }

    // Null for an interface without one.
    std::shared_ptr<Window> window() const { return _contents.window; }
    // The top view of an interface without a window.
    std::shared_ptr<View> view() const { return _contents.view; }
    std::shared_ptr<MenuItem> menuItem(std::string_view identifier) const;

    // `T` is View or one of its subclasses in this folder.
    template <class T>
    std::shared_ptr<T> outlet(std::string_view identifier) const
    {
        auto found = std::dynamic_pointer_cast<T>(find(identifier));
        if (!found)
            fail("Missing outlet", identifier);
        return found;
    }

    // Of the window and of all views and menu items.
    std::vector<std::string> identifiers() const;

    // For the platforms' side: reports a defect of the build and ends the process.
    [[noreturn]] static void fail(const char* what, std::string_view name);

private:
    std::shared_ptr<View> find(std::string_view identifier) const;

    Contents _contents;
};

} // namespace platform::ui
