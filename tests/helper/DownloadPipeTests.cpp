#include "helper/linux/update/DownloadPipe.h"
#include "platform/FileDescriptor.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <doctest/doctest.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using helper::Download;
using helper::DownloadPipe;

namespace {

using Fault = Download::Fault;

constexpr std::chrono::seconds enough{30};

// What one side writes and the other reads.
class Wire {
public:
    int file() const { return _file.get(); }

    std::string written() const
    {
        std::string text(static_cast<std::size_t>(::lseek(_file.get(), 0, SEEK_END)), '\0');
        REQUIRE(::pread(_file.get(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
        return text;
    }

private:
    platform::FileDescriptor _file{::memfd_create("wire", MFD_CLOEXEC)};
};

// A source that gives a few bytes at a time.
DownloadPipe::Source slowly(std::string text)
{
    return [text = std::move(text), at = std::size_t(0)](std::span<char> bytes) mutable {
        const auto count = std::min({bytes.size(), text.size() - at, std::size_t(3)});
        std::ranges::copy_n(text.data() + at, static_cast<std::ptrdiff_t>(count), bytes.data());
        at += count;
        return count;
    };
}

struct Received {
    Download::Outcome<void> outcome;
    std::string content;
};

Received receive(const std::string& text, std::uint64_t limit = 1000, const Download::GivenUp& isGivenUp = {})
{
    Received received;
    received.outcome = DownloadPipe::read(slowly(text), {limit, enough, isGivenUp}, [&](auto bytes) {
        received.content.append(bytes.begin(), bytes.end());
        return 0;
    });
    return received;
}

void checkCutOff(const std::string& text)
{
    CAPTURE(text);
    const auto received = receive(text);
    REQUIRE_FALSE(received.outcome.has_value());
    CHECK(received.outcome.error().fault == Fault::Network);
    CHECK(received.outcome.error().reason.domain == "NSURLErrorDomain");
    CHECK(received.outcome.error().reason.code == -1);
    CHECK(platform::localizedDescription(received.outcome.error().reason)
          == "The process that downloads ended before its work.");
}

std::span<const std::uint8_t> bytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

const std::string success("o\0\0\0\0", 5);

} // namespace

TEST_CASE("what a download brings arrives whole and in order, with signs of life between")
{
    const Wire wire;
    CHECK(DownloadPipe::writePiece(wire.file(), bytesOf("one ")) == 0);
    CHECK(DownloadPipe::writeSignOfLife(wire.file()) == 0);
    CHECK(DownloadPipe::writePiece(wire.file(), bytesOf("two")) == 0);
    CHECK(DownloadPipe::writeOutcome(wire.file(), {}) == 0);
    CHECK(wire.written() == std::string("p\4\0\0\0one l\0\0\0\0p\3\0\0\0two", 22) + success);
    const auto received = receive(wire.written());
    CHECK(received.outcome.has_value());
    CHECK(received.content == "one two");
}

TEST_CASE("a piece of any length is cut to what the other side takes")
{
    const Wire wire;
    const std::string content(3 * DownloadPipe::maximumPiece + 1, 'x');
    CHECK(DownloadPipe::writePiece(wire.file(), bytesOf(content)) == 0);
    CHECK(DownloadPipe::writeOutcome(wire.file(), {}) == 0);
    const auto received = receive(wire.written(), content.size());
    CHECK(received.outcome.has_value());
    CHECK(received.content == content);
}

TEST_CASE("each failure of a download arrives with its status and its reason")
{
    for (const auto fault : {Fault::Status, Fault::Untrusted, Fault::TooLarge, Fault::Storage, Fault::Network}) {
        const Wire wire;
        const platform::Error reason{
            "NSURLErrorDomain", -1004, {{platform::LocalizedDescriptionKey, "No connection."}}, nullptr};
        CHECK(DownloadPipe::writeOutcome(wire.file(), std::unexpected(Download::Failure{fault, 404, reason})) == 0);
        const auto received = receive(wire.written());
        REQUIRE_FALSE(received.outcome.has_value());
        CHECK(received.outcome.error().fault == fault);
        CHECK(received.outcome.error().status == 404);
        CHECK(received.outcome.error().reason.domain == "NSURLErrorDomain");
        CHECK(received.outcome.error().reason.code == -1004);
        CHECK(*received.outcome.error().reason.userInfo.stringForKey(platform::LocalizedDescriptionKey)
              == "No connection.");
    }
}

TEST_CASE("more than the limit is refused, whatever the process that downloads lets through")
{
    const Wire wire;
    CHECK(DownloadPipe::writePiece(wire.file(), bytesOf("1234567")) == 0);
    CHECK(DownloadPipe::writePiece(wire.file(), bytesOf("890")) == 0);
    CHECK(DownloadPipe::writeOutcome(wire.file(), {}) == 0);
    CHECK(receive(wire.written(), 10).outcome.has_value());
    const auto received = receive(wire.written(), 9);
    REQUIRE_FALSE(received.outcome.has_value());
    CHECK(received.outcome.error().fault == Fault::TooLarge);
    CHECK(received.outcome.error().reason.code == -1103);
    CHECK(platform::localizedDescription(received.outcome.error().reason) == "The answer is too large.");
    CHECK(received.content == "1234567");
}

TEST_CASE("what is cut off, damaged or said by no process of ours is no content and no success")
{
    checkCutOff("");
    checkCutOff("p");
    checkCutOff(std::string("p\3\0\0\0tw", 7));
    checkCutOff(std::string("p\3\0\0\0two", 8));
    checkCutOff(std::string("x\0\0\0\0", 5) + success);
    checkCutOff(std::string("p\1\0\1\0", 5) + std::string(65537, 'x') + success); // one more than a piece may have
    checkCutOff(std::string("o\3\0\0\0two", 8));
    checkCutOff(std::string("o\377\377\377\377", 5));
}

TEST_CASE("whoever gives up is asked at each sign of life")
{
    int count = 0;
    const auto received =
        receive(std::string("l\0\0\0\0l\0\0\0\0l\0\0\0\0", 15) + success, 10, [&] { return ++count == 2; });
    CHECK(count == 2);
    REQUIRE_FALSE(received.outcome.has_value());
    CHECK(received.outcome.error().fault == Fault::Network);
    CHECK(received.outcome.error().reason.code == -1);
    CHECK(platform::localizedDescription(received.outcome.error().reason) == "Nobody waits for the download any more.");
}

TEST_CASE("what cannot be kept ends the download with the system's error")
{
    const auto outcome = DownloadPipe::read(slowly(std::string("p\3\0\0\0two", 8) + success), {10, enough, {}},
                                            [](auto) { return ENOSPC; });
    REQUIRE_FALSE(outcome.has_value());
    CHECK(outcome.error().fault == Fault::Storage);
    CHECK(outcome.error().reason.domain == platform::POSIXErrorDomain);
    CHECK(outcome.error().reason.code == ENOSPC);
}

TEST_CASE("the side that downloads is told when nobody reads any more")
{
    int ends[2];
    REQUIRE(::pipe(ends) == 0);
    ::close(ends[0]);
    const auto before = ::signal(SIGPIPE, SIG_IGN);
    CHECK(DownloadPipe::writeSignOfLife(ends[1]) == EPIPE);
    CHECK(DownloadPipe::writePiece(ends[1], bytesOf("x")) == EPIPE);
    CHECK(DownloadPipe::writeOutcome(ends[1], {}) == EPIPE);
    ::signal(SIGPIPE, before);
    ::close(ends[1]);
}
