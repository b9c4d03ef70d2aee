#pragma once

#include "platform/ui/ButtonCell.h"

// Draws a button's title in the system's link colour, so that a button without a border looks like a hyperlink.
class ZRKButtonLinkCell : public platform::ui::ButtonCell {
public:
    platform::ui::Rect drawTitle(const platform::StyledText& title, const platform::ui::Rect& frame,
                                 Canvas& canvas) const override;
};
