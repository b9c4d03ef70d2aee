#include "platform/JSONBeginning.h"
#include "platform/ui/Selection.h"

#include <doctest/doctest.h>

using platform::JSONBeginning;
using platform::jsonBeginning;
using platform::ui::selectionAfterReload;
using platform::ui::selectionAfterRemoval;

TEST_CASE("a JSON text is an array when a bracket is the first that is no space")
{
    CHECK(jsonBeginning("") == JSONBeginning::Blank);
    CHECK(jsonBeginning(" \t\r\n") == JSONBeginning::Blank);
    CHECK(jsonBeginning("[") == JSONBeginning::Bracket);
    CHECK(jsonBeginning(" \n[{}]") == JSONBeginning::Bracket);
    CHECK(jsonBeginning("{\"a\": []}") == JSONBeginning::Other);
    CHECK(jsonBeginning("log: nothing [1]") == JSONBeginning::Other);
    CHECK(jsonBeginning("\v[") == JSONBeginning::Other);
}

TEST_CASE("after a removal the same item is selected, or the one in its place, or the last")
{
    CHECK(selectionAfterRemoval(0, 2, 3) == 0);
    CHECK(selectionAfterRemoval(2, 0, 3) == 1);
    CHECK(selectionAfterRemoval(1, 1, 3) == 1);
    CHECK(selectionAfterRemoval(3, 3, 3) == 2);
    CHECK(selectionAfterRemoval(0, 0, 1) == 0);
    CHECK(selectionAfterRemoval(0, 0, 0) == -1);
    CHECK(selectionAfterRemoval(-1, 0, 2) == -1);
}

TEST_CASE("after a list was read anew the same number is selected while there is such a row")
{
    CHECK(selectionAfterReload(0, 1) == 0);
    CHECK(selectionAfterReload(4, 5) == 4);
    CHECK(selectionAfterReload(4, 4) == -1);
    CHECK(selectionAfterReload(0, 0) == -1);
    CHECK(selectionAfterReload(-1, 3) == -1);
}
