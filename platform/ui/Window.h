#pragma once

#include "platform/ui/View.h"

namespace platform::ui {

class Window {
public:
    virtual ~Window();

    std::string identifier() const;
    std::shared_ptr<View> contentView() const;

    bool isVisible() const;
    void setAutorecalculatesKeyViewLoop(bool recalculates);
    void layoutIfNeeded();
    void center();
    // Brings it to the front and gives it the keyboard.
    void makeKeyAndOrderFront();
    void close();

    struct Native;
    explicit Window(std::unique_ptr<Native> native);
    Native& native() const { return *_native; }

private:
    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
