#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace helper {

// Where updates come from, and whose they must be.
struct UpdateConfiguration {
    using PublicKey = std::array<std::uint8_t, 32>; // Ed25519

    std::string feed;              // a URL: https, http or file
    std::optional<PublicKey> key;  // without one every package is refused
    std::string authorities;       // a file of certificates to trust; empty: those of the system
    std::chrono::seconds patience; // how long a server may be silent
    std::chrono::seconds interval; // between two automatic updates
    std::chrono::seconds keeping;  // how long the answer of a check is given to others
    std::chrono::seconds trial;    // how long a new version may take until it has served a request

    // What was given when the program was built.
    static UpdateConfiguration builtIn();

    // That of a property list with "Feed", "PublicKey" (data) and, if wanted, "Authorities", "Patience",
    // "Interval", "Keeping" and "Trial" (seconds). Only a file that belongs to root or to this user and that nobody
    // else may write is taken. Fails with a sentence.
    static std::expected<UpdateConfiguration, std::string> inFile(const std::string& path);
};

} // namespace helper
