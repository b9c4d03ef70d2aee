#include "tests/ui-layout/Views.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <doctest/doctest.h>
#include <iostream>
#include <QImage>
#include <QResizeEvent>
#include <QTimeEdit>
#include <set>

using platform::ui::LayoutConstraint;
using platform::ui::Rect;
using platform::ui::View;
using enum platform::ui::LayoutAttribute;

namespace {

std::shared_ptr<ZRKStackView> stackOf(int orientation, const ZRKStackView::Views& views)
{
    auto stack = ZRKStackView::create(viewOf<platform::ui::StackContainer>());
    stack->setOrientation(orientation);
    stack->setViews(views);
    return stack;
}

double right(const std::shared_ptr<View>& view)
{
    return view->frame().x + view->frame().width;
}

double bottom(const std::shared_ptr<View>& view)
{
    return view->frame().y + view->frame().height;
}

std::shared_ptr<View> fixedBox(int width, int height)
{
    auto view = viewOf<platform::ui::StackContainer>();
    widgetOf(view)->setFixedSize(width, height);
    return view;
}

// The lowest row of pixels, seen from the window's top, that setting the text changes: its baseline.
int paintedBaseline(QWidget* window, const std::function<void(const QString&)>& setText)
{
    setText(QString());
    const QImage without = window->grab().toImage();
    setText(QStringLiteral("HHH"));
    const QImage with = window->grab().toImage();
    REQUIRE(with.size() == without.size());
    for (int y = with.height() - 1; y >= 0; --y)
        for (int x = 0; x < with.width(); ++x)
            if (with.pixel(x, y) != without.pixel(x, y))
                return y;
    return -1;
}

// Shows a widget's text or paints it in the colour of its ground.
void paintText(QWidget* widget, bool painted)
{
    QPalette palette;
    if (!painted)
        palette.setColor(QPalette::Text, palette.color(QPalette::Base));
    widget->setPalette(palette);
}

struct ResizeCounter : QObject {
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Resize;
        return false;
    }
    int count = 0;
};

} // namespace

TEST_CASE("a column of check boxes is aligned and 8 points apart")
{
    const auto a = viewOf<QCheckBox>("short"), b = viewOf<QCheckBox>("a much longer title"),
               c = viewOf<QCheckBox>("mid");
    const auto stack = stackOf(1, {a, b, c});
    const QSize hint = widgetOf(b)->sizeHint();
    CHECK(widgetOf(stack->view())->sizeHint() == QSize(hint.width() + 4, 3 * hint.height() + 20));

    ShownWindow window(stack->view());
    for (const auto& view : {a, b, c}) {
        CHECK(view->frame().x == 2);
        CHECK(right(view) == stack->view()->frame().width - 2);
        CHECK(view->frame().height == hint.height());
    }
    CHECK(a->frame().y == 2);
    CHECK(b->frame().y == bottom(a) + 8);
    CHECK(c->frame().y == bottom(b) + 8);
    CHECK(bottom(c) == stack->view()->frame().height - 2);
}

TEST_CASE("a plain container touches the edges where a check box is inset")
{
    const auto plain = View::create(), box = viewOf<QCheckBox>("box");
    plain->addSubview(fixedBox(300, 10));
    plain->addConstraints(
        {{plain, Width, {}, {}, NotAnAttribute, 1, 300}, {plain, Height, {}, {}, NotAnAttribute, 1, 10}});
    const auto stack = stackOf(1, {plain, box});
    ShownWindow window(stack->view());
    CHECK(stack->view()->frame().width == 300);
    CHECK(plain->frame() == Rect{0, 0, 300, 10});
    CHECK(box->frame().x == 2);
    CHECK(right(box) == 298);
}

TEST_CASE("reaching the trailing edge yields to a fixed width")
{
    const auto narrow = fixedBox(50, 10), wide = fixedBox(200, 10), box = viewOf<QCheckBox>("box");
    const auto stack = stackOf(1, {narrow, wide, box});
    ShownWindow window(stack->view());
    CHECK(stack->view()->frame().width == 204);
    CHECK(narrow->frame() == Rect{2, 2, 50, 10});
    CHECK(wide->frame() == Rect{2, 20, 200, 10});
    CHECK(right(box) == 202);

    window.widget.resize(400, window.widget.height());
    ShownWindow::settle();
    CHECK(narrow->frame().width == 50);
    CHECK(wide->frame().width == 200);
    CHECK(right(box) == 398);
}

TEST_CASE("a row puts its views 8 points apart and the last one reaches the trailing edge")
{
    const auto a = viewOf<QCheckBox>("first"), b = viewOf<QComboBox>(), c = viewOf<QLabel>("last");
    const auto stack = stackOf(0, {a, b, c});
    ShownWindow window(stack->view());
    window.widget.resize(500, window.widget.height());
    ShownWindow::settle();
    CHECK(a->frame().x == 0);
    CHECK(a->frame().width == widgetOf(a)->sizeHint().width());
    CHECK(b->frame().x == right(a) + 8);
    CHECK(b->frame().width == widgetOf(b)->sizeHint().width());
    CHECK(c->frame().x == right(b) + 8);
    CHECK(right(c) == 500);
}

