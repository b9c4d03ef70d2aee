#pragma once

#include "platform/ui/View.h"

#include <memory>
#include <QPointer>
#include <QWidget>
#include <string>
#include <vector>

namespace platform::ui {

// A view's widget. The widget belongs to its parent widget; as long as it has no parent, it belongs to the view.
// Controls that keep more than a widget derive from this.
struct View::Native {
    // Without a widget for a view that makes its own whenever it is on the screen.
    explicit Native(QWidget* theWidget);
    virtual ~Native();
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

    // The widget as the class that the view was made for; null when it is another or is gone.
    template <class W>
    W* as() const
    {
        return qobject_cast<W*>(widget.data());
    }

    // A new widget that shows what the view shows. Views that were made without one have this.
    virtual QWidget* newWidget() { return nullptr; }
    virtual void willDropWidget() { }

    QPointer<QWidget> widget;
    std::vector<LayoutConstraint> constraints;
    // Kept alive by their superview.
    std::vector<std::shared_ptr<View>> subviews;
    // Kept apart from the widget's own visibility, which a widget without a parent does not have.
    bool hidden;

    // What follows stands for the widget while there is none.
    const bool makesOwnWidget;
    bool enabled = true;
    std::string identifier;
    std::string accessibleName;
};

// The view that stands for the widget; null where there is none.
std::shared_ptr<View> viewForWidget(const QWidget* widget);

void setAccessibleName(QWidget& widget, const QString& name);

// The view's widget, which is made if there is none, and null only for a view whose widget is gone for good.
QWidget* realizedWidget(View& view);
// Lets go of the widget, which belongs to its parent widget alone from then on, if the view can make another.
void dropWidget(View& view);

// Lets the superview, which is the view of the nearest ancestor widget that has one, keep the view alive.
void joinSuperview(const std::shared_ptr<View>& view);

// A view for a widget that exists already, such as one of an interface file. Ancestors first, so that they keep it
// alive. `T` is a control's class and `N` what it keeps.
template <class T, class N = View::Native>
std::shared_ptr<T> wrapWidget(QWidget* widget)
{
    auto view = std::make_shared<T>(std::make_unique<N>(widget));
    joinSuperview(view);
    return view;
}

// The same for a widget that is no control.
std::shared_ptr<View> wrapContainer(QWidget* widget);

} // namespace platform::ui
