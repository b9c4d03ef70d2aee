#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/dialogs/AlertBox.h"
#include "platform/ui/Alert.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/Interface.h"
#include "tests/platform/ui/AlertWatcher.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <optional>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QTest>

using namespace platform::ui;

namespace {

Alert alertWithButtons(const std::vector<std::string>& titles)
{
    Alert alert;
    alert.setMessageText("Failed to apply settings.");
    alert.setInformativeText("The <helper> & its friends\n\nare away.");
    for (const auto& title : titles)
        alert.addButton(title);
    return alert;
}

struct Sheet {
    Sheet()
    {
        interface->window()->makeKeyAndOrderFront();
        user::runEvents();
    }

    void begin(const std::vector<std::string>& titles)
    {
        alertWithButtons(titles).beginSheet(interface->window(), [this](int response) { answers.push_back(response); });
    }

    AlertBox& box() const
    {
        for (auto* const widget : QApplication::topLevelWidgets()) {
            if (auto* const found = qobject_cast<AlertBox*>(widget); found && found->isVisible())
                return *found;
        }
        throw std::logic_error("No alert is on screen");
    }

    std::unique_ptr<Interface> interface = Interface::load("MainWindow");
    std::vector<int> answers;
};

} // namespace

TEST_CASE("a modal alert answers 1000, 1001 or 1002 by its buttons' order")
{
    for (int i = 0; i < 3; ++i) {
        user::answerNextAlert(i);
        CHECK(alertWithButtons({"Go to Web Site", "Ask for Support", "OK"}).runModal() == 1000 + i);
    }
    const auto shown = user::takeAnsweredAlerts();
    REQUIRE(shown.size() == 3);
    CHECK(shown[0].messageText == "Failed to apply settings.");
    CHECK(shown[0].informativeText == "The <helper> & its friends\n\nare away.");
    CHECK(shown[0].buttons == std::vector<std::string>{"Go to Web Site", "Ask for Support", "OK"});
    CHECK_FALSE(shown[0].isSheet);
}

TEST_CASE("an alert without added buttons has OK")
{
    user::answerNextAlert(0);
    CHECK(alertWithButtons({}).runModal() == Alert::FirstButtonReturn);
    CHECK(user::takeAnsweredAlerts().at(0).buttons == std::vector<std::string>{"OK"});
}

TEST_CASE("an alert looks like a warning where it asks for that, and like a notice where nobody asks")
{
    const auto iconOf = [](std::optional<AlertStyle> style) {
        return AlertBox({.style = style, .messageText = "m", .informativeText = "", .buttons = {}}, nullptr).icon();
    };
    CHECK(iconOf({}) == QMessageBox::Information);
    CHECK(iconOf(AlertStyle::Informational) == QMessageBox::Information);
    CHECK(iconOf(AlertStyle::Warning) == QMessageBox::Warning);
    CHECK(iconOf(AlertStyle::Critical) == QMessageBox::Critical);
    // To others it is a warning, as everywhere.
    CHECK(AlertBox({.style = {}, .messageText = "m", .informativeText = "", .buttons = {}}, nullptr).alertStyle()
          == AlertStyle::Warning);
}

TEST_CASE("ampersands in a button's title are shown")
{
    user::answerNextAlert(0);
    alertWithButtons({"Save & Quit"}).runModal();
    CHECK(user::takeAnsweredAlerts().at(0).buttons == std::vector<std::string>{"Save & Quit"});
}