TEST_CASE("texts of a row stand on one line to within a pixel")
{
    auto* box = new QCheckBox("HHH");
    auto* label = new QLabel("HHH");
    auto* popUp = new QComboBox;
    popUp->addItem("HHH");
    auto* field = new QLineEdit("HHH");
    auto* picker = new QTimeEdit;
    picker->setDisplayFormat("HH:mm");
    picker->setTime(QTime(11, 11));
    ZRKStackView::Views views;
    for (QWidget* widget : std::initializer_list<QWidget*>{box, label, popUp, field, picker}) {
        widget->setMinimumWidth(120);
        views.push_back(platform::ui::wrapContainer(widget));
    }
    const auto stack = stackOf(0, views);
    ShownWindow window(stack->view());
    for (int height : {window.widget.height(), 61}) {
        window.widget.resize(window.widget.width(), height);
        ShownWindow::settle();
        widgetOf(stack->view())->layout()->setEnabled(false);
        const int expected = paintedBaseline(&window.widget, [&](auto& text) { label->setText(text); });
        CHECK(expected > 0);
        for (const auto& setText : std::initializer_list<std::function<void(const QString&)>>{
                 [&](auto& text) { box->setText(text); }, [&](auto& text) { popUp->setItemText(0, text); },
                 [&](auto& text) { field->setText(text); }, [&](auto& text) { paintText(picker, !text.isEmpty()); }})
            CHECK(std::abs(paintedBaseline(&window.widget, setText) - expected) <= 1);
        widgetOf(stack->view())->layout()->setEnabled(true);
    }
}

TEST_CASE("leading and trailing change sides where the text runs from right to left")
{
    const auto a = viewOf<QCheckBox>("first"), b = viewOf<QCheckBox>("second");
    const auto stack = stackOf(0, {a, b});
    widgetOf(stack->view())->setLayoutDirection(Qt::RightToLeft);
    ShownWindow window(stack->view());
    CHECK(right(a) == stack->view()->frame().width);
    CHECK(right(b) == a->frame().x - 8);
    CHECK(b->frame().x == 0);
}

TEST_CASE("left and right do not change sides")
{
    const auto parent = View::create(), child = fixedBox(30, 20);
    parent->addSubview(child);
    parent->addConstraints({{child, Left, {}, parent, Left, 1, 5}, {child, Top, {}, parent, Top}});
    widgetOf(parent)->setLayoutDirection(Qt::RightToLeft);
    ShownWindow window(parent);
    window.widget.resize(200, 100);
    ShownWindow::settle();
    CHECK(child->frame() == Rect{5, 0, 30, 20});
}

TEST_CASE("hidden views keep their places")
{
    const auto a = fixedBox(50, 10), b = fixedBox(50, 10), c = fixedBox(50, 10);
    b->setHidden(true);
    const auto stack = stackOf(1, {a, b, c});
    ShownWindow window(stack->view());
    CHECK(c->frame().y == 2 + 3 * 10 + 2 * 8 - 10);
}

TEST_CASE("edges are rounded, not sizes")
{
    const auto parent = View::create();
    std::vector<std::shared_ptr<View>> parts;
    for (int i = 0; i < 3; ++i) {
        parts.push_back(viewOf<platform::ui::StackContainer>());
        parent->addSubview(parts.back());
        parent->addConstraints({{parts[i], Width, {}, parent, Width, 1.0 / 3},
                                {parts[i], Leading, {}, i ? parts[i - 1] : parent, i ? Trailing : Leading}});
    }
    ShownWindow window(parent);
    window.widget.resize(100, 50);
    ShownWindow::settle();
    CHECK(parts[0]->frame().x == 0);
    CHECK(parts[1]->frame().x == right(parts[0]));
    CHECK(parts[2]->frame().x == right(parts[1]));
    CHECK(right(parts[2]) == 100);
}

TEST_CASE("a wrapped text gets the height that its width needs")
{
    auto* label = new QLabel("A sentence that is long enough to need several lines when there is little room for it.");
    label->setWordWrap(true);
    const auto text = platform::ui::wrapContainer(label), box = viewOf<QCheckBox>("box");
    const auto stack = stackOf(1, {text, box});
    ShownWindow window(stack->view());
    for (int width : {120, 300}) {
        window.widget.resize(width, window.widget.layout()->heightForWidth(width));
        ShownWindow::settle();
        CHECK(text->frame().width == width - 4);
        CHECK(text->frame().height == label->heightForWidth(width - 4));
        CHECK(bottom(box) == stack->view()->frame().height - 2);
    }
}

