#include "tests/localization/Inspection.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QStyle>
#include <QStyleOptionComboBox>

namespace inspection {

namespace {

// A control with something to read, as opposed to its parts and to what merely holds it.
bool isReadable(const QWidget& widget)
{
    if (qobject_cast<QAbstractSpinBox*>(widget.parentWidget()) || qobject_cast<QComboBox*>(widget.parentWidget())
        || qobject_cast<QMenuBar*>(widget.parentWidget()))
        return false;
    return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QLabel*>(&widget)
        || qobject_cast<const QComboBox*>(&widget) || qobject_cast<const QAbstractSpinBox*>(&widget)
        || qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QMenuBar*>(&widget);
}

QWidgetList readableControls(const QWidget& window)
{
    QWidgetList controls;
    for (auto* const widget : window.findChildren<QWidget*>()) {
        if (widget->window() == &window && widget->isVisible() && isReadable(*widget))
            controls += widget;
    }
    return controls;
}

QRect frameIn(const QWidget& window, const QWidget& widget)
{
    return {widget.mapTo(&window, QPoint(0, 0)), widget.size()};
}

QSize roomNeeded(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget); label && label->wordWrap())
        return {0, label->heightForWidth(label->width())};
    if (const auto* const line = qobject_cast<const QLineEdit*>(&widget)) {
        const auto frame = line->sizeHint().width() - line->fontMetrics().horizontalAdvance(u'x') * 17;
        return {line->fontMetrics().horizontalAdvance(line->text()) + frame, line->sizeHint().height()};
    }
    return qobject_cast<const QComboBox*>(&widget) ? widget.minimumSizeHint() : widget.sizeHint();
}

// The widest item must fit beside the arrow.
int missingItemWidth(const QComboBox& box)
{
    QStyleOptionComboBox option;
    option.initFrom(&box);
    option.editable = box.isEditable();
    const auto field = box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box);
    int widest = 0;
    for (int i = 0; i < box.count(); ++i)
        widest = std::max(widest, box.fontMetrics().horizontalAdvance(box.itemText(i)));
    return widest - field.width();
}

std::string nameOf(const QWidget& widget)
{
    const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    const auto text = button ? button->text() : label ? label->text() : QString();
    return (widget.objectName() + QStringLiteral(" \"") + text + u'"').toStdString();
}

std::string sized(const QSize& size)
{
    return std::to_string(size.width()) + " by " + std::to_string(size.height());
}

void complainOfRoom(const QWidget& widget, Complaints& complaints)
{
    const auto needed = roomNeeded(widget);
    if (widget.width() < needed.width() || widget.height() < needed.height())
        complaints.push_back(nameOf(widget) + " is " + sized(widget.size()) + " and needs " + sized(needed));
    if (const auto* const box = qobject_cast<const QComboBox*>(&widget); box && missingItemWidth(*box) > 0)
        complaints.push_back(nameOf(widget) + " is too narrow for an item by "
                             + std::to_string(missingItemWidth(*box)));
}

void complainOfHeaders(const QWidget& window, Complaints& complaints)
{
    for (const auto* const header : window.findChildren<QHeaderView*>()) {
        for (int section = 0; header->isVisible() && section < header->count(); ++section) {
            if (header->sectionSize(section) < header->sectionSizeHint(section))
                complaints.push_back("The title of column " + std::to_string(section) + " does not fit");
        }
    }
}

void complainOfEdges(const QWidget& window, const QWidget& widget, Complaints& complaints)
{
    for (const auto* holder = widget.parentWidget(); holder; holder = holder->parentWidget()) {
        if (!holder->rect().contains(QRect(widget.mapTo(holder, QPoint(0, 0)), widget.size()))) {
            complaints.push_back(nameOf(widget) + " reaches beyond " + nameOf(*holder));
            return;
        }
        if (holder == &window)
            return;
    }
}

void complainOfOverlaps(const QWidget& window, const QWidgetList& controls, Complaints& complaints)
{
    for (qsizetype i = 0; i < controls.size(); ++i) {
        for (qsizetype j = i + 1; j < controls.size(); ++j) {
            if (controls[i]->isAncestorOf(controls[j]) || controls[j]->isAncestorOf(controls[i]))
                continue;
            if (frameIn(window, *controls[i]).intersects(frameIn(window, *controls[j])))
                complaints.push_back(nameOf(*controls[i]) + " and " + nameOf(*controls[j]) + " overlap");
        }
    }
}

} // namespace

Complaints complaintsAbout(const QWidget& window)
{
    Complaints complaints;
    const auto controls = readableControls(window);
    if (controls.isEmpty())
        complaints.push_back("There is nothing to read in " + nameOf(window));
    for (const auto* const control : controls) {
        complainOfRoom(*control, complaints);
        complainOfEdges(window, *control, complaints);
    }
    complainOfHeaders(window, complaints);
    complainOfOverlaps(window, controls, complaints);
    return complaints;
}

std::map<QString, QRect> frames(const QWidget& window)
{
    std::map<QString, QRect> frames;
    for (const auto* const control : readableControls(window)) {
        if (!control->objectName().isEmpty())
            frames[control->objectName()] = frameIn(window, *control);
    }
    return frames;
}

QRect mirrored(const QRect& frame, int windowWidth)
{
    return {windowWidth - frame.x() - frame.width(), frame.y(), frame.width(), frame.height()};
}

} // namespace inspection
