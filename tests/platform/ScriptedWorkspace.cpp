#include "tests/platform/ScriptedWorkspace.h"

namespace scripted::workspace {

namespace {

struct Desktop {
    bool opens = true;
    std::vector<std::string> urls;
    std::vector<std::string> files;
};

Desktop& desktop()
{
    static Desktop* const shared = new Desktop;
    return *shared;
}

} // namespace

void reset()
{
    desktop() = Desktop();
}

void setOpens(bool opens)
{
    desktop().opens = opens;
}

std::vector<std::string> openedURLs()
{
    return desktop().urls;
}

std::vector<std::string> openedFiles()
{
    return desktop().files;
}

} // namespace scripted::workspace

namespace platform {

bool openURL(const std::string& url)
{
    scripted::workspace::desktop().urls.push_back(url);
    return scripted::workspace::desktop().opens;
}

bool openFile(const std::string& path)
{
    scripted::workspace::desktop().files.push_back(path);
    return scripted::workspace::desktop().opens;
}

} // namespace platform