TEST_CASE("a sheet returns at once and its completion hears the answer after it closed")
{
    Sheet sheet;
    sheet.begin({"Enable", "Maybe Later"});
    CHECK(sheet.answers.empty());
    const auto shown = user::currentAlert();
    REQUIRE(shown);
    CHECK(shown->isSheet);
    CHECK(shown->buttons == std::vector<std::string>{"Enable", "Maybe Later"});
    user::answer(1);
    CHECK(sheet.answers == std::vector{1001});
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("the completion of a sheet may show the next one")
{
    Sheet sheet;
    bool second = false;
    alertWithButtons({"One"}).beginSheet(sheet.interface->window(), [&](int) {
        CHECK_FALSE(user::currentAlert());
        alertWithButtons({"Two"}).beginSheet(sheet.interface->window(), [&](int) { second = true; });
    });
    user::answer(0);
    REQUIRE(user::currentAlert());
    CHECK(user::currentAlert()->buttons == std::vector<std::string>{"Two"});
    user::answer(0);
    CHECK(second);
}

TEST_CASE("a sheet without a completion just closes")
{
    Sheet sheet;
    alertWithButtons({}).beginSheet(sheet.interface->window(), {});
    user::answer(0);
    CHECK_FALSE(user::currentAlert());
}

TEST_CASE("a sheet keeps its window from taking input")
{
    Sheet sheet;
    sheet.begin({"OK"});
    CHECK(sheet.box().windowModality() == Qt::WindowModal);
    CHECK(sheet.box().parentWidget()->objectName() == "mainWindow");
    user::answer(0);
}

TEST_CASE("Return presses the first button, and Escape and the close button the one that cancels")
{
    Sheet sheet;
    sheet.begin({"Uninstall", "More", "Cancel"});
    QTest::keyClick(&sheet.box(), Qt::Key_Return);
    user::runEvents();
    sheet.begin({"Uninstall", "Cancel", "More"});
    user::cancelAlert();
    sheet.begin({"Uninstall", "Cancel"});
    user::answer(user::CloseButton);
    CHECK(sheet.answers == std::vector{1000, 1001, 1001});
}

TEST_CASE("Escape and the close button stop an alert that cannot be cancelled, which is no button's answer")
{
    Sheet sheet;
    for (const auto& buttons : std::vector<std::vector<std::string>>{
             {"Open System Settings", "Go to Web Site"}, {"Update", "Download", "Later"}, {"OK"}, {}}) {
        sheet.begin(buttons);
        user::cancelAlert();
        sheet.begin(buttons);
        user::answer(user::CloseButton);
        CHECK(std::exchange(sheet.answers, {}) == std::vector{Alert::Stop, Alert::Stop});
        CHECK_FALSE(user::currentAlert());
    }
}

TEST_CASE("a modal alert that is closed is stopped")
{
    user::answerNextAlert(user::CloseButton);
    CHECK(alertWithButtons({"One", "Two"}).runModal() == Alert::Stop);
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("an alert's message is bold, both its texts can be selected, and assistive tools can tell them")
{
    Sheet sheet;
    sheet.begin({"OK"});
    auto& box = sheet.box();
    const auto* const message = box.findChild<QLabel*>("qt_msgbox_label");
    const auto* const informative = box.findChild<QLabel*>("qt_msgbox_informativelabel");
    REQUIRE(message);
    REQUIRE(informative);
    CHECK(message->font().bold());
    CHECK_FALSE(informative->font().bold());
    for (const auto* const label : {message, informative}) {
        CHECK(label->textFormat() == Qt::PlainText);
        CHECK(label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    }
    const auto* const accessible = QAccessible::queryAccessibleInterface(&box);
    CHECK(accessible->role() == QAccessible::AlertMessage);
    CHECK(accessible->text(QAccessible::Name) == "Failed to apply settings.");
    CHECK(accessible->text(QAccessible::Description) == box.informativeText());
    user::answer(0);
}

TEST_CASE("an accessory view stands between the texts and the buttons, and is free again afterwards")
{
    const auto box = CheckBox::create("Install updates automatically");
    CHECK(box->title() == "Install updates automatically");
    CHECK_FALSE(box->isOn());
    CHECK_FALSE(box->superview());
    auto alert = alertWithButtons({});
    alert.setAccessoryView(box);
    QRect text, check, button;
    user::answerEveryAlert([&](const user::ShownAlert&) {
        const auto& shown = *user::AlertWatcher::front();
        shown.layout()->activate();
        const auto frame = [&](const QWidget* widget) {
            return QRect(widget->mapTo(&shown, QPoint()), widget->size());
        };
        text = frame(shown.findChild<QLabel*>("qt_msgbox_informativelabel"));
        check = frame(shown.findChild<QCheckBox*>());
        button = frame(shown.buttonsInOrder().first());
        return 0;
    });
    alert.runModal();
    user::answerEveryAlert(nullptr);
    user::takeAnsweredAlerts();
    CHECK(text.bottom() < check.top());
    CHECK(check.bottom() < button.top());
    CHECK(check.left() == text.left());

    user::tickAndAnswerNextAlert(0);
    alert.runModal();
    CHECK(box->isOn());
    CHECK_FALSE(box->native().widget->parentWidget());
    const auto shown = user::takeAnsweredAlerts();
    CHECK(shown.at(0).checkBox == "Install updates automatically");
}

TEST_CASE("a sheet keeps its accessory view until it is answered")
{
    Sheet sheet;
    const auto box = CheckBox::createSwitchButton("Accessory");
    auto alert = alertWithButtons({"OK"});
    alert.setAccessoryView(box);
    alert.beginSheet(sheet.interface->window(), {});
    CHECK(user::currentAlert()->checkBox == "Accessory");
    user::answer(0);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    REQUIRE(box->native().widget);
    CHECK_FALSE(box->native().widget->parentWidget());
    CHECK_FALSE(box->isOn());
}

TEST_CASE("an accessory view that nobody holds anymore goes with its alert")
{
    user::tickAndAnswerNextAlert(0);
    {
        auto alert = alertWithButtons({});
        alert.setAccessoryView(CheckBox::create("Accessory"));
        alert.runModal();
    }
    CHECK(user::takeAnsweredAlerts().size() == 1);
}

TEST_CASE("a large control is higher than a regular one, and can be made regular again")
{
    const auto box = CheckBox::create("Large");
    CHECK(box->controlSize() == ControlSize::Regular);
    box->setControlSize(ControlSize::Large);
    CHECK(box->controlSize() == ControlSize::Large);
    const auto& widget = *box->native().widget;
    CHECK(widget.minimumHeight() > widget.sizeHint().height());
    box->setControlSize(ControlSize::Regular);
    CHECK(widget.minimumHeight() == 0);
}
