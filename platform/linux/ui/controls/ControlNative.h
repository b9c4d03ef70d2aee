#pragma once

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/ui/Control.h"

#include <memory>
#include <QObject>
#include <QString>
#include <string>
#include <string_view>

namespace platform::ui {

struct ControlNative : View::Native {
    using Native::Native;

    // The action may replace itself or let go of the control.
    void sendAction()
    {
        const auto kept = action;
        if (kept)
            kept();
    }

    // Connections made to it end with the view, and when the view lets its widget go.
    QObject* receiver()
    {
        if (!_receiver)
            _receiver = std::make_unique<QObject>();
        return _receiver.get();
    }

    void willDropWidget() override { _receiver.reset(); }

    Control::Action action;
    ControlSize size = ControlSize::Regular;

private:
    std::unique_ptr<QObject> _receiver;
};

// A view's widget as the class that its wrapper checked. Views are not used after their window is gone.
template <class W>
W& widgetOf(const View& view)
{
    auto* const widget = view.native().as<W>();
    Q_ASSERT(widget);
    return *widget;
}

inline ControlNative& controlNative(const View& view)
{
    return static_cast<ControlNative&>(view.native());
}

inline QString qtString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace platform::ui
