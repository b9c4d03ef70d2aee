#include "platform/Workspace.h"

#include "platform/linux/system/Launch.h"

namespace platform {

namespace {

// A leading hyphen would be read as an option.
bool isSafeArgument(const std::string& argument)
{
    return !argument.empty() && !argument.starts_with('-');
}

} // namespace

bool openURL(const std::string& url)
{
    return isSafeArgument(url) && launch({"xdg-open", url});
}

bool openFile(const std::string& path)
{
    return openURL(path.starts_with('-') ? "./" + path : path);
}

} // namespace platform
