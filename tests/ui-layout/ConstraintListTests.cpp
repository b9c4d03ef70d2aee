#include "tests/ui-layout/Views.h"

#include <algorithm>
#include <doctest/doctest.h>

using platform::ui::LayoutConstraint;
using platform::ui::View;
using enum platform::ui::LayoutAttribute;
using Constraints = ZRKStackView::Constraints;

namespace {

constexpr auto Equal = platform::ui::LayoutRelation::Equal;
constexpr auto AtLeast = platform::ui::LayoutRelation::GreaterThanOrEqual;

std::shared_ptr<ZRKStackView> stackOf(int orientation)
{
    auto stack = ZRKStackView::create(viewOf<platform::ui::StackContainer>());
    stack->setOrientation(orientation);
    return stack;
}

} // namespace

TEST_CASE("one view in a column gets the edges and its own constraints")
{
    const auto stack = stackOf(1);
    const auto s = stack->view(), a = viewOf<QCheckBox>("a");
    const Constraints expected{
        {s, Top, Equal, a, Top, 1, -2, 1000},         {s, Bottom, Equal, a, Bottom, 1, 2, 1000},
        {s, Leading, Equal, a, Leading, 1, -2, 1000}, {a, Leading, Equal, s, Leading, 1, 2, 1000},
        {s, Trailing, Equal, a, Trailing, 1, 2, 700}, {s, Trailing, AtLeast, a, Trailing, 1, 2, 1000},
    };
    CHECK(stack->verticalConstraintsForViews({a}) == expected);
    CHECK(stack->constraintsForViews({a}) == expected);
}

TEST_CASE("two views in a column stand 8 points apart, a plain container without a margin")
{
    const auto stack = stackOf(1);
    const auto s = stack->view(), a = View::create(), b = viewOf<QCheckBox>("b");
    CHECK(stack->verticalConstraintsForViews({a, b})
          == Constraints{
              {s, Top, Equal, a, Top, 1, 0, 1000},
              {s, Bottom, Equal, b, Bottom, 1, 2, 1000},
              {s, Leading, Equal, a, Leading, 1, 0, 1000},
              {b, Top, Equal, a, Bottom, 1, 8, 1000},
              {a, Leading, Equal, s, Leading, 1, 0, 1000},
              {s, Trailing, Equal, a, Trailing, 1, 0, 700},
              {s, Trailing, AtLeast, a, Trailing, 1, 0, 1000},
              {b, Leading, Equal, s, Leading, 1, 2, 1000},
              {s, Trailing, Equal, b, Trailing, 1, 2, 700},
              {s, Trailing, AtLeast, b, Trailing, 1, 2, 1000},
          });
}

TEST_CASE("three views in a column")
{
    const auto stack = stackOf(1);
    const auto s = stack->view(), a = viewOf<QCheckBox>("a"), b = View::create(), c = View::create();
    CHECK(stack->verticalConstraintsForViews({a, b, c})
          == Constraints{
              {s, Top, Equal, a, Top, 1, -2, 1000},
              {s, Bottom, Equal, c, Bottom, 1, 0, 1000},
              {s, Leading, Equal, a, Leading, 1, -2, 1000},
              {b, Top, Equal, a, Bottom, 1, 8, 1000},
              {a, Leading, Equal, s, Leading, 1, 2, 1000},
              {s, Trailing, Equal, a, Trailing, 1, 2, 700},
              {s, Trailing, AtLeast, a, Trailing, 1, 2, 1000},
              {c, Top, Equal, b, Bottom, 1, 8, 1000},
              {b, Leading, Equal, s, Leading, 1, 0, 1000},
              {s, Trailing, Equal, b, Trailing, 1, 0, 700},
              {s, Trailing, AtLeast, b, Trailing, 1, 0, 1000},
              {c, Leading, Equal, s, Leading, 1, 0, 1000},
              {s, Trailing, Equal, c, Trailing, 1, 0, 700},
              {s, Trailing, AtLeast, c, Trailing, 1, 0, 1000},
          });
}

TEST_CASE("one view in a row gets no spacing and no margin")
{
    const auto stack = stackOf(0);
    const auto s = stack->view(), a = viewOf<QCheckBox>("a");
    const Constraints expected{
        {s, Leading, Equal, a, Leading, 1, 0, 1000}, {s, Trailing, Equal, a, Trailing, 1, 0, 1000},
        {a, Top, Equal, s, Top, 1, 0, 700},          {a, Bottom, Equal, s, Bottom, 1, 0, 700},
        {a, Top, AtLeast, s, Top, 1, 0, 1000},       {s, Bottom, AtLeast, a, Bottom, 1, 0, 1000},
    };
    CHECK(stack->horizontalConstraintsForViews({a}) == expected);
    CHECK(stack->constraintsForViews({a}) == expected);
}

TEST_CASE("two views in a row share a baseline 8 points apart")
{
    const auto stack = stackOf(7);
    const auto s = stack->view(), a = viewOf<QCheckBox>("a"), b = View::create();
    CHECK(stack->constraintsForViews({a, b})
          == Constraints{
              {s, Leading, Equal, a, Leading, 1, 0, 1000},
              {s, Trailing, Equal, b, Trailing, 1, 0, 1000},
              {b, Leading, Equal, a, Trailing, 1, 8, 1000},
              {a, LastBaseline, Equal, b, LastBaseline, 1, 0, 1000},
              {a, Top, Equal, s, Top, 1, 0, 700},
              {a, Bottom, Equal, s, Bottom, 1, 0, 700},
              {a, Top, AtLeast, s, Top, 1, 0, 1000},
              {s, Bottom, AtLeast, a, Bottom, 1, 0, 1000},
              {b, Top, Equal, s, Top, 1, 0, 700},
              {b, Bottom, Equal, s, Bottom, 1, 0, 700},
              {b, Top, AtLeast, s, Top, 1, 0, 1000},
              {s, Bottom, AtLeast, b, Bottom, 1, 0, 1000},
          });
}

