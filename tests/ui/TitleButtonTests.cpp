#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/ui/Button.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <QPushButton>
#include <QTest>

using namespace platform::ui;

namespace {

// Red, while it is pressed green; notes what it is asked for.
class NotingCell : public ButtonCell {
public:
    Rect drawTitle(const platform::StyledText& title, const Rect& frame, Canvas& canvas) const override
    {
        titles.push_back(title.string());
        const platform::FixedColor red{1, 0, 0}, green{0, 1, 0};
        platform::StyledText colored;
        colored.appendString(title.string(), {.font = {}, .foreground = canvas.isHighlighted() ? green : red});
        drawn = ButtonCell::drawTitle(colored, frame, canvas);
        room = frame;
        return drawn;
    }

    mutable std::vector<std::string> titles;
    mutable Rect room, drawn;
};

int pixelsOf(const QImage& image, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == color;
    }
    return count;
}

} // namespace

TEST_CASE("a button with a cell has no border, and draws its title through the cell, pressed or not")
{
    const auto cell = std::make_shared<NotingCell>();
    const auto button = Button::create("Help & \u25a0\u25a0\u25a0", cell);
    CHECK(button->title() == "Help & \u25a0\u25a0\u25a0");
    auto& widget = *qobject_cast<QPushButton*>(button->native().widget.data());
    widget.resize(widget.sizeHint());
    const auto plain = widget.grab().toImage();
    CHECK(cell->titles.back() == "Help & \u25a0\u25a0\u25a0");
    CHECK(pixelsOf(plain, Qt::red) > 20);
    CHECK(pixelsOf(plain, Qt::green) == 0);
    CHECK(plain.pixelColor(0, 0) == widget.palette().color(QPalette::Window));
    // The whole title is in sight, in the middle.
    CHECK(cell->drawn.width <= cell->room.width + 1);
    CHECK(cell->drawn.x + cell->drawn.width / 2 == doctest::Approx(cell->room.x + cell->room.width / 2));

    widget.setDown(true);
    const auto pressed = widget.grab().toImage();
    CHECK(pixelsOf(pressed, Qt::green) > 20);
    CHECK(pixelsOf(pressed, Qt::red) == 0);
}

TEST_CASE("a button with a cell is pressed with the mouse and with the keyboard")
{
    const auto button = Button::create("Web Site", std::make_shared<ButtonCell>());
    int presses = 0;
    button->setAction([&presses] { ++presses; });
    auto& widget = *button->native().widget;
    widget.show();
    QTest::mouseClick(&widget, Qt::LeftButton);
    CHECK(presses == 1);
    CHECK(widget.focusPolicy() == Qt::StrongFocus);
    QTest::keyClick(&widget, Qt::Key_Space);
    CHECK(presses == 2);
    widget.hide();
}
