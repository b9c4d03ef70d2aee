#pragma once

#include "platform/ui/Control.h"

namespace platform::ui {

class PopUpButton : public Control {
public:
    explicit PopUpButton(std::unique_ptr<Native> native);

    int numberOfItems() const;
    // -1 when nothing is selected.
    int indexOfSelectedItem() const;
    // An index out of range selects nothing.
    void selectItemAtIndex(int index);

    std::string itemTitleAtIndex(int index) const; // empty out of range
    void setItemTitleAtIndex(int index, const std::string& title);
};

} // namespace platform::ui
