#include "platform/BackgroundItem.h"

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/processes/SettingsPanels.h"
#include "platform/Localization.h"

#include <cstdint>
#include <string_view>

namespace platform {

namespace {

// An alert waits for the answer, so a manager that hangs must not keep it for long.
constexpr std::uint64_t timeLimitMicroseconds = 2'000'000;

bool saysThatUnitIsUnknown(const sd_bus_error& error)
{
    return sd_bus_error_has_name(&error, "org.freedesktop.systemd1.NoSuchUnit")
        || sd_bus_error_has_name(&error, SD_BUS_ERROR_FILE_NOT_FOUND)
        || sd_bus_error_has_name(&error, "System.Error.ENOENT");
}

// ".../com.example.tool.plist" is the unit "com.example.tool.service".
std::string unitName(const std::string& launchDaemonPath)
{
    auto name = launchDaemonPath.substr(launchDaemonPath.rfind('/') + 1);
    constexpr std::string_view extension = ".plist";
    if (name.ends_with(extension))
        name.resize(name.size() - extension.size());
    return name + ".service";
}

BackgroundItemStatus statusForState(std::string_view state)
{
    if (state == "masked" || state == "masked-runtime" || state == "disabled")
        return BackgroundItemStatus::RequiresApproval;
    if (state == "bad" || state == "not-found")
        return BackgroundItemStatus::NotFound;
    return BackgroundItemStatus::Enabled;
}

std::optional<BackgroundItemStatus> askManager(sd_bus* bus, const std::string& unit)
{
    sd_bus_message* received = nullptr;
    int result = sd_bus_message_new_method_call(bus, &received, "org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                                "org.freedesktop.systemd1.Manager", "GetUnitFileState");
    BusMessage call(received);
    if (result < 0 || sd_bus_message_append(call.get(), "s", unit.c_str()) < 0)
        return std::nullopt;

    received = nullptr;
    BusError failure;
    result = sd_bus_call(bus, call.get(), timeLimitMicroseconds, &failure.error, &received);
    BusMessage reply(received);
    if (saysThatUnitIsUnknown(failure.error))
        return BackgroundItemStatus::NotFound;
    const char* state = nullptr;
    if (result < 0 || sd_bus_message_read(reply.get(), "s", &state) < 0)
        return std::nullopt;
    return statusForState(state);
}

} // namespace

std::optional<BackgroundItemStatus> backgroundItemStatus(const std::string& launchDaemonPath)
{
    sd_bus* opened = nullptr;
    if (sd_bus_open_system(&opened) < 0)
        return std::nullopt;
    BusHandle bus(opened);
    return askManager(bus.get(), unitName(launchDaemonPath));
}

bool openBackgroundItemSettings()
{
    // Programs in which services are switched on, then the desktops' settings.
    return openSettingsPanel({
        {"", {"systemadm"}},
        {"KDE", {"systemsettings"}},
        {"GNOME", {"gnome-control-center", "applications"}},
        {"XFCE", {"xfce4-settings-manager"}},
        {"MATE", {"mate-control-center"}},
        {"Cinnamon", {"cinnamon-settings"}},
        {"LXQt", {"lxqt-config"}},
    });
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
