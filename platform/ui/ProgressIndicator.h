#pragma once

#include "platform/ui/View.h"

namespace platform::ui {

// A spinning sign that something goes on. It is not seen while it stands still.
class ProgressIndicator : public View {
public:
    explicit ProgressIndicator(std::unique_ptr<Native> native);

    bool isAnimating() const;
    void startAnimation();
    void stopAnimation();
};

} // namespace platform::ui
