#pragma once

#include <algorithm>
#include <cstddef>

// What stays selected in a list that changes, for every port. -1 stands for nothing.
namespace platform::ui {

// After the item at `removed` is gone and `count` are left: the same item, or the one that took its place, or the last.
constexpr int selectionAfterRemoval(int selected, int removed, int count)
{
    const int moved = selected > removed ? selected - 1 : selected;
    return std::min(moved, count - 1);
}

// After a list was read anew and has `count` rows: the row of the same number while there is one.
constexpr int selectionAfterReload(int selected, std::size_t count)
{
    return selected >= 0 && static_cast<std::size_t>(selected) < count ? selected : -1;
}

} // namespace platform::ui
