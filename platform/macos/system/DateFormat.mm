#include "platform/DateFormat.h"

#include "platform/macos/system/Foundation.h"

namespace platform {

struct DateFormat::Native {
    NSDateFormatter* formatter = [[NSDateFormatter alloc] init];
};

namespace {

NSDateFormatterStyle nativeStyle(DateStyle style)
{
    switch (style) {
    case DateStyle::None:
        return NSDateFormatterNoStyle;
    case DateStyle::Short:
        return NSDateFormatterShortStyle;
    case DateStyle::Medium:
        return NSDateFormatterMediumStyle;
    }
}

} // namespace

DateFormat DateFormat::withStyles(DateStyle date, DateStyle time)
{
    auto native = std::make_unique<Native>();
    native->formatter.dateStyle = nativeStyle(date);
    native->formatter.timeStyle = nativeStyle(time);
    return DateFormat(std::move(native));
}

DateFormat::DateFormat(std::unique_ptr<Native> native) : _native(std::move(native)) { }

DateFormat::~DateFormat() = default;
DateFormat::DateFormat(DateFormat&&) noexcept = default;
DateFormat& DateFormat::operator=(DateFormat&&) noexcept = default;

void DateFormat::setTimeZone(const std::string& name)
{
    @autoreleasepool {
        if (NSTimeZone* const zone = [NSTimeZone timeZoneWithName:foundation::string(name)])
            _native->formatter.timeZone = zone;
    }
}

std::string DateFormat::stringFromDate(double seconds)
{
    @autoreleasepool {
        NSDate* const date = [NSDate dateWithTimeIntervalSince1970:seconds];
        return foundation::string([_native->formatter stringFromDate:date]);
    }
}

} // namespace platform
