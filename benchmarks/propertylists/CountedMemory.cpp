#include "benchmarks/propertylists/CountedMemory.h"

#include <algorithm>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

std::size_t held = 0;
std::size_t base = 0;
std::size_t most = 0;

} // namespace

namespace CountedMemory {

void restart()
{
    base = held;
    most = held;
}

std::size_t peak()
{
    return most - base;
}

} // namespace CountedMemory

void* operator new(std::size_t size)
{
    void* memory = std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    held += malloc_usable_size(memory);
    most = std::max(most, held);
    return memory;
}

void operator delete(void* memory) noexcept
{
    held -= malloc_usable_size(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}
