#include "platform/linux/ui/textlayout/RowIndex.h"

#include <algorithm>
#include <bit>

namespace platform::ui {

namespace {

// The index's lowest bit: how many lines the stretch that ends there has.
std::size_t stretch(std::size_t index)
{
    return index & (~index + 1);
}

} // namespace

void RowIndex::build(std::size_t lines, const std::function<std::int64_t(std::size_t line)>& rows)
{
    _rows.resize(lines);
    _tree.assign(lines + 1, 0);
    _total = 0;
    for (std::size_t index = 1; index <= lines; ++index) {
        const auto count = rows(index - 1);
        _rows[index - 1] = static_cast<std::int32_t>(count);
        _total += count;
        _tree[index] += count;
        if (const auto parent = index + stretch(index); parent <= lines)
            _tree[parent] += _tree[index];
    }
}

void RowIndex::setRows(std::size_t line, std::int64_t rows)
{
    const auto difference = rows - _rows[line];
    _rows[line] = static_cast<std::int32_t>(rows);
    _total += difference;
    for (auto index = line + 1; index < _tree.size(); index += stretch(index))
        _tree[index] += difference;
}

std::int64_t RowIndex::rowsBefore(std::size_t line) const
{
    std::int64_t sum = 0;
    for (auto index = std::min(line, _rows.size()); index > 0; index -= stretch(index))
        sum += _tree[index];
    return sum;
}

RowIndex::Place RowIndex::place(std::int64_t row) const
{
    row = std::clamp<std::int64_t>(row, 0, std::max<std::int64_t>(_total - 1, 0));
    std::size_t index = 0;
    for (auto step = std::bit_floor(_rows.size()); step > 0; step /= 2) {
        if (index + step < _tree.size() && _tree[index + step] <= row) {
            index += step;
            row -= _tree[index];
        }
    }
    return {index, row};
}

} // namespace platform::ui
