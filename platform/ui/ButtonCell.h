#pragma once

#include "platform/StyledText.h"
#include "platform/ui/View.h"

namespace platform::ui {

// Draws a button's title whenever the button draws itself. Main thread.
class ButtonCell {
public:
    // What the platform draws with meanwhile.
    class Canvas {
    public:
        virtual ~Canvas() = default;
        virtual bool isHighlighted() const = 0; // the button is pressed
        virtual Rect drawTitle(const StyledText& title, const Rect& frame) = 0;
    };

    virtual ~ButtonCell() = default;

    // The rectangle that the title was drawn in. Like the frame it is in the button's own coordinates, points.
    virtual Rect drawTitle(const StyledText& title, const Rect& frame, Canvas& canvas) const
    {
        return canvas.drawTitle(title, frame);
    }
};

} // namespace platform::ui
