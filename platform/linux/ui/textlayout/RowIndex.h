#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace platform::ui {

// How many rows each line of a text takes when it is wrapped. Changing one line and looking a row up cost little
// however many lines there are.
class RowIndex {
public:
    struct Place {
        std::size_t line = 0;
        std::int64_t row = 0; // within the line
        bool operator==(const Place&) const = default;
    };

    void build(std::size_t lines, const std::function<std::int64_t(std::size_t line)>& rows);

    std::size_t lineCount() const { return _rows.size(); }
    std::int64_t total() const { return _total; }
    std::int64_t rows(std::size_t line) const { return _rows[line]; }
    void setRows(std::size_t line, std::int64_t rows);

    // Of all lines above.
    std::int64_t rowsBefore(std::size_t line) const;
    // The last row for one beyond the end, the first for a negative one. There must be a line.
    Place place(std::int64_t row) const;

private:
    std::vector<std::int32_t> _rows;
    std::vector<std::int64_t> _tree; // sums of stretches of lines that end at the index, as in a Fenwick tree
    std::int64_t _total = 0;
};

} // namespace platform::ui
