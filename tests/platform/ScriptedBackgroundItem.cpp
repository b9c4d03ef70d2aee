#include "tests/platform/ScriptedBackgroundItem.h"

#include "platform/Localization.h"

namespace scripted::background {

namespace {

struct Script {
    std::optional<platform::BackgroundItemStatus> status;
    bool settingsOpen = true;
    std::vector<std::string> askedPaths;
    std::size_t settingsOpened = 0;
};

Script& script()
{
    static Script* const shared = new Script;
    return *shared;
}

} // namespace

void reset()
{
    script() = Script();
}

void setStatus(std::optional<platform::BackgroundItemStatus> status)
{
    script().status = status;
}

void setSettingsOpen(bool opens)
{
    script().settingsOpen = opens;
}

std::vector<std::string> askedPaths()
{
    return script().askedPaths;
}

std::size_t settingsOpened()
{
    return script().settingsOpened;
}

} // namespace scripted::background

namespace platform {

std::optional<BackgroundItemStatus> backgroundItemStatus(const std::string& launchDaemonPath)
{
    auto& script = scripted::background::script();
    script.askedPaths.push_back(launchDaemonPath);
    return script.status;
}

bool openBackgroundItemSettings()
{
    auto& script = scripted::background::script();
    ++script.settingsOpened;
    return script.settingsOpen;
}

std::string backgroundItemAdvice()
{
    return localizedString("To switch on the background scheduler, run this command in a terminal as an "
                           "administrator:\n\nsystemctl enable --now com.zerkolin.brevane.scheduler");
}

std::string backupSettingsAdvice()
{
    return localizedString("Open the settings of your desktop yourself, and look for backups or power there.");
}

} // namespace platform
