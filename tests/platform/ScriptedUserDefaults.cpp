#include "tests/platform/ScriptedUserDefaults.h"

namespace scripted::defaults {

namespace {

struct Domain {
    platform::Dictionary values;
    bool readOnly = false;
    int removals = 0;
};

Domain& domain()
{
    static Domain* const shared = new Domain;
    return *shared;
}

} // namespace

void reset()
{
    domain() = Domain();
}

void setReadOnly(bool readOnly)
{
    domain().readOnly = readOnly;
}

platform::Dictionary all()
{
    return domain().values;
}

int removals()
{
    return domain().removals;
}

} // namespace scripted::defaults

namespace platform {

using scripted::defaults::domain;

std::optional<PropertyList> userDefault(const std::string& key)
{
    const auto* const value = domain().values.find(key);
    return value ? std::optional(*value) : std::nullopt;
}

bool userDefaultBool(const std::string& key)
{
    return domain().values.boolForKey(key);
}

bool setUserDefault(const std::string& key, const PropertyList& value)
{
    if (domain().readOnly || domain().removals > 0)
        return false;
    domain().values.set(key, value);
    return true;
}

bool removeUserDefaults()
{
    if (domain().readOnly)
        return false;
    domain().values = {};
    ++domain().removals;
    return true;
}

} // namespace platform
