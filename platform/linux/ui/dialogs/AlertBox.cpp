#include "platform/linux/ui/dialogs/AlertBox.h"

#include "platform/linux/ui/controls/Title.h"
#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/Localization.h"

#include <algorithm>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>

namespace platform::ui {

namespace {

// Lines of a readable length, on small screens less: there a message box leaves 480 points free beside itself.
int comfortableTextWidth(const QWidget& box)
{
    return std::clamp(box.screen()->size().width() - 600, 0, 380);
}

} // namespace

AlertBox::AlertBox(const Content& content, QWidget* parent)
    : QMessageBox(parent),
      _style(content.style.value_or(AlertStyle::Warning)),
      _accessoryView(content.accessoryView)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QGuiApplication::applicationDisplayName());
    if (!content.style || *content.style == AlertStyle::Informational)
        setIcon(Information);
    else
        setIcon(*content.style == AlertStyle::Critical ? Critical : Warning);
    setTexts(content);
    if (content.buttons.empty())
        addButtons({localizedString("OK")});
    else
        addButtons(content.buttons);
    if (_accessoryView && _accessoryView->native().widget)
        insertAccessory(*_accessoryView->native().widget);
}

AlertBox::~AlertBox()
{
    if (_accessoryView && _accessoryView->native().widget)
        _accessoryView->native().widget->setParent(nullptr);
}

// Between the texts, in whose column it stands, and the buttons.
void AlertBox::insertAccessory(QWidget& accessory)
{
    auto* const grid = qobject_cast<QGridLayout*>(layout());
    auto* const buttons = findChild<QDialogButtonBox*>();
    auto* const message = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (!grid || !buttons || !message)
        return;
    int row = 0, column = 0, rows = 0, columns = 0, textColumn = 0;
    grid->getItemPosition(grid->indexOf(message), &row, &textColumn, &rows, &columns);
    grid->getItemPosition(grid->indexOf(buttons), &row, &column, &rows, &columns);
    grid->removeWidget(buttons);
    grid->addWidget(&accessory, row, textColumn, Qt::AlignLeading);
    grid->addWidget(buttons, row + 1, column, rows, columns);
    setTabOrder(&accessory, _inOrder.first());
    accessory.show();
}

void AlertBox::setTexts(const Content& content)
{
    const auto message = QString::fromStdString(content.messageText);
    const auto informative = QString::fromStdString(content.informativeText);
    setText(message);
    if (!informative.isEmpty())
        setInformativeText(informative);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setAccessibleName(message);
    setAccessibleDescription(informative);

    auto* const headline = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (headline) {
        auto bold = headline->font();
        bold.setBold(true);
        headline->setFont(bold);
    }
    for (auto* const label : findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText); // an error's words may look like mark-up
        if (label == headline)
            continue; // on one line as long as the toolkit finds room for it
        const auto width = label->fontMetrics().size(0, label->text()).width();
        label->setMinimumWidth(std::min(width, comfortableTextWidth(*this)));
    }
}

void AlertBox::addButtons(const std::vector<std::string>& titles)
{
    for (std::size_t i = 0; i < titles.size(); ++i) {
        const auto role = i == 0 ? AcceptRole : i + 1 == titles.size() ? RejectRole : ActionRole;
        _inOrder += addButton(markedTitle(titles[i], {}), role);
        if (titles[i] == localizedString("Cancel"))
            _cancel = _inOrder.last();
    }
    setDefaultButton(_inOrder.first());
}

// The toolkit would press the button that it finds the most negative.
void AlertBox::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Cancel))
        cancel();
    else
        QMessageBox::keyPressEvent(event);
}

void AlertBox::closeEvent(QCloseEvent* event)
{
    event->accept();
    cancel();
}

void AlertBox::cancel()
{
    if (_cancel)
        _cancel->click();
    else
        done(Rejected);
}

void AlertBox::done(int result)
{
    _isDone = true;
    QMessageBox::done(result);
}

int AlertBox::answer() const
{
    const auto pressed = _inOrder.indexOf(qobject_cast<QPushButton*>(clickedButton()));
    if (pressed >= 0)
        return Alert::FirstButtonReturn + static_cast<int>(pressed);
    return _isDone ? Alert::Stop : Alert::Abort;
}

} // namespace platform::ui
