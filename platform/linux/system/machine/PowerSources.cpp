#include "platform/PowerSources.h"

#include "platform/linux/system/files/AtomicFile.h"
#include "platform/linux/system/files/Root.h"
#include "platform/SystemInformation.h"

#include <dirent.h>
#include <memory>
#include <string>

namespace platform {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

std::string powerSupplyFolder()
{
    auto sandboxed = systemPath("/sys/class/power_supply");
    return usesSandboxStore() && fileExists(sandboxed) ? sandboxed : "/sys/class/power_supply";
}

std::string attribute(const std::string& path)
{
    auto bytes = readFile(path, 4096);
    if (!bytes)
        return {};
    std::string text(bytes->begin(), bytes->end());
    return text.substr(0, text.find('\n'));
}

} // namespace

std::optional<bool> supportsBatteryPower()
{
    auto path = powerSupplyFolder();
    std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
    if (!folder)
        return std::nullopt;
    while (const auto* entry = ::readdir(folder.get())) {
        auto supply = path + "/" + entry->d_name;
        // The scope "Device" is the battery of a mouse or a headset.
        if (attribute(supply + "/type") == "Battery" && attribute(supply + "/scope") != "Device")
            return true;
    }
    return false;
}

} // namespace platform
