#include "platform/linux/ui/textlayout/RowIndex.h"

#include <doctest/doctest.h>
#include <numeric>
#include <random>

using platform::ui::RowIndex;

TEST_CASE("rows are counted and looked up as adding them all up would, also after changes")
{
    std::mt19937 random(3);
    for (const std::size_t lines : {1U, 2U, 3U, 64U, 100U, 1000U}) {
        std::vector<std::int64_t> counts(lines);
        for (auto& count : counts)
            count = 1 + random() % 5;
        RowIndex index;
        index.build(lines, [&](std::size_t line) { return counts[line]; });
        for (int round = 0; round < 30; ++round) {
            const auto line = random() % lines;
            counts[line] = 1 + random() % 9;
            index.setRows(line, counts[line]);
            CHECK(index.total() == std::accumulate(counts.begin(), counts.end(), std::int64_t(0)));
            std::int64_t before = 0;
            for (std::size_t each = 0; each < lines; before += counts[each++]) {
                REQUIRE(index.rowsBefore(each) == before);
                REQUIRE(index.place(before) == RowIndex::Place{each, 0});
                REQUIRE(index.place(before + counts[each] - 1) == RowIndex::Place{each, counts[each] - 1});
            }
            CHECK(index.place(-5) == RowIndex::Place{0, 0});
            CHECK(index.place(before + 5) == RowIndex::Place{lines - 1, counts[lines - 1] - 1});
        }
    }
}

TEST_CASE("no lines take no rows")
{
    RowIndex index;
    index.build(0, [](std::size_t) { return 1; });
    CHECK(index.total() == 0);
    CHECK(index.rowsBefore(0) == 0);
}
