#include "platform/linux/system/authorization/RightsStore.h"

#include "platform/AtomicFile.h"
#include "platform/Folder.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"

#include <mutex>

namespace platform {

namespace {

Dictionary readAll()
{
    const std::expected<Data, int> bytes = readFile(RightsStore::path());
    if (!bytes)
        return {};
    const Result<PropertyList> list = propertyListWithData(*bytes);
    return list && list->dictionary() ? *list->dictionary() : Dictionary();
}

bool writeAll(const Dictionary& definitions)
{
    const Result<Data> bytes = binaryPropertyList(definitions);
    const std::string path = RightsStore::path();
    return bytes && createFolder(parentOf(path)) && replaceFile(path, *bytes);
}

} // namespace

RightsStore& RightsStore::shared()
{
    static RightsStore store;
    return store;
}

std::string RightsStore::path()
{
    return systemPath("/Library/Preferences/com.zerkolin.brevane.rights.plist");
}

std::optional<Dictionary> RightsStore::definition(const std::string& right) const
{
    const Dictionary definitions = readAll();
    const Dictionary* found = definitions.dictionaryForKey(right);
    return found ? std::optional(*found) : std::nullopt;
}

bool RightsStore::setDefinition(const std::string& right, const Dictionary& definition)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    Dictionary definitions = readAll();
    definitions.set(right, definition);
    return writeAll(definitions);
}

} // namespace platform
