#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform::ui {

// An item of the menu bar's menus. Setters never fire the action.
class MenuItem {
public:
    using Action = std::function<void()>;

    ~MenuItem();

    std::string identifier() const;
    std::string title() const;

    bool isHidden() const;
    void setHidden(bool hidden);

    // One character, pressed with the platform's command modifier; empty for none.
    std::string keyEquivalent() const;
    void setKeyEquivalent(const std::string& key);

    // The item that follows in the same menu, hidden ones and separators included; null at the end.
    std::shared_ptr<MenuItem> next() const;

    void setAction(Action action);
    // Asked each time before the item shows or its key is pressed; an item without a validator is enabled.
    void setValidator(std::function<bool()> isEnabled);
    bool isEnabled() const;

    struct Native;
    explicit MenuItem(std::unique_ptr<Native> native);
    Native& native() const { return *_native; }

private:
    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
