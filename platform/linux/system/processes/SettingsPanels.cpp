#include "platform/linux/system/processes/SettingsPanels.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/system/processes/Launch.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <poll.h>
#include <string_view>
#include <sys/wait.h>

extern "C" { // which this header forgets in older versions of the C library
#include <sys/pidfd.h>
}

namespace platform {

namespace {

constexpr int patience = 2000; // milliseconds; a program that runs for so long shows its window

bool isUsersDesktop(const SettingsPanel& panel)
{
    const char* const desktops = std::getenv("XDG_CURRENT_DESKTOP");
    return desktops && *panel.desktop && std::string_view(desktops).find(panel.desktop) != std::string_view::npos;
}

bool waitForEnd(pid_t child)
{
    const FileDescriptor process(::pidfd_open(child, 0));
    pollfd waiting{process.get(), POLLIN, 0};
    int count = 0;
    do {
        count = ::poll(&waiting, 1, patience);
    } while (count < 0 && errno == EINTR);
    return count != 0;
}

bool opens(const std::vector<std::string>& command)
{
    const auto child = spawn(command);
    if (!child)
        return false;
    if (!waitForEnd(*child)) {
        reap(*child);
        return true;
    }
    int status = 0;
    while (::waitpid(*child, &status, 0) < 0 && errno == EINTR) { }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

bool openSettingsPanel(std::vector<SettingsPanel> panels)
{
    std::ranges::stable_partition(panels, isUsersDesktop);
    return std::ranges::any_of(panels, [](const SettingsPanel& panel) { return opens(panel.command); });
}

std::vector<SettingsPanel> panelsForPane(const std::string& path)
{
    // Of the system's own backups: on what power they run is what can be set elsewhere.
    if (path.ends_with("/TimeMachine.prefPane")) {
        return {
            {"GNOME", {"gnome-control-center", "power"}}, {"KDE", {"systemsettings", "kcm_powerdevilprofilesconfig"}},
            {"XFCE", {"xfce4-power-manager-settings"}},   {"MATE", {"mate-power-preferences"}},
            {"Cinnamon", {"cinnamon-settings", "power"}}, {"LXQt", {"lxqt-config-powermanagement"}},
        };
    }
    if (path.ends_with("/Security.prefPane")) {
        return {
            {"GNOME", {"gnome-control-center", "privacy"}},
            {"Cinnamon", {"cinnamon-settings", "privacy"}},
            {"KDE", {"systemsettings"}},
            {"XFCE", {"xfce4-settings-manager"}},
            {"MATE", {"mate-control-center"}},
            {"LXQt", {"lxqt-config"}},
        };
    }
    return {};
}

} // namespace platform
