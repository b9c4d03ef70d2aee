#include "platform/BackgroundItem.h"
#include "platform/ByteCountFormat.h"
#include "platform/Calendar.h"
#include "platform/Clock.h"
#include "platform/DateFormat.h"
#include "platform/ErrorArchive.h"
#include "platform/FileWriting.h"
#include "platform/Folder.h"
#include "platform/JSONRecords.h"
#include "platform/Localization.h"
#include "platform/PowerSources.h"
#include "platform/Preferences.h"
#include "platform/Process.h"
#include "platform/PropertyListCoding.h"
#include "platform/Queue.h"
#include "platform/SystemInformation.h"
#include "platform/TimeZone.h"
#include "platform/ui/BareApplication.h"
#include "platform/ui/TextAppearance.h"
#include "platform/ui/TextView.h"
#include "platform/UserDefaults.h"
#include "platform/Volumes.h"
#include "shell/selfcheck/SelfCheck.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <utility>

using namespace platform;

namespace selfcheck {

namespace {

constexpr double patience = 10; // seconds

Finding fault(std::string words)
{
    return std::unexpected(std::move(words));
}

const char* yesOrNo(std::optional<bool> answer)
{
    return answer ? *answer ? "yes" : "no" : "not told";
}

Finding checkSystem()
{
    if (bundleVersion().empty())
        return fault("the program has no version");
    if (homeDirectory().empty() || !homeDirectory().starts_with('/'))
        return fault("no home folder: " + homeDirectory());
    if (offersOperatingSystemQuery() && !isOperatingSystemAtLeast({10, 9, 0}))
        return fault("the system is older than 10.9");
    return "version " + bundleVersion() + ", home " + homeDirectory();
}

Finding checkTexts()
{
    const auto text = localizedString("&Apply");
    return text.empty() ? fault("no text") : text;
}

Finding checkPropertyLists()
{
    const Dictionary value{{"text", "\u00e9\u65e5"}, {"number", std::int64_t{-5}}, {"list", Array{true, 2.5}}};
    const auto bytes = binaryPropertyList(value);
    if (!bytes)
        return fault("could not be written");
    const auto read = propertyListWithData(*bytes);
    if (!read || *read != PropertyList(value))
        return fault("what was written is not what was read");
    return std::to_string(bytes->size()) + " bytes";
}

Finding checkErrors()
{
    const Error error{"com.zerkolin.brevane.check", 7, {{"key", "value"}}, nullptr};
    const auto archive = archivedError(error);
    const auto read = unarchivedError(archive, true);
    if (!read || read->code != 7 || read->domain != error.domain)
        return fault("what was archived is not what was read");
    return std::to_string(archive.size()) + " bytes";
}

Finding checkQueues()
{
    const auto queue = Queue::createSerial("com.zerkolin.brevane.check");
    int count = 0;
    for (int i = 0; i < 100; ++i)
        queue->async([&count] { ++count; });
    queue->sync([] { });
    if (count != 100)
        return fault(std::to_string(count) + " of 100 tasks ran");
    const auto isDone = std::make_shared<bool>(false);
    Queue::global()->async([isDone] { Queue::main()->async([isDone] { *isDone = true; }); });
    if (!ui::serveUntil([isDone] { return *isDone; }, patience))
        return fault("the main queue was not served");
    return "serial, global and main";
}

Finding checkTimer()
{
    const auto isDone = std::make_shared<bool>(false);
    const auto timer = ClockTimer::create(ClockTimer::Clock::SinceBoot, Queue::main(), [isDone] { *isDone = true; });
    timer->set(readClocks().sinceBoot + std::chrono::milliseconds(20));
    if (!ui::serveUntil([isDone] { return *isDone; }, patience))
        return fault("the moment came and nothing happened");
    const auto zone = timeZoneName();
    return TimeZone::named(zone) ? Finding(zone) : fault("the system's zone is not known: " + zone);
}

Finding checkFormats()
{
    auto dates = DateFormat::withStyles(DateStyle::Short, DateStyle::Medium);
    ByteCountFormat sizes;
    const auto date = dates.stringFromDate(1'700'000'000);
    const auto size = sizes.stringFromByteCount(1'500'000);
    const auto time = timeOfDayFromComponents(25, 0);
    if (date.empty() || size.empty() || time != TimeOfDay{1, 0})
        return fault("date \"" + date + "\", size \"" + size + "\"");
    return date + ", " + size;
}

Finding checkRecords()
{
    static constexpr std::array<std::string_view, 2> keys{"a", "b"};
    std::string seen;
    JSONRecords records(keys, [&seen](std::span<const JSONField> fields) {
        for (const auto& field : fields)
            seen += std::string(field.text) + ";";
    });
    records.append(" [{\"a\": \"x\", ");
    records.append("\"b\": 2}, {\"b\": null}]");
    if (!records.finish() || seen != "x;2;;<null>;")
        return fault("read " + seen);
    return seen;
}

Finding checkProcess()
{
    const auto started = Process::start("/bin/echo", {"heard"});
    if (!started)
        return fault("error " + std::to_string(started.error()));
    std::string output;
    std::array<char, 64> buffer{};
    while (const auto count = (*started)->read(buffer))
        output.append(buffer.data(), count);
    const int status = (*started)->waitUntilExit();
    if (output != "heard\n" || status != 0)
        return fault("status " + std::to_string(status) + ", output " + output);
    return "a tool was heard";
}

Finding checkFiles()
{
    const char* const folder = std::getenv("TMPDIR");
    std::string path = std::string(folder ? folder : "/tmp") + "/brevane-check-XXXXXX";
    if (!::mkdtemp(path.data()))
        return fault("no temporary folder: " + path);
    const auto file = path + "/check.txt";
    const auto written = writeFileAtomically(file, "checked");
    const bool hasTags = written && setTagNames(file, {"check"});
    const bool exists = fileExists(file);
    (void)removeFolder(path);
    if (!written || !exists)
        return fault("could not be written: " + file);
    return hasTags ? "written, with tags" : "written; no tags there";
}

Finding checkPreferences()
{
    const auto automatic = booleanPreference("AutoBackup", "com.apple.TimeMachine");
    return std::string("asked about updates: ") + yesOrNo(userDefaultBool("DidAskAboutAutoUpdates"))
        + ", the system's own backups: " + yesOrNo(automatic);
}

Finding checkVolumes()
{
    const auto volumes = mountedFileSystems(numberOfMountedFileSystems());
    bool hasRoot = false;
    for (const auto& volume : volumes)
        hasRoot = hasRoot || volume.path == "/";
    if (!hasRoot)
        return fault("the root is not among " + std::to_string(volumes.size()) + " volumes");
    const auto name = localizedVolumeName("/");
    return std::to_string(volumes.size()) + " volumes, the root is \"" + name.value_or("") + "\"";
}

Finding checkMachine()
{
    const auto status = backgroundItemStatus(systemPath("/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist"));
    return std::string("battery: ") + yesOrNo(supportsBatteryPower())
        + ", background item: " + (status ? std::to_string(static_cast<int>(*status)) : "not told");
}

Finding checkStyledText()
{
    const auto font = ui::userFixedPitchFont();
    if (font.family.empty() || font.pointSize <= 0)
        return fault("no fixed-pitch font");
    const auto light = ui::resolvedColor(NamedColor::SystemRed, ui::Appearance::Light);
    if (light.red <= light.blue)
        return fault("red is not red");
    auto text = std::make_shared<StyledText>();
    text->appendString("one\ntwo\n", {.font = TextFont::UserFixedPitch, .foreground = NamedColor::SystemRed});
    if (ui::prepareText(text).text->lineCount() != 2)
        return fault("two lines are not two");
    return font.family + " " + std::to_string(std::lround(font.pointSize));
}

} // namespace

std::vector<Check> facilityChecks()
{
    return {{"system and account", checkSystem},
            {"texts", checkTexts},
            {"property lists", checkPropertyLists},
            {"archived errors", checkErrors},
            {"queues", checkQueues},
            {"clocks, timer and zone", checkTimer},
            {"dates and sizes", checkFormats},
            {"JSON records", checkRecords},
            {"tools", checkProcess},
            {"files and tags", checkFiles},
            {"preferences", checkPreferences},
            {"volumes", checkVolumes},
            {"power and background item", checkMachine},
            {"fonts, colours and styled text", checkStyledText}};
}

} // namespace selfcheck
