#pragma once

#include "platform/ui/ButtonCell.h"
#include "platform/ui/Control.h"

#include <memory>
#include <string>

namespace platform::ui {

class Button : public Control {
public:
    // A new one in no view, without a border, whose cell draws its title.
    static std::shared_ptr<Button> create(const std::string& title, std::shared_ptr<const ButtonCell> cell);

    explicit Button(std::unique_ptr<Native> native);

    std::string title() const;
    void setTitle(const std::string& title);
};

} // namespace platform::ui