TEST_CASE("rows within a column are as high as their controls")
{
    const auto box = viewOf<QCheckBox>("box"), popUp = viewOf<QComboBox>(), other = viewOf<QCheckBox>("other");
    const auto row = stackOf(0, {box, popUp});
    const auto stack = stackOf(1, {row->view(), other});
    ShownWindow window(stack->view());
    CHECK(row->view()->frame().x == 2);
    CHECK(row->view()->frame().height == widgetOf(popUp)->sizeHint().height());
    CHECK(popUp->frame().height == widgetOf(popUp)->sizeHint().height());
    CHECK(other->frame().y == bottom(row->view()) + 8);
}

TEST_CASE("a window whose rows change keeps its width and takes their height in one step")
{
    const auto a = fixedBox(200, 20), b = fixedBox(100, 30), c = fixedBox(150, 60);
    const auto stack = stackOf(1, {a, b});
    ShownWindow window(stack->view());
    window.widget.resize(333, window.widget.height());
    ShownWindow::settle();
    REQUIRE(window.widget.height() == 62);

    ResizeCounter counter;
    window.widget.installEventFilter(&counter);
    for (const auto& [views, height] : std::initializer_list<std::pair<ZRKStackView::Views, int>>{
             {{a, c, b}, 130}, {{b}, 34}, {{c, b}, 102}, {{a, b, c}, 130}}) {
        counter.count = 0;
        stack->setViews(views);
        CHECK_FALSE(window.widget.updatesEnabled());
        ShownWindow::settle();
        CHECK(window.widget.updatesEnabled());
        CHECK(window.widget.size() == QSize(333, height));
        CHECK(counter.count == 1);
        CHECK(bottom(views.back()) == height - 2);
    }
    stack->setViews({fixedBox(500, 20)});
    ShownWindow::settle();
    CHECK(window.widget.size() == QSize(504, 24));
}

TEST_CASE("a window whose rows shall not stretch cannot be made higher than they are")
{
    const auto box = viewOf<QCheckBox>("box"), popUp = viewOf<QComboBox>();
    const auto row = stackOf(0, {box, popUp});
    const auto stack = stackOf(1, {viewOf<QCheckBox>("before")});
    widgetOf(stack->view())->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    ShownWindow window(stack->view());
    stack->setViews({row->view(), viewOf<QCheckBox>("other")});
    ShownWindow::settle();
    const int height = window.widget.height();
    window.widget.resize(400, height + 100);
    ShownWindow::settle();
    CHECK(window.widget.size() == QSize(400, height));
}

TEST_CASE("a control keeps the keyboard when the rows around it change")
{
    const auto a = viewOf<QCheckBox>("a"), b = viewOf<QCheckBox>("b");
    const auto stack = stackOf(1, {a});
    ShownWindow window(stack->view());
    window.widget.activateWindow();
    widgetOf(a)->setFocus();
    stack->setViews({b, a});
    ShownWindow::settle();
    CHECK(window.widget.focusWidget() == widgetOf(a));
}

TEST_CASE("a text that grows widens its row")
{
    auto* label = new QLabel("a");
    const auto stack = stackOf(0, {platform::ui::wrapContainer(label), viewOf<QCheckBox>("b")});
    const int before = widgetOf(stack->view())->sizeHint().width();
    ShownWindow window(stack->view());
    label->setText("a longer text");
    ShownWindow::settle();
    CHECK(window.widget.width() > before);
    CHECK(window.widget.width() == widgetOf(stack->view())->sizeHint().width());
}

TEST_CASE("contradicting constraints are told by name and the rest is laid out")
{
    static QString told;
    const auto before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) { told += text; });
    const auto parent = View::create(), child = viewOf<platform::ui::StackContainer>();
    widgetOf(child)->setObjectName("child");
    parent->addSubview(child);
    parent->addConstraints({{child, Width, {}, {}, NotAnAttribute, 1, 40},
                            {child, Width, {}, {}, NotAnAttribute, 1, 50},
                            {child, Leading, {}, parent, Leading, 1, 7}});
    {
        ShownWindow window(parent);
        CHECK(child->frame().x == 7);
        CHECK(child->frame().width == 40);
    }
    qInstallMessageHandler(before);
    CHECK(told.contains("\"child\".width = 50"));
}

TEST_CASE("500 rows are laid out")
{
    ZRKStackView::Views views;
    for (int i = 0; i < 500; ++i)
        views.push_back(viewOf<QCheckBox>(QString("row %1").arg(i)));
    const auto stack = stackOf(1, views);
    const auto start = std::chrono::steady_clock::now();
    const QSize hint = widgetOf(stack->view())->sizeHint();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::cout << "500 rows: one solution takes " << time.count() << " ms\n";
    CHECK(hint.height() == 500 * widgetOf(views[0])->sizeHint().height() + 499 * 8 + 4);
    widgetOf(stack->view())->resize(hint);
    stack->view()->layoutIfNeeded();
    CHECK(bottom(views.back()) == hint.height() - 2);
}
