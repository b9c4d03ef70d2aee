#include "helper/linux/update/DownloadPipe.h"
#include "platform/Process.h"
#include "tests/update-integration/UpdateMachine.h"

#include <chrono>
#include <doctest/doctest.h>
#include <sysexits.h>

using helper::Download;
using helper::DownloadPipe;

namespace {

using Clock = std::chrono::steady_clock;

struct Fetched {
    Download::Outcome<void> outcome;
    std::string content;
};

// What a helper without a network of its own makes of the program that downloads for it.
Fetched fetch(const std::string& url, const std::string& size, const std::string& seconds,
              const Download::GivenUp& isGivenUp = {})
{
    const auto process = platform::Process::start(BREVANE_STRIPPED_HELPER, {"--download", url, size, seconds, "30"});
    REQUIRE(process);
    Fetched fetched;
    fetched.outcome = DownloadPipe::read([&](auto bytes) { return (*process)->read(bytes); },
                                         {1 << 20, std::chrono::seconds(30), isGivenUp},
                                         [&](auto bytes) {
                                             fetched.content.append(bytes.begin(), bytes.end());
                                             return 0;
                                         });
    return fetched;
}

} // namespace

TEST_CASE("the program that downloads for a helper brings the content")
{
    const UpdateMachine machine;
    const std::string content(300'000, 'x');
    machine.serve("file", content);
    const auto fetched = fetch(machine.url("file"), "300000", "30");
    CHECK(fetched.outcome.has_value());
    CHECK(fetched.content == content);
}

TEST_CASE("the program that downloads keeps the limits of size and time, and tells the server's status")
{
    const UpdateMachine machine;
    machine.serve("file", "four");
    const auto tooLarge = fetch(machine.url("file"), "3", "30");
    REQUIRE_FALSE(tooLarge.outcome.has_value());
    CHECK(tooLarge.outcome.error().fault == Download::Fault::TooLarge);
    machine.answer("file", "status 404");
    const auto missing = fetch(machine.url("file"), "10", "30");
    REQUIRE_FALSE(missing.outcome.has_value());
    CHECK(missing.outcome.error().fault == Download::Fault::Status);
    CHECK(missing.outcome.error().status == 404);
    machine.answer("file", "trickle");
    const auto slow = fetch(machine.url("file"), "10000", "1");
    REQUIRE_FALSE(slow.outcome.has_value());
    CHECK(slow.outcome.error().fault == Download::Fault::Network);
    CHECK(slow.outcome.error().reason.code == -1001);
}

TEST_CASE("a download that is too large by a byte ends with that byte")
{
    const UpdateMachine machine;
    machine.answer("file", "trickle");
    const auto begin = Clock::now();
    const auto tooLarge = fetch(machine.url("file"), "1", "5");
    REQUIRE_FALSE(tooLarge.outcome.has_value());
    CHECK(tooLarge.outcome.error().fault == Download::Fault::TooLarge);
    CHECK(tooLarge.outcome.error().reason.code == -1103);
    CHECK(tooLarge.content == " ");
    CHECK(Clock::now() - begin < std::chrono::seconds(4));
}

TEST_CASE("while a server says nothing the one who waits is asked, and the program ends when nobody reads")
{
    const UpdateMachine machine;
    machine.answer("file", "silent");
    int count = 0;
    CHECK_FALSE(fetch(machine.url("file"), "10", "30", [&] { return ++count == 3; }).outcome.has_value());
    CHECK(count == 3);

    const auto process =
        platform::Process::start(BREVANE_STRIPPED_HELPER, {"--download", machine.url("file"), "10", "30", "30"});
    REQUIRE(process);
    char sign = 0;
    REQUIRE((*process)->read({&sign, 1}) == 1);
    const auto begin = Clock::now();
    (*process)->closeOutput();
    CHECK((*process)->waitUntilExit() == EX_IOERR);
    CHECK(Clock::now() - begin < std::chrono::seconds(10));
}

TEST_CASE("the program that downloads takes nothing but the web's addresses, and all that it needs")
{
    for (const ChildProcess::Arguments& arguments : {ChildProcess::Arguments{"file:///etc/passwd", "10", "30", "30"},
                                                     {"http://127.0.0.1:1/", "10", "30"},
                                                     {"http://127.0.0.1:1/", "10", "-1", "30"},
                                                     {"http://127.0.0.1:1/", "ten", "30", "30"}}) {
        ChildProcess::Arguments all{BREVANE_STRIPPED_HELPER, "--download"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        ChildProcess program(all);
        CHECK(program.readAll().empty());
        CHECK(program.wait() == EX_USAGE);
    }
}
