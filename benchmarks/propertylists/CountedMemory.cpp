#include "benchmarks/propertylists/CountedMemory.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

bool isCounting = false;
std::ptrdiff_t held = 0;
std::ptrdiff_t most = 0;

} // namespace

namespace CountedMemory {

void start()
{
    held = 0;
    most = 0;
    isCounting = true;
}

std::size_t stop()
{
    isCounting = false;
    return static_cast<std::size_t>(most);
}

} // namespace CountedMemory

void* operator new(std::size_t size)
{
    void* memory = std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    if (isCounting) {
        held += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
        most = std::max(most, held);
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    if (isCounting)
        held -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}
