#include "helper/update/Download.h"

#include "helper/update/AddressRules.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>
#include <utility>

namespace helper {

namespace {

int append(int file, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errno;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return 0;
}

} // namespace

Download::Outcome<platform::Data> Download::fetch(const std::string& url, std::uint64_t limit,
                                                  const GivenUp& isGivenUp) const
{
    platform::Data content;
    const Terms terms{limit, std::min(AddressRules::FeedTime, _configuration.patience), isGivenUp};
    const auto done = perform(url, terms, [&content](std::span<const std::uint8_t> bytes) {
        content.insert(content.end(), bytes.begin(), bytes.end());
        return 0;
    });
    if (!done)
        return std::unexpected(done.error());
    return content;
}

Download::Outcome<void> Download::save(const std::string& url, std::uint64_t limit, int file) const
{
    return perform(url, {limit, AddressRules::PackageTime, {}},
                   [file](std::span<const std::uint8_t> bytes) { return append(file, bytes); });
}

} // namespace helper
