#include "platform/linux/ui/application/HelpCommand.h"

#include "platform/linux/system/texts/StringTable.h"
#include "platform/Workspace.h"

#include <filesystem>
#include <QAction>

namespace platform::ui {

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

HelpCommand::HelpCommand(QMainWindow& window) : QObject(&window)
{
    for (auto* const action : window.findChildren<QAction*>()) {
        if (action->property("helpCommand") == QStringLiteral("show"))
            connect(action, &QAction::triggered, this, [] { platform::openFile(helpPage()); });
    }
}

} // namespace platform::ui
