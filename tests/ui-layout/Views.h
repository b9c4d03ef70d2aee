#pragma once

#include "layout/ZRKStackView.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/layout/ConstraintLayout.h"
#include "platform/linux/ui/layout/StackContainer.h"

#include <memory>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

// A view of a new widget of the toolkit.
template <class W, class... Arguments>
std::shared_ptr<platform::ui::View> viewOf(Arguments&&... arguments)
{
    return platform::ui::wrapContainer(new W(std::forward<Arguments>(arguments)...));
}

inline QWidget* widgetOf(const std::shared_ptr<platform::ui::View>& view)
{
    return view->native().widget;
}

// A window that is shown, with one view filling it.
struct ShownWindow {
    explicit ShownWindow(std::shared_ptr<platform::ui::View> theContent) : content(std::move(theContent))
    {
        auto* layout = new QVBoxLayout(&widget);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(widgetOf(content));
        // By itself a window would not begin smaller than a certain size.
        widget.resize(widget.sizeHint());
        widget.show();
        settle();
    }
    ~ShownWindow()
    {
        // The view outlives the window, as those of an interface file do.
        widgetOf(content)->setParent(nullptr);
    }

    // Each level of a layout asks the one above it by an event.
    static void settle()
    {
        for (int level = 0; level < 4; ++level)
            QCoreApplication::processEvents();
    }

    QWidget widget;
    std::shared_ptr<platform::ui::View> content;
};
