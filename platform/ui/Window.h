#pragma once

#include "platform/ui/View.h"

#include <functional>

namespace platform::ui {

class Window {
public:
    virtual ~Window();

    std::string identifier() const;
    std::shared_ptr<View> contentView() const;

    std::string title() const;
    void setTitle(const std::string& title);

    // Also while it is minimised.
    bool isVisible() const;
    void setAutorecalculatesKeyViewLoop(bool recalculates);
    void layoutIfNeeded();
    void center();
    // Takes the place and size that a window of this name had when it was last seen, if there was one, and keeps its
    // own for the next.
    void setFrameAutosaveName(const std::string& name);
    // What the menu's Undo does in this window, once, when no text in it has something to undo. Replaces the one
    // before.
    void setUndo(std::function<void()> undo);
    // What is being entered in a field counts as entered; the keyboard stays there.
    void endEditing();
    // Brings it to the front and gives it the keyboard.
    void makeKeyAndOrderFront();
    void close();
    // Runs each time that the window closes, whoever closes it, while it is still there. Replaces the one before.
    void setCloseHandler(std::function<void()> handler);

    struct Native;
    explicit Window(std::unique_ptr<Native> native);
    Native& native() const { return *_native; }

private:
    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
