#include "platform/linux/ui/application/HelpPage.h"

#include "platform/linux/system/texts/StringTable.h"
#include "platform/Workspace.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace platform::ui {

namespace {

std::string helpPage()
{
    const auto pageIn = [folder = resourceFolder() + "/help/"](const std::string& language) {
        return folder + language + "/index.html";
    };
    for (const auto& language : preferredLanguages()) {
        std::error_code failure;
        if (std::filesystem::exists(pageIn(language), failure))
            return pageIn(language);
    }
    return pageIn("en");
}

} // namespace

void openHelp()
{
    platform::openFile(helpPage());
}

} // namespace platform::ui
