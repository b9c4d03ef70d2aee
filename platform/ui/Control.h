#pragma once

#include "platform/ui/View.h"

#include <functional>

namespace platform::ui {

enum class ControlSize { Regular = 0, Small = 1, Large = 3 };

// A view that the user acts on. The action runs on the main thread, only ever for the user's own doing.
class Control : public View {
public:
    using Action = std::function<void()>;

    bool isEnabled() const;
    void setEnabled(bool enabled);
    ControlSize controlSize() const;
    void setControlSize(ControlSize size); // and the size of the control-content font that goes with it
    // Replaces the one before. The control keeps it: it must not keep the control's owner alive.
    void setAction(Action action);

protected:
    using View::View;
};

} // namespace platform::ui
