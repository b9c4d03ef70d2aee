#include "helper/linux/update/DownloadPipe.h"

#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <unistd.h>
#include <utility>

namespace helper {

using platform::Dictionary;

namespace {

using Fault = Download::Fault;
using Failure = Download::Failure;

constexpr std::int64_t unknownNetworkError = -1;
constexpr std::int64_t tooLargeError = -1103;

enum class Kind : char { Piece = 'p', Life = 'l', Outcome = 'o' };

struct Header {
    Kind kind;
    std::size_t length;
};

constexpr std::size_t headerSize = 5;

int writeAll(int pipe, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto count = ::write(pipe, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return errno;
        if (count > 0)
            bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return 0;
}

int writePart(int pipe, Kind kind, std::span<const std::uint8_t> bytes)
{
    platform::Data part{static_cast<std::uint8_t>(kind)};
    for (unsigned shift = 0; shift < 32; shift += 8)
        part.push_back(static_cast<std::uint8_t>(bytes.size() >> shift));
    part.insert(part.end(), bytes.begin(), bytes.end());
    return writeAll(pipe, part);
}

Failure networkFailure(std::int64_t code, const char* text)
{
    return {Fault::Network, 0, {"NSURLErrorDomain", code, {{platform::LocalizedDescriptionKey, text}}, nullptr}};
}

Failure cutOff()
{
    return networkFailure(unknownNetworkError, "The process that downloads ended before its work.");
}

bool readAll(const DownloadPipe::Source& source, std::span<char> bytes)
{
    while (!bytes.empty()) {
        const auto count = source(bytes);
        if (count == 0)
            return false;
        bytes = bytes.subspan(count);
    }
    return true;
}

std::optional<Header> readHeader(const DownloadPipe::Source& source)
{
    std::array<char, headerSize> bytes{};
    if (!readAll(source, bytes))
        return std::nullopt;
    std::size_t length = 0;
    for (std::size_t index = 1; index < headerSize; ++index)
        length |= std::size_t(static_cast<std::uint8_t>(bytes[index])) << (8 * (index - 1));
    const auto kind = static_cast<Kind>(bytes[0]);
    const bool isKnown = kind == Kind::Piece || kind == Kind::Life || kind == Kind::Outcome;
    return isKnown && length <= DownloadPipe::maximumPiece ? std::optional(Header{kind, length}) : std::nullopt;
}

// nullopt for what no process of this program says.
std::optional<Download::Outcome<void>> outcomeInData(const platform::Data& bytes)
{
    if (bytes.empty())
        return Download::Outcome<void>();
    const auto value = platform::propertyListWithData(bytes);
    const auto* record = value ? value->dictionary() : nullptr;
    const auto* reasonValue = record ? record->find("Reason") : nullptr;
    const auto* reason = reasonValue ? reasonValue->data() : nullptr;
    const auto fault = record ? record->integerForKey("Fault") : -1;
    if (!reason || fault < 0 || fault > static_cast<std::int64_t>(Fault::Network))
        return std::nullopt;
    auto error = platform::unarchivedError(*reason, true);
    if (!error)
        return std::nullopt;
    return std::unexpected(Failure{static_cast<Fault>(fault), record->integerForKey("Status"), std::move(*error)});
}

} // namespace

int DownloadPipe::writePiece(int pipe, std::span<const std::uint8_t> bytes)
{
    int failure = 0;
    while (failure == 0 && !bytes.empty()) {
        const auto size = std::min(bytes.size(), maximumPiece);
        failure = writePart(pipe, Kind::Piece, bytes.first(size));
        bytes = bytes.subspan(size);
    }
    return failure;
}

int DownloadPipe::writeSignOfLife(int pipe)
{
    return writePart(pipe, Kind::Life, {});
}

int DownloadPipe::writeOutcome(int pipe, const Download::Outcome<void>& outcome)
{
    if (outcome)
        return writePart(pipe, Kind::Outcome, {});
    const auto& [fault, status, reason] = outcome.error();
    const auto bytes = platform::binaryPropertyList(Dictionary{
        {"Fault", static_cast<std::int64_t>(fault)}, {"Status", status}, {"Reason", platform::archivedError(reason)}});
    return bytes ? writePart(pipe, Kind::Outcome, *bytes) : EINVAL;
}

Download::Outcome<void> DownloadPipe::read(const Source& source, const Download::Terms& terms,
                                           const Download::Sink& sink)
{
    std::uint64_t total = 0;
    while (const auto header = readHeader(source)) {
        platform::Data content(header->length);
        if (!readAll(source, {reinterpret_cast<char*>(content.data()), content.size()}))
            return std::unexpected(cutOff());
        if (header->kind == Kind::Outcome) {
            const auto outcome = outcomeInData(content);
            return outcome ? *outcome : std::unexpected(cutOff());
        }
        if (terms.isGivenUp && terms.isGivenUp())
            return std::unexpected(networkFailure(unknownNetworkError, "Nobody waits for the download any more."));
        if (header->kind == Kind::Life)
            continue;
        total += content.size();
        if (total > terms.size) {
            auto failure = networkFailure(tooLargeError, "The answer is too large.");
            failure.fault = Fault::TooLarge;
            return std::unexpected(std::move(failure));
        }
        if (const int storage = sink(content))
            return std::unexpected(Failure{Fault::Storage, 0, {platform::POSIXErrorDomain, storage, {}, nullptr}});
    }
    return std::unexpected(cutOff());
}

} // namespace helper
