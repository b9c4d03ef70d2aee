#pragma once

#include <chrono>
#include <string_view>

namespace helper {

// What every edition's downloads keep to. Schemes are in small letters.
struct AddressRules {
    static constexpr std::chrono::seconds ConnectTime{20};
    static constexpr std::chrono::seconds FeedTime{30};
    static constexpr std::chrono::seconds PackageTime{3600};
    static constexpr int MaximumRedirections = 5;
    static constexpr long SuccessStatus = 200;

    // Whether what came from the one scheme may name an address of the other: what https names is on https, and what
    // comes over a network never names a file of this machine.
    static constexpr bool mayName(std::string_view baseScheme, std::string_view scheme)
    {
        return scheme == "https" || (scheme == "http" && baseScheme != "https")
            || (scheme == "file" && baseScheme == "file");
    }
    // Whether a download that began on the one scheme may be sent on to the other.
    static constexpr bool mayRedirect(std::string_view firstScheme, std::string_view scheme)
    {
        return scheme == "https" || (scheme == "http" && firstScheme == "http");
    }
    static constexpr bool isOfWeb(std::string_view scheme) { return scheme == "https" || scheme == "http"; }
};

} // namespace helper
