#include "platform/linux/agent/NoticeFile.h"

#include "platform/AtomicFile.h"
#include "platform/Folder.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"

#include <cstdlib>
#include <string>

namespace platform {

namespace {

constexpr mode_t privateMode = 0600;

std::string stateFolder()
{
    const char* const named = std::getenv("XDG_STATE_HOME");
    return (named && *named == '/' ? std::string(named) : homeDirectory() + "/.local/state") + "/brevane";
}

std::string filePath()
{
    return stateFolder() + "/notices.plist";
}

} // namespace

Dictionary readNotices()
{
    const auto bytes = readFile(filePath());
    const auto list = bytes ? propertyListWithData(*bytes) : Result<PropertyList>();
    return list && list->dictionary() ? *list->dictionary() : Dictionary();
}

bool writeNotices(const Dictionary& notices)
{
    const auto bytes = binaryPropertyList(notices);
    return bytes && createFolder(stateFolder()) && replaceFile(filePath(), *bytes, privateMode);
}

} // namespace platform
