#include "platform/linux/ui/AlertBox.h"

#include "platform/linux/ui/Title.h"
#include "platform/Localization.h"

#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>

namespace platform::ui {

AlertBox::AlertBox(const Content& content, QWidget* parent) : QMessageBox(parent)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QGuiApplication::applicationDisplayName());
    switch (content.style) {
    case AlertStyle::Warning:
        setIcon(Warning);
        break;
    case AlertStyle::Informational:
        setIcon(Information);
        break;
    case AlertStyle::Critical:
        setIcon(Critical);
        break;
    }
    setTexts(content);
    if (content.buttons.empty())
        addButtons({localizedString("OK")});
    else
        addButtons(content.buttons);
}

void AlertBox::setTexts(const Content& content)
{
    const auto message = QString::fromStdString(content.messageText);
    const auto informative = QString::fromStdString(content.informativeText);
    setText(message);
    if (!informative.isEmpty())
        setInformativeText(informative);
    // Plain in either label: an error's words may look like mark-up.
    for (auto* const label : findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setAccessibleName(message);
    setAccessibleDescription(informative);

    if (auto* const label = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
        auto bold = label->font();
        bold.setBold(true);
        label->setFont(bold);
    }
}

void AlertBox::addButtons(const std::vector<std::string>& titles)
{
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const auto role = i == 0 ? AcceptRole : i + 1 == titles.size() ? RejectRole : ActionRole;
        _inOrder += addButton(markedTitle(titles[i], {}), role);
    }
    setDefaultButton(_inOrder.first());
    setEscapeButton(_inOrder.last());
}

int AlertBox::answer() const
{
    const auto pressed = _inOrder.indexOf(qobject_cast<QPushButton*>(clickedButton()));
    return Alert::FirstButtonReturn + static_cast<int>(pressed < 0 ? _inOrder.size() - 1 : pressed);
}

} // namespace platform::ui
