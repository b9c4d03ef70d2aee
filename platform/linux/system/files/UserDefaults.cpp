#include "platform/UserDefaults.h"

#include "platform/AtomicFile.h"
#include "platform/Folder.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"

#include <cerrno>
#include <unistd.h>

namespace platform {

namespace {

// Of interest to nobody but the user.
constexpr mode_t defaultsMode = 0600;

std::string defaultsFolder()
{
    return homeDirectory() + "/Library/Preferences";
}

std::string defaultsPath()
{
    return defaultsFolder() + "/com.zerkolin.brevane.application.plist";
}

bool isForgotten = false; // for good

// A damaged file counts as an empty one, which the next change replaces.
Dictionary readDefaults()
{
    const auto bytes = readFile(defaultsPath());
    if (!bytes)
        return {};
    const auto list = propertyListWithData(*bytes);
    return list && list->dictionary() ? *list->dictionary() : Dictionary();
}

} // namespace

std::optional<PropertyList> userDefault(const std::string& key)
{
    const Dictionary defaults = readDefaults();
    const auto* const value = defaults.find(key);
    return value ? std::optional(*value) : std::nullopt;
}

bool userDefaultBool(const std::string& key)
{
    return readDefaults().boolForKey(key);
}

bool setUserDefault(const std::string& key, const PropertyList& value)
{
    if (isForgotten)
        return false;
    Dictionary defaults = readDefaults();
    defaults.set(key, value);
    const auto bytes = binaryPropertyList(defaults);
    return bytes && createFolder(defaultsFolder()) && replaceFile(defaultsPath(), *bytes, defaultsMode);
}

bool removeUserDefaults()
{
    isForgotten = isForgotten || ::unlink(defaultsPath().c_str()) == 0 || errno == ENOENT;
    return isForgotten;
}

} // namespace platform
