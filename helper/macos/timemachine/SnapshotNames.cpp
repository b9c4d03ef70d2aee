#include "helper/macos/timemachine/SnapshotNames.h"

#include <algorithm>

namespace helper {

namespace {

constexpr std::string_view pattern = "dddd-dd-dd-dddddd";
constexpr std::string_view prefix = "com.apple.TimeMachine.";
constexpr std::string_view suffix = ".local";

int numberAt(std::string_view text, std::size_t start)
{
    return (text[start] - '0') * 10 + (text[start + 1] - '0');
}

// Calls with each line, without the space around it.
template <class Task>
void forEachLine(std::string_view text, Task task)
{
    constexpr std::string_view space = " \t\r";
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        auto line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line.remove_prefix(std::min(line.find_first_not_of(space), line.size()));
        line = line.substr(0, line.find_last_not_of(space) + 1);
        task(line);
    }
}

std::string_view withoutName(std::string_view line)
{
    if (line.starts_with(prefix)) {
        line.remove_prefix(prefix.size());
        if (line.ends_with(suffix))
            line.remove_suffix(suffix.size());
    }
    return line;
}

} // namespace

bool isSnapshotDate(std::string_view text)
{
    if (text.size() != pattern.size())
        return false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool isDigit = text[index] >= '0' && text[index] <= '9';
        if (pattern[index] == 'd' ? !isDigit : text[index] != pattern[index])
            return false;
    }
    const int month = numberAt(text, 5);
    const int day = numberAt(text, 8);
    return month >= 1 && month <= 12 && day >= 1 && day <= 31 && numberAt(text, 11) < 24 && numberAt(text, 13) < 60
        && numberAt(text, 15) <= 60;
}

std::string nameOfSnapshot(std::string_view date)
{
    return std::string(prefix).append(date).append(suffix);
}

std::vector<std::string> snapshotDatesInListing(std::string_view output)
{
    std::vector<std::string> dates;
    forEachLine(output, [&dates](std::string_view line) {
        const auto date = withoutName(line);
        if (isSnapshotDate(date) && std::ranges::find(dates, date) == dates.end())
            dates.emplace_back(date);
    });
    return dates;
}

std::optional<std::string> dateOfMadeSnapshot(std::string_view output)
{
    static constexpr std::string_view words = "Created local snapshot with date:";
    std::optional<std::string> found;
    forEachLine(output, [&found](std::string_view line) {
        if (!line.starts_with(words))
            return;
        line.remove_prefix(words.size());
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        if (isSnapshotDate(line))
            found = std::string(line);
    });
    return found;
}

} // namespace helper
