#include "platform/Workspace.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/system/processes/Launch.h"
#include "platform/linux/system/processes/SettingsPanels.h"

#include <utility>

extern "C" { // which this header forgets in older versions of the C library
#include <sys/pidfd.h>
}

namespace platform {

namespace {

// A leading hyphen would be read as an option.
bool isSafeArgument(const std::string& argument)
{
    return !argument.empty() && !argument.starts_with('-');
}

// Known by a descriptor, since its number may be another process's once it has ended.
class ChildProgram final : public LaunchedProgram {
public:
    explicit ChildProgram(FileDescriptor process) : _process(std::move(process)) { }

    bool sendSignal(int number) override { return ::pidfd_send_signal(_process.get(), number, nullptr, 0) == 0; }

private:
    FileDescriptor _process;
};

} // namespace

bool openURL(const std::string& url)
{
    return isSafeArgument(url) && launch({"xdg-open", url});
}

bool openFile(const std::string& path)
{
    if (auto panels = panelsForPane(path); !panels.empty())
        return openSettingsPanel(std::move(panels));
    return openURL(path.starts_with('-') ? "./" + path : path);
}

Result<std::shared_ptr<LaunchedProgram>> launchProgram(const std::string& path)
{
    const auto child = spawn({path});
    if (!child)
        return std::unexpected(Error{POSIXErrorDomain, child.error(), {}, nullptr});
    auto program = std::make_shared<ChildProgram>(FileDescriptor(::pidfd_open(*child, 0)));
    reap(*child); // not earlier, or the number could be free again
    return program;
}

} // namespace platform
