#include "platform/linux/ui/application/AboutPanel.h"

#include "platform/Format.h"
#include "platform/linux/system/texts/StringTable.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/Localization.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
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

constexpr int pictureSize = 64;
constexpr int leastWidth = 220; // or the window's frame would have no room for its title

// The desktop's theme may have its own; one of the toolkit's serves where no picture of this kind can be drawn.
QPixmap applicationPicture()
{
    const QIcon own(QString::fromStdString(resourceFolder() + "/icon/brevane.svg"));
    auto picture = QIcon::fromTheme(QGuiApplication::desktopFileName(), own).pixmap(pictureSize, pictureSize);
    if (!picture.isNull())
        return picture;
    return QApplication::style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(pictureSize, pictureSize);
}

} // namespace

void AboutPanel::orderFront(const std::string& version, std::vector<std::shared_ptr<Button>> links)
{
    AboutPanel* panel = nullptr;
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (auto* const open = qobject_cast<AboutPanel*>(widget); open && open->isVisible())
            panel = open;
    }
    if (!panel)
        panel = new AboutPanel(version, std::move(links));
    panel->show();
    panel->raise();
    panel->activateWindow();
}

AboutPanel::AboutPanel(const std::string& version, std::vector<std::shared_ptr<Button>> links)
    : QDialog(QApplication::activeWindow()),
      _links(std::move(links))
{
    setObjectName(QStringLiteral("aboutPanel"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    const auto name = QGuiApplication::applicationDisplayName();
    setWindowTitle(aboutText("About %@", name.toStdString()));

    auto* const icon = new QLabel;
    icon->setPixmap(applicationPicture());
    icon->setAlignment(Qt::AlignCenter);
    auto* const title = centredLabel(name);
    auto bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.4);
    title->setFont(bold);
    title->setMinimumWidth(leastWidth);
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
    for (auto* const widget : std::initializer_list<QWidget*>{icon, title, number})
        column->addWidget(widget);
    for (const auto& link : _links)
        column->addWidget(link->native().widget, 0, Qt::AlignHCenter);
    column->addWidget(buttons);
    buttons->buttons().constFirst()->setFocus();
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace platform::ui
