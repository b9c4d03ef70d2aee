#include "tests/ui-layout/Views.h"

#include <doctest/doctest.h>
#include <QPointer>

using platform::ui::LayoutConstraint;
using platform::ui::View;
using enum platform::ui::LayoutAttribute;

TEST_CASE("only the plain view class itself is a plain container")
{
    CHECK(View::create()->isPlainContainer());
    CHECK(viewOf<QWidget>()->isPlainContainer());
    CHECK_FALSE(viewOf<platform::ui::StackContainer>()->isPlainContainer());
    CHECK_FALSE(viewOf<QLabel>()->isPlainContainer());
}

TEST_CASE("a superview keeps its subviews alive, and a removed one belongs to whoever holds it")
{
    const auto parent = View::create();
    std::weak_ptr<View> kept;
    {
        const auto child = viewOf<QCheckBox>("kept");
        kept = child;
        parent->addSubview(child);
    }
    REQUIRE(kept.lock());
    CHECK(kept.lock()->superview() == parent);
    const QPointer<QWidget> widget = widgetOf(kept.lock());
    kept.lock()->removeFromSuperview();
    CHECK(kept.expired());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    CHECK(widget.isNull());
}

TEST_CASE("a subview that others hold outlives its superview")
{
    const auto child = viewOf<QCheckBox>("child");
    auto parent = View::create();
    parent->addSubview(child);
    parent.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    REQUIRE(widgetOf(child));
    CHECK_FALSE(child->superview());
}

TEST_CASE("adding takes a view from the superview it had")
{
    const auto first = View::create(), second = View::create(), child = viewOf<QCheckBox>("child");
    first->addSubview(child);
    second->addSubview(child);
    CHECK(child->superview() == second);
    CHECK(widgetOf(first)->layout()->count() == 0);
}

TEST_CASE("removing a view removes the constraints that name it")
{
    const auto parent = View::create(), a = viewOf<QLabel>("a"), b = viewOf<QLabel>("b");
    parent->addSubview(a);
    parent->addSubview(b);
    const LayoutConstraint ofB{b, Width, {}, {}, NotAnAttribute, 1, 9};
    parent->addConstraints({{a, Width, {}, b, Width}, {parent, Top, {}, a, Top}, ofB});
    a->removeFromSuperview();
    CHECK(parent->constraints() == std::vector{ofB});
}

TEST_CASE("a view stays hidden or shown when it changes its superview")
{
    const auto parent = View::create(), shown = viewOf<QCheckBox>("shown"), hidden = viewOf<QCheckBox>("hidden");
    hidden->setHidden(true);
    ShownWindow window(parent);
    parent->addSubview(shown);
    parent->addSubview(hidden);
    CHECK(widgetOf(shown)->isVisible());
    CHECK_FALSE(widgetOf(hidden)->isVisible());
    hidden->removeFromSuperview();
    shown->removeFromSuperview();
    CHECK(hidden->isHidden());
    CHECK_FALSE(shown->isHidden());
    hidden->setHidden(false);
    CHECK_FALSE(widgetOf(hidden)->isVisible());
    parent->addSubview(hidden);
    CHECK(widgetOf(hidden)->isVisible());
}

TEST_CASE("a view of an interface file that begins hidden says so")
{
    QWidget top;
    auto* box = new QCheckBox("box", &top);
    auto* other = new QCheckBox("other", &top);
    box->setVisible(false);
    CHECK(platform::ui::wrapContainer(box)->isHidden());
    CHECK_FALSE(platform::ui::wrapContainer(other)->isHidden());
}

TEST_CASE("a view is known by its identifier and its accessible name")
{
    const auto view = viewOf<QCheckBox>("box");
    widgetOf(view)->setObjectName("backupsCheckBox");
    widgetOf(view)->setAccessibleName("Back up automatically");
    CHECK(view->identifier() == "backupsCheckBox");
    CHECK(view->accessibleName() == "Back up automatically");
}

TEST_CASE("layoutIfNeeded places the views of a window that was never shown")
{
    const auto stack = ZRKStackView::create(viewOf<platform::ui::StackContainer>());
    stack->setOrientation(ZRKStackView::Vertical);
    const auto a = viewOf<QCheckBox>("a"), b = viewOf<QCheckBox>("b");
    QWidget window;
    (new QVBoxLayout(&window))->addWidget(widgetOf(stack->view()));
    stack->setViews({a, b});
    stack->view()->layoutIfNeeded();
    CHECK(a->frame().x == 2);
    CHECK(a->frame().y == 2);
    CHECK(b->frame().y == a->frame().y + a->frame().height + 8);
    widgetOf(stack->view())->setParent(nullptr);
}
