#include "platform/linux/ui/AboutPanel.h"

#include "platform/Format.h"
#include "platform/Localization.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

namespace platform::ui {

namespace {

QString aboutText(const char* key, const std::string& argument)
{
    return QString::fromStdString(formatString(localizedString(key), {argument}).value_or(argument));
}

QLabel* centredLabel(const QString& text)
{
    auto* const label = new QLabel(text);
    label->setAlignment(Qt::AlignCenter);
    label->setTextFormat(Qt::PlainText);
    return label;
}

// The icon of the desktop's theme that belongs to the application, or else one of the toolkit's own.
QIcon applicationIcon()
{
    const auto fallback = QApplication::style()->standardIcon(QStyle::SP_MessageBoxInformation);
    return QIcon::fromTheme(QGuiApplication::desktopFileName(), fallback);
}

} // namespace

void AboutPanel::orderFront(const std::string& version)
{
    AboutPanel* panel = nullptr;
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (auto* const open = qobject_cast<AboutPanel*>(widget); open && open->isVisible())
            panel = open;
    }
    if (!panel)
        panel = new AboutPanel(version);
    panel->show();
    panel->raise();
    panel->activateWindow();
}

AboutPanel::AboutPanel(const std::string& version) : QDialog(QApplication::activeWindow())
{
    setObjectName(QStringLiteral("aboutPanel"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    const auto name = QGuiApplication::applicationDisplayName();
    setWindowTitle(aboutText("About %@", name.toStdString()));

    auto* const icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_LargeIconSize);
    icon->setPixmap(applicationIcon().pixmap(size, size));
    icon->setAlignment(Qt::AlignCenter);
    auto* const title = centredLabel(name);
    auto bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.4);
    title->setFont(bold);
    auto* const number = centredLabel(aboutText("Version %@", version));
    number->setObjectName(QStringLiteral("versionLabel"));
    number->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::NoButton);
    buttons->addButton(QString::fromStdString(localizedString("OK")), QDialogButtonBox::AcceptRole);
    buttons->setCenterButtons(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::close);

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(36, 24, 36, 18);
    column->setSpacing(10);
    for (auto* const widget : std::initializer_list<QWidget*>{icon, title, number, buttons})
        column->addWidget(widget);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace platform::ui
