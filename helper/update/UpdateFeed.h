#pragma once

#include "helper/update/VersionNumber.h"
#include "platform/Error.h"

#include <cstdint>
#include <string>

namespace helper {

// What a feed says about the newest version.
struct UpdateInformation {
    VersionNumber version;
    std::string package;      // the URL of the package
    std::uint64_t size = 0;   // of the package in bytes; 0 when it is not told
    std::int64_t share = 100; // how many machines in a hundred may have it by now
    platform::Dictionary reply;
};

// Reads feeds. A feed is a property list: a dictionary with the strings "Version" (compared), "HumanVersion" (shown)
// and "Package" (an address, also beside the feed), and if wanted "URL" (https or http, for a download by hand), "Size"
// and "Share" (a phased roll-out, in hundredths of all machines).
class UpdateFeed {
public:
    static constexpr std::uint64_t maximumSize = std::uint64_t(1) << 20;
    static constexpr std::uint64_t maximumPackageSize = std::uint64_t(1) << 30;

    // Updater error 2 for what is no property list, 3 for one that says too little or nonsense.
    static platform::Result<UpdateInformation> informationInFeed(const platform::Data& bytes, const std::string& url);

    // A number from 0 to 99 that this machine keeps for the version; it has the version once the share is above it.
    static int placeOfMachine(const std::string& version);
};

} // namespace helper
