#include "helper/linux/programs/ProgramCatalog.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/programs/TrustedPath.h"
#include "platform/AtomicFile.h"
#include "platform/ProgramPath.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <dirent.h>

namespace helper {

namespace {

constexpr std::string_view extension = ".plist";

std::vector<std::string> identifiersIn(const std::string& folder)
{
    std::vector<std::string> identifiers;
    DIR* const directory = ::opendir(folder.c_str());
    while (const auto* const entry = directory ? ::readdir(directory) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name.ends_with(extension) && !name.starts_with('.'))
            identifiers.emplace_back(name.substr(0, name.size() - extension.size()));
    }
    if (directory)
        ::closedir(directory);
    std::ranges::sort(identifiers);
    return identifiers;
}

std::optional<ProgramDescription> readDescription(const std::string& path, const std::string& identifier)
{
    if (untrustedPart(path))
        return std::nullopt;
    const auto bytes = platform::readFile(path);
    const auto value = bytes ? platform::propertyListWithData(*bytes) : platform::Result<platform::PropertyList>();
    const auto* const content = bytes && value ? value->dictionary() : nullptr;
    return content ? ProgramDescription::inDictionary(identifier, *content) : std::nullopt;
}

} // namespace

std::string ProgramCatalog::installedFolder()
{
    const auto installed = platform::programFolder() + "/share/brevane/programs";
#ifdef BREVANE_SOURCE_PROGRAMS
    if (!platform::fileExists(installed))
        return BREVANE_SOURCE_PROGRAMS;
#endif
    return installed;
}

ProgramCatalog::ProgramCatalog(const std::string& folder)
{
    for (const auto& identifier : identifiersIn(folder)) {
        const auto path = folder + "/" + identifier + std::string(extension);
        if (auto program = readDescription(path, identifier))
            _programs.push_back(std::move(*program));
        else
            ZRKLogMessage(LogLevelError, "The file '%@' describes no backup program.", {path});
    }
}

const ProgramDescription* ProgramCatalog::program(std::string_view identifier) const
{
    const auto found = std::ranges::find(_programs, identifier, &ProgramDescription::identifier);
    return found == _programs.end() ? nullptr : &*found;
}

} // namespace helper
