#include "version/ZRKSystemVersionManager.h"

ZRKSystemVersionManager& ZRKSystemVersionManager::sharedManager()
{
    static ZRKSystemVersionManager manager;
    return manager;
}

bool ZRKSystemVersionManager::runningAtLeast(unsigned release) const
{
    if (!platform::offersOperatingSystemQuery())
        return false;
    unsigned minor = release <= 5 ? release + 10 : 0;
    return platform::isOperatingSystemAtLeast({10, minor, 0});
}

bool ZRKSystemVersionManager::runningAtLeastVersion(platform::OperatingSystemVersion version) const
{
    if (platform::offersOperatingSystemQuery())
        return platform::isOperatingSystemAtLeast(version);
    // Such a system is 10.9, the oldest that the product runs on.
    return version.major == 10 && version.minor == 9;
}
