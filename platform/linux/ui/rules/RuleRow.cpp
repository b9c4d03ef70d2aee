#include "platform/linux/ui/rules/RuleRow.h"

#include "platform/Format.h"
#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/Localization.h"

#include <algorithm>
#include <QAbstractSpinBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <utility>

namespace platform::ui {

namespace {

std::string numbered(int number, const std::string& name)
{
    const auto text = formatString(localizedString("Row %@, %@"), {std::to_string(number), name});
    return text.value_or(name);
}

bool isKeyOfTheList(const QKeyEvent& event, const QWidget& widget)
{
    // In a field, Delete is for its text.
    return event.key() == Qt::Key_Insert
        || (event.key() == Qt::Key_Delete && !qobject_cast<const QAbstractSpinBox*>(&widget));
}

} // namespace

RuleRow::RuleRow(const RuleEditor::DisplayValues& values, QWidget* parent) : QWidget(parent)
{
    auto* const sentence = new QHBoxLayout(this);
    sentence->setContentsMargins(8, 3, 8, 3);
    sentence->setSpacing(6);
    for (const RuleDisplayValue& value : values) {
        if (const auto* const text = std::get_if<std::string>(&value)) {
            auto* const label = new QLabel(qtString(*text));
            label->setTextFormat(Qt::PlainText);
            sentence->addWidget(label);
        } else {
            addControl(std::get<std::shared_ptr<View>>(value));
            sentence->addWidget(_stops.back());
        }
    }
    sentence->addStretch(1);
    _remove = addButton(QStringLiteral("\u2212"), "removeRowButton");
    _add = addButton(QStringLiteral("+"), "addRowButton");
    sentence->addWidget(_remove);
    sentence->addWidget(_add);
    connect(_remove, &QToolButton::clicked, this, &RuleRow::removePressed);
    connect(_add, &QToolButton::clicked, this, &RuleRow::addPressed);
}

void RuleRow::addControl(const std::shared_ptr<View>& view)
{
    auto* const widget = realizedWidget(*view);
    _controls.push_back({view, view->native().accessibleName});
    _stops.push_back(widget);
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->installEventFilter(this);
    for (auto* const part : widget->findChildren<QWidget*>())
        part->installEventFilter(this);
}

QToolButton* RuleRow::addButton(const QString& text, const char* identifier)
{
    auto* const button = new QToolButton;
    button->setText(text);
    button->setObjectName(QString::fromLatin1(identifier));
    button->setFocusPolicy(Qt::StrongFocus);
    _stops.push_back(button);
    return button;
}

void RuleRow::dismiss()
{
    for (const Control& control : std::exchange(_controls, {})) {
        auto& native = control.view->native();
        if (!native.makesOwnWidget && native.widget)
            native.widget->setParent(nullptr);
        dropWidget(*control.view);
    }
    disconnect();
    hide();
    deleteLater();
}

void RuleRow::setNumber(int number)
{
    if (number == std::exchange(_number, number))
        return;
    for (const Control& control : _controls)
        ui::setAccessibleName(*control.view->native().widget, qtString(numbered(number, control.name)));
    const auto removal = localizedString("remove this row");
    const auto addition = localizedString("add a row below");
    _remove->setAccessibleName(qtString(numbered(number, removal)));
    _add->setAccessibleName(qtString(numbered(number, addition)));
}

int RuleRow::stopOf(const QWidget* widget) const
{
    const auto found = std::ranges::find_if(
        _stops, [widget](const QWidget* stop) { return widget && (stop == widget || stop->isAncestorOf(widget)); });
    return found == _stops.end() ? -1 : static_cast<int>(found - _stops.begin());
}

bool RuleRow::isStop(int stop) const
{
    return stop >= 0 && stop < numberOfStops() && _stops[static_cast<std::size_t>(stop)]->isEnabled();
}

void RuleRow::focusStop(int stop, Qt::FocusReason reason)
{
    _stops[static_cast<std::size_t>(stop)]->setFocus(reason);
}

bool RuleRow::eventFilter(QObject* watched, QEvent* event)
{
    // The wheel scrolls the list; it never changes what it happens to pass over.
    bool isOfTheList = event->type() == QEvent::Wheel;
    if (event->type() == QEvent::KeyPress)
        isOfTheList = isKeyOfTheList(*static_cast<QKeyEvent*>(event), *static_cast<QWidget*>(watched));
    if (isOfTheList)
        event->ignore();
    return isOfTheList;
}

} // namespace platform::ui
