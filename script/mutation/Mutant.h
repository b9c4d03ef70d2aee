#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

// The switch of a program that holds many mutants: BREVANE_MUTANT names the one that is on. With
// BREVANE_MUTANT_REACHED, each test's mutants are noted in that file: the running test's row, the width of a row, and
// from byte 4096 a byte for each mutant of each row. Row 0 is what runs outside any test.
namespace mutant {

struct Record {
    std::atomic<std::int32_t> row;
    std::int32_t width;
};

struct State {
    int chosen = 0;
    Record* record = nullptr;
    std::size_t size = 0;
};

inline State load()
{
    State state;
    if (const char* number = std::getenv("BREVANE_MUTANT"))
        state.chosen = std::atoi(number);
    const char* path = std::getenv("BREVANE_MUTANT_REACHED");
    const int file = path ? ::open(path, O_RDWR | O_CLOEXEC) : -1;
    struct stat status = {};
    if (file >= 0 && ::fstat(file, &status) == 0) {
        state.size = static_cast<std::size_t>(status.st_size);
        void* memory = ::mmap(nullptr, state.size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        state.record = memory == MAP_FAILED ? nullptr : static_cast<Record*>(memory);
    }
    if (file >= 0)
        ::close(file);
    return state;
}

inline State& state()
{
    static State loaded = load();
    return loaded;
}

// Whether a mutant is on; never known at compile time.
inline bool on(int number)
{
    const State& now = state();
    if (now.record) {
        const auto row = static_cast<std::size_t>(now.record->row.load(std::memory_order_relaxed));
        const std::size_t place =
            4096 + row * static_cast<std::size_t>(now.record->width) + static_cast<std::size_t>(number);
        if (place < now.size)
            reinterpret_cast<unsigned char*>(now.record)[place] = 1;
    }
    return now.chosen == number;
}

// The same for constexpr functions, which are as they were where the compiler computes them.
constexpr bool is(int number)
{
    return !std::is_constant_evaluated() && on(number);
}

template <typename Value>
constexpr Value next(bool isOn, Value value)
{
    return isOn ? static_cast<Value>(static_cast<std::int64_t>(value) + 1) : value;
}

constexpr float next(bool isOn, float value)
{
    return isOn ? value + 1 : value;
}

constexpr double next(bool isOn, double value)
{
    return isOn ? value + 1 : value;
}

struct Less {
    static constexpr bool plain(const auto& a, const auto& b) { return a < b; }
    static constexpr bool other(const auto& a, const auto& b) { return a <= b; }
};

struct LessEqual {
    static constexpr bool plain(const auto& a, const auto& b) { return a <= b; }
    static constexpr bool other(const auto& a, const auto& b) { return a < b; }
};

struct Greater {
    static constexpr bool plain(const auto& a, const auto& b) { return a > b; }
    static constexpr bool other(const auto& a, const auto& b) { return a >= b; }
};

struct GreaterEqual {
    static constexpr bool plain(const auto& a, const auto& b) { return a >= b; }
    static constexpr bool other(const auto& a, const auto& b) { return a > b; }
};

template <typename Sign>
constexpr bool compare(Sign, bool isOn, const auto& a, const auto& b)
{
    return isOn ? Sign::other(a, b) : Sign::plain(a, b);
}

// Changes a named text before main, if its mutant is on.
template <std::size_t length, std::size_t otherLength>
bool set(int number, char (&text)[length], const char (&other)[otherLength])
{
    if (on(number))
        std::memcpy(text, other, length < otherLength ? length : otherLength);
    return true;
}

} // namespace mutant
