#include "platform/ui/View.h"

#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/layout/ConstraintLayout.h"
#include "platform/linux/ui/windows/WindowFit.h"

#include <algorithm>
#include <QComboBox>
#include <QVariant>
#include <typeinfo>
#include <utility>

namespace platform::ui {

namespace {

constexpr char ViewProperty[] = "brevaneView";

class Container final : public View {
public:
    explicit Container(std::unique_ptr<Native> native) : View(std::move(native)) { }
};

bool same(const std::weak_ptr<View>& left, const std::weak_ptr<View>& right)
{
    return !left.owner_before(right) && !right.owner_before(left);
}

// The layout that solves a container's constraints; takes the place of any other that the widget has.
ConstraintLayout* constraintLayout(QWidget* widget)
{
    if (auto* layout = dynamic_cast<ConstraintLayout*>(widget->layout()))
        return layout;
    delete widget->layout();
    auto* layout = new ConstraintLayout(widget);
    for (QWidget* child : widget->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        if (viewForWidget(child))
            layout->addWidget(child);
    return layout;
}

// Widgets that are not visible get no resize events, so their layouts are carried down by hand.
void arrange(QWidget* widget)
{
    if (QLayout* layout = widget->layout()) {
        layout->activate();
        layout->setGeometry(widget->rect());
    }
    for (QWidget* child : widget->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        if (!child->isWindow())
            arrange(child);
}

} // namespace

View::Native::Native(QWidget* theWidget)
    : widget(theWidget),
      hidden(theWidget && theWidget->parentWidget() && theWidget->isHidden()
             && theWidget->testAttribute(Qt::WA_WState_ExplicitShowHide)),
      makesOwnWidget(!theWidget)
{
}

View::Native::~Native()
{
    if (!widget || widget->parentWidget())
        return;
    // Subviews that others hold outlive this one.
    for (const std::shared_ptr<View>& subview : std::exchange(subviews, {}))
        if (subview->native().widget)
            subview->native().widget->setParent(nullptr);
    // The view may go within a signal of its own widget.
    widget->deleteLater();
}

std::shared_ptr<View> viewForWidget(const QWidget* widget)
{
    auto* view = static_cast<View*>(widget->property(ViewProperty).value<void*>());
    return view ? view->weak_from_this().lock() : nullptr;
}

void setAccessibleName(QWidget& widget, const QString& name)
{
    widget.setAccessibleName(name);
    // The toolkit tells assistive tools a pop-up's value in place of its name.
    if (qobject_cast<QComboBox*>(&widget))
        widget.setAccessibleDescription(name);
}

QWidget* realizedWidget(View& view)
{
    View::Native& native = view.native();
    if (native.widget || !native.makesOwnWidget)
        return native.widget;
    native.widget = native.newWidget();
    native.widget->setProperty(ViewProperty, QVariant::fromValue(static_cast<void*>(&view)));
    native.widget->setObjectName(QString::fromStdString(native.identifier));
    setAccessibleName(*native.widget, QString::fromStdString(native.accessibleName));
    native.widget->setEnabled(native.enabled);
    return native.widget;
}

void dropWidget(View& view)
{
    View::Native& native = view.native();
    if (!native.widget || !native.makesOwnWidget)
        return;
    native.willDropWidget();
    native.widget->setProperty(ViewProperty, {});
    native.widget.clear();
}

void joinSuperview(const std::shared_ptr<View>& view)
{
    if (const auto parent = view->superview())
        parent->native().subviews.push_back(view);
}

std::shared_ptr<View> wrapContainer(QWidget* widget)
{
    return wrapWidget<Container>(widget);
}

std::shared_ptr<View> View::create()
{
    return wrapContainer(new QWidget);
}

View::View(std::unique_ptr<Native> native) : _native(std::move(native))
{
    if (_native->widget)
        _native->widget->setProperty(ViewProperty, QVariant::fromValue(static_cast<void*>(this)));
}

View::~View()
{
    if (_native->widget)
        _native->widget->setProperty(ViewProperty, {});
}

std::string View::identifier() const
{
    return _native->widget ? _native->widget->objectName().toStdString() : _native->identifier;
}

void View::setIdentifier(const std::string& identifier)
{
    _native->identifier = identifier;
    if (_native->widget)
        _native->widget->setObjectName(QString::fromStdString(identifier));
}

std::string View::accessibleName() const
{
    return _native->widget ? _native->widget->accessibleName().toStdString() : _native->accessibleName;
}

void View::setAccessibleName(const std::string& name)
{
    _native->accessibleName = name;
    if (_native->widget)
        ui::setAccessibleName(*_native->widget, QString::fromStdString(name));
}

bool View::isHidden() const
{
    return _native->hidden;
}

void View::setHidden(bool hidden)
{
    _native->hidden = hidden;
    // A widget without a parent would become a window.
    if (_native->widget && _native->widget->parentWidget())
        _native->widget->setVisible(!hidden);
}

std::shared_ptr<View> View::superview() const
{
    if (!_native->widget)
        return nullptr;
    for (QWidget* parent = _native->widget->parentWidget(); parent; parent = parent->parentWidget())
        if (auto view = viewForWidget(parent))
            return view;
    return nullptr;
}

void View::addSubview(const std::shared_ptr<View>& view)
{
    view->removeFromSuperview();
    QWidget* child = realizedWidget(*view);
    if (!_native->widget || !child)
        return;
    if (!_native->widget->layout())
        constraintLayout(_native->widget);
    _native->widget->layout()->addWidget(child);
    child->setVisible(!view->isHidden());
    _native->subviews.push_back(view);
    WindowFit::contentChanged(_native->widget);
}

void View::removeFromSuperview()
{
    if (!_native->widget || !_native->widget->parentWidget())
        return;
    const auto self = shared_from_this();
    const auto parent = superview();
    QWidget* parentWidget = _native->widget->parentWidget();
    WindowFit::contentWillChange(parentWidget);
    _native->widget->setParent(nullptr);
    WindowFit::contentChanged(parentWidget);
    if (!parent)
        return;
    std::erase(parent->native().subviews, self);
    std::erase_if(parent->native().constraints, [&](const LayoutConstraint& constraint) {
        return same(constraint.firstView, self) || same(constraint.secondView, self);
    });
}

bool View::isPlainContainer() const
{
    const QWidget* widget = _native->widget;
    return widget && typeid(*widget) == typeid(QWidget);
}

void View::addConstraints(const std::vector<LayoutConstraint>& constraints)
{
    _native->constraints.insert(_native->constraints.end(), constraints.begin(), constraints.end());
    if (!_native->widget)
        return;
    constraintLayout(_native->widget);
    WindowFit::contentChanged(_native->widget);
}

void View::removeConstraints(const std::vector<LayoutConstraint>& constraints)
{
    for (const LayoutConstraint& constraint : constraints) {
        const auto found = std::ranges::find(_native->constraints, constraint);
        if (found != _native->constraints.end())
            _native->constraints.erase(found);
    }
    if (_native->widget)
        WindowFit::contentChanged(_native->widget);
}

std::vector<LayoutConstraint> View::constraints() const
{
    return _native->constraints;
}

Rect View::frame() const
{
    const QWidget* widget = _native->widget;
    if (!widget)
        return {};
    const auto parent = superview();
    const QPoint origin = parent ? widget->mapTo(parent->native().widget.data(), QPoint()) : widget->pos();
    return {double(origin.x()), double(origin.y()), double(widget->width()), double(widget->height())};
}

void View::sizeToFit()
{
    if (_native->widget)
        _native->widget->resize(_native->widget->sizeHint());
}

void View::layoutIfNeeded()
{
    if (!_native->widget)
        return;
    QWidget* window = _native->widget->window();
    WindowFit::apply(window);
    arrange(window);
}

} // namespace platform::ui
