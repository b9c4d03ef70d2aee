#include "platform/linux/ui/entry/TextEdit.h"

#include <array>
#include <doctest/doctest.h>
#include <QStringList>
#include <random>

using platform::ui::TextEdit;

TEST_CASE("the edit between two texts stands where the caret says, if it fits there")
{
    const std::array atTheEnd{TextEdit::Place{1, 0}};
    const auto inserted = TextEdit::between("1", "11", atTheEnd);
    CHECK(inserted.location == 1);
    CHECK(inserted.replacement == "1");

    const std::array elsewhere{TextEdit::Place{0, 0}, TextEdit::Place{9, 9}};
    const auto moved = TextEdit::between("12", "123", elsewhere);
    CHECK(moved.location == 2);
    CHECK(moved.length == 0);
    CHECK(moved.replacement == "3");
}

TEST_CASE("the edit between any two texts makes the one of the other and splits no character")
{
    std::mt19937 random(1);
    const auto below = [&random](qsizetype limit) {
        return std::uniform_int_distribution<qsizetype>(0, limit - 1)(random);
    };
    const QStringList alphabet{"1", "2", "a", "\U0001D7D8", "\U0001D7D9", "\U0001F600"};
    const auto text = [&] {
        QString result;
        for (auto count = below(6); count > 0; --count)
            result += alphabet[below(alphabet.size())];
        return result;
    };
    for (int round = 0; round < 20000; ++round) {
        const auto before = text();
        const auto after = text();
        const std::array places{TextEdit::Place{below(6), below(4)}};
        const auto edit = TextEdit::between(before, after, places);
        REQUIRE(edit.location + edit.length <= before.size());
        REQUIRE(QString(before).replace(edit.location, edit.length, edit.replacement) == after);
        const bool guided = edit.location == places[0].location && edit.length == places[0].length;
        if (!guided)
            REQUIRE(edit.replacement.isValidUtf16());
    }
}