TEST_CASE("three views in a row")
{
    const auto stack = stackOf(0);
    const auto s = stack->view(), a = viewOf<QCheckBox>("a"), b = viewOf<QComboBox>(), c = viewOf<QLabel>("c");
    CHECK(stack->horizontalConstraintsForViews({a, b, c})
          == Constraints{
              {s, Leading, Equal, a, Leading, 1, 0, 1000},
              {s, Trailing, Equal, c, Trailing, 1, 0, 1000},
              {b, Leading, Equal, a, Trailing, 1, 8, 1000},
              {a, LastBaseline, Equal, b, LastBaseline, 1, 0, 1000},
              {a, Top, Equal, s, Top, 1, 0, 700},
              {a, Bottom, Equal, s, Bottom, 1, 0, 700},
              {a, Top, AtLeast, s, Top, 1, 0, 1000},
              {s, Bottom, AtLeast, a, Bottom, 1, 0, 1000},
              {c, Leading, Equal, b, Trailing, 1, 8, 1000},
              {b, LastBaseline, Equal, c, LastBaseline, 1, 0, 1000},
              {b, Top, Equal, s, Top, 1, 0, 700},
              {b, Bottom, Equal, s, Bottom, 1, 0, 700},
              {b, Top, AtLeast, s, Top, 1, 0, 1000},
              {s, Bottom, AtLeast, b, Bottom, 1, 0, 1000},
              {c, Top, Equal, s, Top, 1, 0, 700},
              {c, Bottom, Equal, s, Bottom, 1, 0, 700},
              {c, Top, AtLeast, s, Top, 1, 0, 1000},
              {s, Bottom, AtLeast, c, Bottom, 1, 0, 1000},
          });
}

TEST_CASE("only a plain container has no margin")
{
    const auto stack = stackOf(1);
    CHECK(stack->marginForView(*View::create()) == 0.0);
    CHECK(stack->marginForView(*viewOf<QCheckBox>()) == 2.0);
    CHECK(stack->marginForView(*viewOf<QLabel>()) == 2.0);
    CHECK(stack->marginForView(*viewOf<platform::ui::StackContainer>()) == 2.0);
}

TEST_CASE("initWithViews holds the views but neither adds them nor builds constraints")
{
    const auto a = viewOf<QCheckBox>("a");
    const auto stack = ZRKStackView::initWithViews(View::create(), {a});
    CHECK(stack->views() == ZRKStackView::Views{a});
    CHECK_FALSE(a->superview());
    CHECK(stack->view()->constraints().empty());
    CHECK(stack->orientation() != ZRKStackView::Vertical);
}

TEST_CASE("setViews replaces the views in order and every constraint of before")
{
    const auto stack = stackOf(1);
    const auto a = viewOf<QCheckBox>("a"), b = viewOf<QCheckBox>("b"), c = viewOf<QCheckBox>("c");
    stack->setViews({a, b});
    CHECK(stack->view()->constraints() == stack->verticalConstraintsForViews({a, b}));
    CHECK(a->superview() == stack->view());

    stack->setViews({c, b});
    CHECK(stack->views() == ZRKStackView::Views{c, b});
    CHECK(stack->view()->constraints() == stack->verticalConstraintsForViews({c, b}));
    CHECK_FALSE(a->superview());
    CHECK(widgetOf(stack->view())->findChildren<QCheckBox*>()
          == QList<QCheckBox*>{static_cast<QCheckBox*>(widgetOf(c)), static_cast<QCheckBox*>(widgetOf(b))});
}

TEST_CASE("updating the constraints leaves those that others installed")
{
    const auto stack = stackOf(1);
    const auto a = viewOf<QCheckBox>("a");
    stack->setViews({a});
    const LayoutConstraint own{a, Width, Equal, {}, NotAnAttribute, 1, 120, 1000};
    stack->view()->addConstraints({own});
    stack->updateConstraintsForViews({a});
    Constraints expected = stack->verticalConstraintsForViews({a});
    expected.insert(expected.begin(), own);
    CHECK(stack->view()->constraints() == expected);
}

TEST_CASE("a new orientation takes effect with the next views")
{
    const auto stack = stackOf(1);
    const auto a = viewOf<QCheckBox>("a");
    stack->setViews({a});
    stack->setOrientation(ZRKStackView::Horizontal);
    CHECK(stack->view()->constraints() == stack->verticalConstraintsForViews({a}));
    stack->setViews({a});
    CHECK(stack->view()->constraints() == stack->horizontalConstraintsForViews({a}));
}

TEST_CASE("no views means an empty view without constraints")
{
    for (int orientation : {0, 1}) {
        const auto stack = stackOf(orientation);
        const auto a = viewOf<QCheckBox>("a");
        stack->setViews({a});
        stack->setViews({});
        CHECK(stack->view()->constraints().empty());
        CHECK(stack->constraintsForViews({}).empty());
        CHECK_FALSE(a->superview());
        CHECK(widgetOf(stack->view())->sizeHint() == QSize(0, 0));
    }
}
