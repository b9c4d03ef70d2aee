#include "tests/console/ConsoleFixture.h"
#include "tests/platform/ScriptedProcess.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <random>

using namespace platform;

namespace {

// Takes a line with a length and that many bytes off the front.
std::string takeText(std::string_view& rest)
{
    const auto end = rest.find('\n');
    const auto length = static_cast<std::size_t>(std::atoll(std::string(rest.substr(0, end)).c_str()));
    auto text = std::string(rest.substr(end + 1, length));
    rest.remove_prefix(end + 1 + length);
    return text;
}

std::vector<std::string> inPieces(const std::string& text, std::mt19937& random)
{
    std::vector<std::string> pieces;
    for (std::size_t place = 0; place < text.size();) {
        const auto length = 1 + random() % (random() % 4 == 0 ? 7 : 3000);
        pieces.push_back(text.substr(place, length));
        place += length;
    }
    return pieces;
}

} // namespace

TEST_CASE("ten thousand random arrays of records read as a slow and plain second reading has them")
{
    ConsoleFixture fixture;
    const TemporaryDirectory folder;
    const auto path = folder.file("arrays");
    ChildProcess python({"python3", SECOND_READING, "10000", path});
    REQUIRE(python.wait() == 0);
    const auto content = contentOfFile(path);
    std::string_view rest = content;
    std::mt19937 random(1);
    int arrays = 0;
    int empty = 0;
    for (; !rest.empty(); ++arrays) {
        const auto json = takeText(rest);
        const auto expected = takeText(rest);
        scripted::process::setOutput(inPieces(json, random));
        const auto text = styled(fetchedLog());
        empty += text.empty();
        if (text == expected)
            continue;
        CAPTURE(json);
        REQUIRE(text == expected);
    }
    CHECK(arrays == 10000);
    CHECK(empty > 500);
    CHECK(empty < 9000);
}
