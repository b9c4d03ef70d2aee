#include "tests/platform/ScriptedWorkspace.h"

namespace scripted::workspace {

namespace {

struct Desktop {
    bool opens = true;
    std::vector<std::string> urls;
    std::vector<std::string> files;
    std::optional<platform::Error> launchFailure;
    std::vector<std::shared_ptr<Launch>> launches;
    std::function<void(int)> signalHandler;
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

void failLaunchWith(std::optional<platform::Error> error)
{
    desktop().launchFailure = std::move(error);
}

std::vector<Launch> launches()
{
    std::vector<Launch> copies;
    for (const auto& launch : desktop().launches)
        copies.push_back(*launch);
    return copies;
}

void setSignalHandler(std::function<void(int)> handler)
{
    desktop().signalHandler = std::move(handler);
}

std::vector<std::string> openedURLs()
{
    return desktop().urls;
}

std::vector<std::string> openedFiles()
{
    return desktop().files;
}

namespace {

class ScriptedProgram final : public platform::LaunchedProgram {
public:
    explicit ScriptedProgram(std::shared_ptr<Launch> launch) : _launch(std::move(launch)) { }

    bool sendSignal(int number) override
    {
        _launch->signals.push_back(number);
        if (desktop().signalHandler)
            desktop().signalHandler(number);
        return true;
    }

private:
    std::shared_ptr<Launch> _launch;
};

} // namespace

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

Result<std::shared_ptr<LaunchedProgram>> launchProgram(const std::string& path)
{
    auto& desktop = scripted::workspace::desktop();
    const auto launch = std::make_shared<scripted::workspace::Launch>(path);
    desktop.launches.push_back(launch);
    if (desktop.launchFailure)
        return std::unexpected(*desktop.launchFailure);
    return std::make_shared<scripted::workspace::ScriptedProgram>(launch);
}

} // namespace platform
