#include "diagnostics/console/LogLineWriter.h"

#include "diagnostics/console/LogTimestamp.h"

#include <cstddef>
#include <optional>

using namespace platform;

namespace {

constexpr std::string_view productSubsystem = "com.zerkolin.brevane";
constexpr std::string_view schedulerName = "com.zerkolin.brevane.scheduler";
constexpr std::string_view schedulerLabel = "Brevane\u00A0Scheduler";
constexpr std::string_view backupLabel = "Time Machine";
constexpr std::string_view thermalMessage = "thermal pressure level"; // in lower case
constexpr std::string_view unknownDate = "???";

char lowerCase(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
}

bool mentionsThermalPressure(std::string_view message)
{
    constexpr char rareLetter = 'v';
    constexpr auto place = thermalMessage.find(rareLetter);
    // The first letters of most messages decide nothing, so the look-out is for a letter that is seldom there.
    for (auto at = message.find_first_of("vV"); at != std::string_view::npos;
         at = message.find_first_of("vV", at + 1)) {
        if (at < place || message.size() - (at - place) < thermalMessage.size())
            continue;
        const auto candidate = message.substr(at - place, thermalMessage.size());
        std::size_t same = 0;
        while (same < candidate.size() && lowerCase(candidate[same]) == thermalMessage[same])
            ++same;
        if (same == candidate.size())
            return true;
    }
    return false;
}

FormatArgument argument(const JSONField& field)
{
    return field.kind == JSONField::Kind::Absent ? FormatArgument(static_cast<const char*>(nullptr))
                                                 : FormatArgument(field.text);
}

std::string_view senderOf(const JSONField& processImagePath)
{
    if (processImagePath.kind == JSONField::Kind::Absent)
        return {};
    const auto name = lastPathComponent(processImagePath.text);
    return name == schedulerName ? schedulerLabel : name;
}

} // namespace

std::string_view lastPathComponent(std::string_view path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

LogLineWriter::LogLineWriter(ConsoleStyles styles)
    : _styles(styles),
      _printer(DateFormat::withStyles(DateStyle::Short, DateStyle::Medium))
{
}

void LogLineWriter::append(StyledText& text, std::span<const JSONField> fields)
{
    const auto& subsystem = fields[0];
    const auto& timestamp = fields[1];
    const auto& messageType = fields[2];
    const auto& message = fields[3];
    const auto& processImagePath = fields[4];
    std::string_view sender = backupLabel;
    if (subsystem.isString(productSubsystem))
        sender = senderOf(processImagePath);
    else if (message.kind == JSONField::Kind::String && mentionsThermalPressure(message.text))
        return;
    text.appendAttributes(_styles.plain, "%@ ", {dateText(timestamp)});
    text.appendString(sender, _styles.blue);
    text.appendAttributes(styleOfMessage(messageType), " %@\n", {argument(message)});
}

const TextAttributes& LogLineWriter::styleOfMessage(const JSONField& messageType) const
{
    if (messageType.isString("Error"))
        return _styles.red;
    if (messageType.isString("Default"))
        return _styles.green;
    if (messageType.isString("Debug"))
        return _styles.orange;
    return _styles.plain;
}

std::string_view LogLineWriter::dateText(const JSONField& timestamp)
{
    const auto second = timestamp.kind == JSONField::Kind::String ? secondsOfTimestamp(timestamp.text) : std::nullopt;
    if (!second)
        return unknownDate;
    // The date is printed in whole seconds.
    if (second != _second) {
        _dateOfSecond = _printer.stringFromDate(static_cast<double>(*second));
        _second = second;
    }
    return _dateOfSecond;
}
