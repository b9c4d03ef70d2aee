#include "helper/linux/programs/SystemUnit.h"

#include "platform/Process.h"

#include <algorithm>
#include <array>

namespace helper {

namespace {

constexpr std::size_t maximumDescription = 65536;

std::string_view valueOf(std::string_view description, std::string_view name)
{
    while (!description.empty()) {
        const auto line = description.substr(0, description.find('\n'));
        if (line.size() > name.size() && line.starts_with(name) && line[name.size()] == '=')
            return line.substr(name.size() + 1);
        description.remove_prefix(std::min(line.size() + 1, description.size()));
    }
    return {};
}

} // namespace

bool isBackupUnitName(std::string_view name)
{
    constexpr std::string_view extension = ".service";
    const auto isAllowed = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
            || (character >= '0' && character <= '9') || character == '-' || character == '_' || character == '.'
            || character == ':';
    };
    return name.size() > extension.size() && name.size() <= 255 && name.ends_with(extension) && !name.starts_with('-')
        && !name.starts_with('.') && !name.starts_with("systemd-") && !name.starts_with("com.zerkolin.brevane")
        && std::ranges::all_of(name, isAllowed);
}

std::string descriptionOfUnit(const std::string& name)
{
    const auto started = platform::Process::start(
        "/usr/bin/systemctl",
        {"show", "--property=LoadState,Type,DefaultDependencies,RefuseManualStart,FragmentPath", "--", name});
    std::string text;
    std::array<char, 4096> bytes;
    if (!started)
        return text;
    while (const auto count = text.size() < maximumDescription ? (*started)->read(bytes) : 0)
        text.append(bytes.data(), count);
    return (*started)->waitUntilExit() == 0 ? text : std::string();
}

bool isBackupUnit(std::string_view description)
{
    const auto path = valueOf(description, "FragmentPath");
    constexpr std::array folders{"/etc/systemd/system/", "/usr/local/lib/systemd/system/", "/usr/lib/systemd/system/",
                                 "/lib/systemd/system/"};
    const bool isInstalled =
        std::ranges::any_of(folders, [&](std::string_view folder) { return path.starts_with(folder); });
    return isInstalled && valueOf(description, "LoadState") == "loaded" && valueOf(description, "Type") == "oneshot"
        && valueOf(description, "DefaultDependencies") == "yes" && valueOf(description, "RefuseManualStart") == "no";
}

} // namespace helper
