#pragma once

#include "helper/update/UpdateConfiguration.h"
#include "platform/Error.h"

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace helper {

// Fetches what a URL names, within limits of size and time.
class Download {
public:
    enum class Fault {
        Status,    // the server answered with another status than success
        Untrusted, // the server's certificate is not to be trusted
        TooLarge,
        Storage, // what arrived could not be kept
        Network, // everything else
    };
    struct Failure {
        Fault fault;
        std::int64_t status;    // of HTTP; 0 when there was none
        platform::Error reason; // in the library's or the system's words
    };
    template <class T>
    using Outcome = std::expected<T, Failure>;

    explicit Download(const UpdateConfiguration& configuration) : _configuration(configuration) { }

    // Whether a download is to end, with a fault. Asked about once a second.
    using GivenUp = std::function<bool()>;
    struct Terms {
        std::uint64_t size;        // in bytes
        std::chrono::seconds time; // in all
        GivenUp isGivenUp;         // may be null
    };
    // Takes what arrives; 0 or an errno value.
    using Sink = std::function<int(std::span<const std::uint8_t>)>;

    // What is small: half a minute for all of it, or the time that a server may be silent if that is shorter.
    Outcome<platform::Data> fetch(const std::string& url, std::uint64_t limit, const GivenUp& isGivenUp = {}) const;
    // Appends to the file.
    Outcome<void> save(const std::string& url, std::uint64_t limit, int file) const;

    // In this process, also where that is to have no network.
    Outcome<void> performHere(const std::string& url, const Terms& terms, const Sink& sink) const;

    // The URL that a text means beside another one. nullopt when it is none, or of a kind that is less trustworthy:
    // what https names is on https, and what comes over a network never names a file of this machine.
    static std::optional<std::string> resolve(const std::string& text, const std::string& base);
    // Whether a text is a whole address of the web: https or http.
    static bool isWebAddress(const std::string& text);

private:
    Outcome<void> perform(const std::string& url, const Terms& terms, const Sink& sink) const;

    const UpdateConfiguration& _configuration;
};

} // namespace helper
