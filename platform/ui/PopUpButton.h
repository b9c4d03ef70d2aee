#pragma once

#include "platform/ui/Control.h"

#include <memory>
#include <string>
#include <vector>

namespace platform::ui {

class Image;

class PopUpButton : public Control {
public:
    // The titles of the items. An empty one stands for a separator. Buttons may share them.
    using Items = std::shared_ptr<const std::vector<std::string>>;

    // A new one in no view, with a zero frame and the first item selected, not a pull-down, with the round-rect bezel
    // of buttons in a row.
    static std::shared_ptr<PopUpButton> create(Items items);

    explicit PopUpButton(std::unique_ptr<Native> native);

    int numberOfItems() const;
    // -1 when nothing is selected.
    int indexOfSelectedItem() const;
    // An index out of range selects nothing.
    void selectItemAtIndex(int index);

    std::string itemTitleAtIndex(int index) const; // empty out of range
    void setItemTitleAtIndex(int index, const std::string& title);

    // At the end; the image may be null. The only item is the selected one.
    void addItem(const std::string& title, const std::shared_ptr<Image>& image);
    // When it is the selected one, an item beside it is selected.
    void removeItemAtIndex(int index);
};

} // namespace platform::ui
