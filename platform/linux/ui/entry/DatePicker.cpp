#include "platform/ui/DatePicker.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/entry/TimeEntry.h"
#include "platform/linux/ui/layout/TextBaseline.h"
#include "platform/linux/ui/windows/WrapControls.h"

#include <cmath>
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

QTime qtTime(TimeOfDay time)
{
    return {time.hour, time.minute};
}

// What the picker shows, whether it has a widget at the moment or not.
struct DatePickerNative : ControlNative {
    explicit DatePickerNative(QWidget* theWidget);
    DatePickerNative() : ControlNative(nullptr) { }

    QWidget* newWidget() override;
    QTimeEdit* edit() const { return as<QTimeEdit>(); }
    void take(QTime shown) { time = {.hour = shown.hour(), .minute = shown.minute()}; }
    void follow(QTimeEdit& edit);

    TimeOfDay time;
};

DatePickerNative::DatePickerNative(QWidget* theWidget) : ControlNative(theWidget)
{
    take(edit()->time());
    follow(*edit());
}

QWidget* DatePickerNative::newWidget()
{
    auto* const edit = new QTimeEdit(qtTime(time));
    follow(*edit);
    return edit;
}

void DatePickerNative::follow(QTimeEdit& edit)
{
    edit.setDisplayFormat(hourAndMinuteFormat());
    new TimeEntry(edit);
    QObject::connect(&edit, &QDateTimeEdit::timeChanged, receiver(), [this](QTime shown) {
        take(shown);
        sendAction();
    });
}

DatePickerNative& pickerNative(const View& view)
{
    return static_cast<DatePickerNative&>(view.native());
}

} // namespace

std::shared_ptr<DatePicker> DatePicker::create()
{
    return std::make_shared<DatePicker>(std::make_unique<DatePickerNative>());
}

std::shared_ptr<DatePicker> wrapDatePicker(QTimeEdit& edit)
{
    return wrapWidget<DatePicker, DatePickerNative>(&edit);
}

DatePicker::DatePicker(std::unique_ptr<Native> native) : Control(std::move(native)) { }

TimeOfDay DatePicker::timeOfDay() const
{
    return pickerNative(*this).time;
}

void DatePicker::setTimeOfDay(TimeOfDay time)
{
    auto& native = pickerNative(*this);
    if (!qtTime(time).isValid())
        return;
    native.time = time;
    if (auto* const edit = native.edit()) {
        const QSignalBlocker quietly(edit);
        edit->setTime(qtTime(time));
    }
}

void DatePicker::setLayoutCorrection(double baselineOffsetFromBottom, double height)
{
    auto* const edit = realizedWidget(*this);
    setBaselineCorrection(*edit, baselineOffsetFromBottom);
    edit->setFixedHeight(edit->sizeHint().height() + static_cast<int>(std::lround(height)));
}

} // namespace platform::ui
