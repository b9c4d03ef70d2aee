#include "tests/shell/support/EditorTest.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedPowerSources.h"
#include "tests/platform/ScriptedSystemInformation.h"

#include <mutex>
#include <stdexcept>

using platform::Dictionary;

void setUp(const Machine& machine)
{
    if (MainWindowUser().seesWindow())
        throw std::logic_error("The application of another test is still running");
    scripted::reset();
    scripted::system::setOperatingSystemVersion(machine.system);
    scripted::system::addFile("/Library/LaunchDaemons/com.zerkolin.brevane.scheduler.plist");
    scripted::system::addFile("/Library/Brevane/com.zerkolin.brevane.scheduler");
    scripted::power::setSupportsBattery(machine.battery);
    static std::once_flag logOpened;
    std::call_once(logOpened, [] { ZRKLogInit("com.zerkolin.brevane", "application"); });
    ZRKAuthorizationManager::sharedManager().invalidate();
    user::takeAnsweredAlerts();
}

EditorTest::EditorTest(ScheduleSettings record, const Machine& machine)
    : scheduler((setUp(machine), std::move(record))),
      controller(BREditorController::create())
{
    user::launch(controller);
    user::runEvents();
}

EditorTest::~EditorTest()
{
    while (user::currentAlert())
        user.dismissAlert();
    controller.reset();
    user::runEvents();
}

std::optional<ScheduleSettings> EditorTest::apply()
{
    const std::size_t before = scheduler.received().size();
    user.click("applyButton");
    if (scheduler.received().size() == before)
        return std::nullopt;
    return scheduler.received().back();
}

std::optional<ScheduleSettings> EditorTest::applyAndDismiss()
{
    auto sent = apply();
    user.dismissAlert();
    return sent;
}

ScheduleSettings completeRecord()
{
    return {{"Backups", true},
            {"BackupsMode", "Interval"},
            {"WhenInactive", Dictionary()},
            {"Interval", Dictionary{{"Minutes", 90}}},
            {"CalendarIntervals",
             Dictionary{{"Intervals", platform::Array{Dictionary{{"Hour", 9}, {"Minute", 30}}}}, {"ASAP", true}}},
            {"Suspend", true},
            {"SuspendSettings", Dictionary{{"StartHour", 22}, {"StartMinute", 15}, {"EndHour", 6}, {"EndMinute", 45}}},
            {"DontRunWhenPassive", false},
            {"DontRunWithSleepPreventers", false},
            {"DontRunWhenNotNetworkWired", false},
            {"AllowBattery", true},
            {"Snapshots", true}};
}

ScheduleSettings completeRecordWith(std::string_view key, platform::PropertyList value)
{
    ScheduleSettings record = completeRecord();
    record.set(key, std::move(value));
    return record;
}
