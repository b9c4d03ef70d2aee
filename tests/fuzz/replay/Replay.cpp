// Runs every file of the folders named on the command line through one fuzzer, once, without searching.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

std::vector<std::uint8_t> contents(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::size_t count = 0;
    for (int i = 1; i < argumentCount; ++i) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
            if (!entry.is_regular_file())
                continue;
            // Named first: a crash then tells which input it was.
            std::fprintf(stderr, "%s\n", entry.path().filename().c_str());
            const std::vector<std::uint8_t> bytes = contents(entry.path());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
