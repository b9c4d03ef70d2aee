#include "tests/platform/ui/AlertWatcher.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/Title.h"
#include "platform/linux/ui/dialogs/AlertBox.h"

#include <cstdio>
#include <cstdlib>
#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTest>

using platform::ui::AlertBox;
using platform::ui::Control;

namespace user {

ShownAlert AlertWatcher::describe(const AlertBox& box)
{
    ShownAlert shown{.messageText = box.text().toStdString(),
                     .informativeText = box.informativeText().toStdString(),
                     .buttons = {},
                     .isSheet = box.windowModality() == Qt::WindowModal,
                     .style = box.alertStyle()};
    for (const auto* const button : box.buttonsInOrder())
        shown.buttons.push_back(platform::ui::plainTitle(button->text()));
    if (const auto* const check = box.findChild<QCheckBox*>(); check && check->isVisible()) {
        shown.checkBox = platform::ui::plainTitle(check->text());
        shown.checkBoxIsOn = check->isChecked();
        shown.checkBoxIsSwitchButton = check->property("isSwitchButton").toBool();
        const auto view = std::dynamic_pointer_cast<Control>(platform::ui::viewForWidget(check));
        shown.checkBoxIsLarge = view && view->controlSize() == platform::ui::ControlSize::Large;
    }
    return shown;
}

void AlertWatcher::tick(AlertBox& box)
{
    auto* const check = box.findChild<QCheckBox*>();
    if (!check)
        throw std::logic_error("The alert has no check box");
    QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(8, check->height() / 2));
}

void AlertWatcher::answer(AlertBox& box, int buttonIndex)
{
    if (buttonIndex == CloseButton) {
        box.close();
        return;
    }
    const auto buttons = box.buttonsInOrder();
    if (buttonIndex < 0 || buttonIndex >= buttons.size())
        throw std::logic_error("The alert has no button " + std::to_string(buttonIndex));
    QTest::mouseClick(buttons[buttonIndex], Qt::LeftButton);
}

AlertBox* AlertWatcher::front()
{
    if (auto* const modal = qobject_cast<AlertBox*>(QApplication::activeModalWidget()))
        return modal;
    for (auto* const widget : QApplication::topLevelWidgets()) {
        auto* const box = qobject_cast<AlertBox*>(widget);
        if (box && box->isVisible())
            return box;
    }
    return nullptr;
}

bool AlertWatcher::eventFilter(QObject* object, QEvent* event)
{
    auto* const box = event->type() == QEvent::Show ? qobject_cast<AlertBox*>(object) : nullptr;
    if (box)
        alertDidShow(*box);
    return false;
}

void AlertWatcher::alertDidShow(AlertBox& box)
{
    std::optional<Answer> chosen;
    if (!prepared.empty()) {
        chosen = prepared.front();
        prepared.pop_front();
    } else if (choose) {
        chosen = Answer{choose(describe(box)), false};
    }
    if (chosen) {
        const auto answerWhenShown = [this, alert = QPointer(&box), what = *chosen] {
            if (!alert)
                return;
            answered.push_back(describe(*alert));
            if (what.ticksCheckBox)
                tick(*alert);
            answer(*alert, what.button);
        };
        QMetaObject::invokeMethod(this, answerWhenShown, Qt::QueuedConnection);
    } else if (box.windowModality() != Qt::WindowModal) {
        const auto alert = describe(box);
        std::fprintf(stderr, "A modal alert that nobody answers: \"%s\" \"%s\"\n", alert.messageText.c_str(),
                     alert.informativeText.c_str());
        std::abort();
    }
}

} // namespace user
