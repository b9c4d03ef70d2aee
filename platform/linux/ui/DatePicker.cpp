#include "platform/ui/DatePicker.h"

#include "platform/linux/ui/ControlNative.h"

#include <QLocale>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QTimeEdit>

namespace platform::ui {

namespace {

// The user's short time without what some locales add after the minute.
QString hourAndMinuteFormat()
{
    auto format = QLocale::system().timeFormat(QLocale::ShortFormat);
    format.remove(QRegularExpression(QStringLiteral("[:.]ss?|\\s*t+")));
    return format;
}

} // namespace

DatePicker::DatePicker(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& edit = widgetOf<QTimeEdit>(*this);
    auto& control = controlNative(*this);
    edit.setDisplayFormat(hourAndMinuteFormat());
    QObject::connect(&edit, &QDateTimeEdit::timeChanged, &control.receiver, [&control] { control.sendAction(); });
}

TimeOfDay DatePicker::timeOfDay() const
{
    const auto time = widgetOf<QTimeEdit>(*this).time();
    return {.hour = time.hour(), .minute = time.minute()};
}

void DatePicker::setTimeOfDay(TimeOfDay time)
{
    auto& edit = widgetOf<QTimeEdit>(*this);
    const QTime value(time.hour, time.minute);
    if (!value.isValid())
        return;
    const QSignalBlocker quietly(edit);
    edit.setTime(value);
}

} // namespace platform::ui
