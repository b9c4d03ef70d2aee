// Runs every saved input of the folders named on the command line through one fuzzer, once, without searching.

#include "tests/fuzz/replay/SavedInputs.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int argumentCount, char** arguments)
{
    std::size_t count = 0;
    for (int i = 1; i < argumentCount; ++i) {
        forEachSavedInput(arguments[i], [&](const std::string& name, const std::vector<std::uint8_t>& bytes) {
            // Named first: a crash then tells which input it was.
            std::fprintf(stderr, "%s\n", name.c_str());
            // A copy of exactly its size lets a checking build see any look beyond its end.
            const auto copy = std::make_unique<std::uint8_t[]>(bytes.size());
            std::copy(bytes.begin(), bytes.end(), copy.get());
            LLVMFuzzerTestOneInput(copy.get(), bytes.size());
            ++count;
        });
    }
    std::printf("%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
