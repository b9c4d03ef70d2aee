#pragma once

#include "platform/ui/View.h"

#include <functional>

namespace platform::ui {

// A view that the user acts on. The action runs on the main thread, only ever for the user's own doing.
class Control : public View {
public:
    using Action = std::function<void()>;

    bool isEnabled() const;
    void setEnabled(bool enabled);
    // Replaces the one before. The control keeps it: it must not keep the control's owner alive.
    void setAction(Action action);

protected:
    using View::View;
};

} // namespace platform::ui
