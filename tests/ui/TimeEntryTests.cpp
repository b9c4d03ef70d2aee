#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/ui/DatePicker.h"
#include "platform/ui/Interface.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <QLineEdit>
#include <QTest>
#include <QTimeEdit>

using namespace platform::ui;

namespace {

// A picker in sight, and a person who clicks into it and types.
class Typist {
public:
    explicit Typist(const QString& format = QStringLiteral("HH:mm"), std::shared_ptr<DatePicker> given = nullptr)
        : picker(given ? std::move(given) : DatePicker::create())
    {
        picker->setTimeOfDay({.hour = 14, .minute = 5});
        picker->setLayoutCorrection(0, 0); // it has its widget from now on
        auto& field = edit();
        field.setDisplayFormat(format);
        if (field.isWindow())
            field.show();
        field.window()->activateWindow();
        CHECK(QTest::qWaitForWindowActive(field.window()));
        picker->setAction([this] { ++actions; });
    }

    QTimeEdit& edit() const { return *qobject_cast<QTimeEdit*>(picker->native().widget.data()); }
    QLineEdit& line() const { return *edit().findChild<QLineEdit*>(); }

    // In front of the character.
    void clickAt(int character)
    {
        int x = 0;
        while (x < line().width() && line().cursorPositionAt(QPoint(x, line().height() / 2)) < character)
            ++x;
        QTest::mouseClick(&line(), Qt::LeftButton, {}, QPoint(x + 1, line().height() / 2));
    }
    void type(const char* keys) { QTest::keyClicks(&edit(), QString::fromLatin1(keys)); }
    std::string text() const { return line().text().toStdString(); }
    std::string selected() const { return line().selectedText().toStdString(); }

    std::shared_ptr<DatePicker> picker;
    int actions = 0;
};

} // namespace

TEST_CASE("a click into the hour selects it, and digits fill it and then the minute")
{
    Typist typist;
    typist.clickAt(1);
    CHECK(typist.selected() == "14");
    typist.type("09");
    CHECK(typist.text() == "09:05");
    CHECK(typist.picker->timeOfDay() == TimeOfDay{.hour = 9, .minute = 5});
    CHECK(typist.selected() == "05");
    CHECK(typist.actions > 0);
    typist.type("30");
    CHECK(typist.text() == "09:30");
    typist.type("45"); // the minute stays selected
    CHECK(typist.text() == "09:45");
}

TEST_CASE("a click into the minute selects it, and the separator between them may be typed")
{
    Typist typist;
    typist.clickAt(4);
    CHECK(typist.selected() == "05");
    typist.type("59");
    CHECK(typist.text() == "14:59");
    typist.clickAt(0);
    typist.type("08:15");
    CHECK(typist.text() == "08:15");
    typist.clickAt(0);
    typist.type("7:20"); // no hour of two digits begins with 7
    CHECK(typist.text() == "07:20");
    typist.clickAt(0);
    typist.type("2:40");
    CHECK(typist.text() == "02:40");
}

TEST_CASE("digits that make no time begin anew, and over everything selected the hour is first")
{
    Typist typist;
    typist.clickAt(0);
    typist.type("27");
    CHECK(typist.text() == "07:05");
    typist.type("66");
    CHECK(typist.text() == "07:06");
    QTest::keyClick(&typist.edit(), Qt::Key_A, Qt::ControlModifier);
    typist.type("2359");
    CHECK(typist.text() == "23:59");
}

TEST_CASE("hours of half days keep their half")
{
    Typist typist(QStringLiteral("h:mm AP"));
    typist.clickAt(0);
    typist.type("0945");
    CHECK(typist.picker->timeOfDay() == TimeOfDay{.hour = 21, .minute = 45});
    typist.clickAt(0);
    typist.type("1200");
    CHECK(typist.picker->timeOfDay() == TimeOfDay{.hour = 12, .minute = 0});
    typist.clickAt(0);
    typist.type("1");
    typist.type(":");
    typist.type("30");
    CHECK(typist.picker->timeOfDay() == TimeOfDay{.hour = 13, .minute = 30});
}

TEST_CASE("the suspension's pickers take typing in the same way")
{
    const auto interface = Interface::load("MainWindow");
    interface->outlet<View>("rowsOutOfSight")->setHidden(false);
    interface->window()->makeKeyAndOrderFront();
    for (const char* const name : {"suspendFromPicker", "suspendToPicker"}) {
        Typist typist(QStringLiteral("HH:mm"), interface->outlet<DatePicker>(name));
        typist.clickAt(1);
        typist.type("0930");
        CHECK(typist.picker->timeOfDay() == TimeOfDay{.hour = 9, .minute = 30});
        typist.picker->setAction(nullptr);
    }
}
