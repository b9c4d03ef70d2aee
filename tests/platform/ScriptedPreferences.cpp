#include "tests/platform/ScriptedPreferences.h"

#include <map>
#include <mutex>
#include <utility>

namespace scripted::preferences {

namespace {

struct Store {
    std::mutex mutex;
    std::map<std::pair<std::string, std::string>, std::optional<platform::PropertyList>> values;
};

Store& store()
{
    static Store* const shared = new Store;
    return *shared;
}

} // namespace

void reset()
{
    const std::lock_guard lock(store().mutex);
    store().values.clear();
}

void set(const std::string& key, const std::string& domain, std::optional<platform::PropertyList> value)
{
    const std::lock_guard lock(store().mutex);
    store().values[{domain, key}] = std::move(value);
}

} // namespace scripted::preferences

namespace platform {

std::optional<PropertyList> preferenceValue(const std::string& key, const std::string& domain)
{
    auto& store = scripted::preferences::store();
    const std::lock_guard lock(store.mutex);
    const auto found = store.values.find({domain, key});
    return found == store.values.end() ? std::nullopt : found->second;
}

} // namespace platform
