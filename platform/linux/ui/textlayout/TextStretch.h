#pragma once

#include <cstddef>

namespace platform::ui {

// A stretch of a text, in bytes.
struct TextStretch {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isEmpty() const { return begin == end; }
};

} // namespace platform::ui
