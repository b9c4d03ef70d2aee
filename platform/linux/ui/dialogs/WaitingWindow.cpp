#include "platform/linux/ui/dialogs/WaitingWindow.h"

#include "platform/linux/ui/controls/Spinner.h"
#include "platform/Localization.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>

namespace platform::ui {

WaitingWindow::WaitingWindow(const std::string& text)
{
    setObjectName(QStringLiteral("waitingWindow"));
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowModality(Qt::ApplicationModal);
    setWindowTitle(QGuiApplication::applicationDisplayName());
    auto* const spinner = new Spinner;
    spinner->setSpinning(true);
    auto* const label = new QLabel(QString::fromStdString(text));
    label->setTextFormat(Qt::PlainText);
    setAccessibleName(label->text());
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::NoButton);
    buttons->addButton(QString::fromStdString(localizedString("Cancel")), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(24, 20, 24, 16);
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(16);
    grid->addWidget(spinner, 0, 0);
    grid->addWidget(label, 0, 1);
    grid->addWidget(buttons, 1, 0, 1, 2);
    grid->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace platform::ui
