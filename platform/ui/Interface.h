#pragma once

#include "platform/ui/Menu.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform::ui {

// What an interface file creates: a window with its menus, or a view for another window. Outlets are found by their
// identifiers. An outlet that is missing or of another class is a defect of the build: the process reports its name and
// ends.
class Interface {
public:
    // The names are those of the files, such as "MainWindow".
    static std::unique_ptr<Interface> load(std::string_view name);
    ~Interface();

    std::shared_ptr<Window> window() const; // null for an interface without one
    std::shared_ptr<View> view() const;     // the top view of an interface without a window
    std::shared_ptr<MenuItem> menuItem(std::string_view identifier) const;

    // `T` is View or one of its subclasses in this folder.
    template <class T>
    std::shared_ptr<T> outlet(std::string_view identifier) const
    {
        auto found = std::dynamic_pointer_cast<T>(find(identifier));
        if (!found)
            failMissingOutlet(identifier);
        return found;
    }

    // Of all views and menu items, for checks against the shared list.
    std::vector<std::string> identifiers() const;

    struct Native;
    explicit Interface(std::unique_ptr<Native> native);

private:
    std::shared_ptr<View> find(std::string_view identifier) const;
    [[noreturn]] void failMissingOutlet(std::string_view identifier) const;

    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
