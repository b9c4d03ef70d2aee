#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace platform {

// The system's package manager, through the service PackageKit. Each call waits for the end of the work, asks from time
// to time whether to go on waiting, and uses a connection of its own. What was begun goes on without its caller.
class PackageManager {
public:
    struct Failure {
        enum class Kind {
            Missing,   // there is no PackageKit
            Network,   // nothing can be reached
            Download,  // a package could not be had
            Untrusted, // a package that is not signed, or damaged
            Busy,      // another program changes packages
            GivenUp,   // by the caller
            Other,
        };
        Kind kind;
        std::string text; // what the service says, if anything
    };
    using GivenUp = std::function<bool()>;

    // The version of the package that can be had in place of the installed one; nullopt when there is none.
    static std::expected<std::optional<std::string>, Failure> newerVersion(const std::string& package,
                                                                           const GivenUp& isGivenUp);
    // False when there is no newer version.
    static std::expected<bool, Failure> update(const std::string& package, const GivenUp& isGivenUp);
    static std::expected<void, Failure> remove(const std::string& package, const GivenUp& isGivenUp);
};

} // namespace platform
