#include "tests/shell/support/OpenPanelUser.h"

#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

namespace {

QFileDialog& panel()
{
    QFileDialog* found = nullptr;
    REQUIRE(user::runEventsUntil(
        [&found] {
            for (auto* const widget : QApplication::topLevelWidgets()) {
                auto* const dialog = qobject_cast<QFileDialog*>(widget);
                if (dialog && dialog->isVisible())
                    found = dialog;
            }
            return found != nullptr;
        },
        5000));
    return *found;
}

} // namespace

void answerOpenPanel(const std::string& path)
{
    auto& dialog = panel();
    auto* const name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    REQUIRE(name);
    name->setText(QString::fromStdString(path));
    QTest::keyClick(&dialog, Qt::Key_Return);
    REQUIRE(user::runEventsUntil([&] { return !QApplication::activeModalWidget(); }, 5000));
}

void cancelOpenPanel()
{
    panel().reject();
}
