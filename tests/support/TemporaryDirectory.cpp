#include "tests/support/TemporaryDirectory.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <stdlib.h>

TemporaryDirectory::TemporaryDirectory()
{
    std::string pattern = std::filesystem::temp_directory_path() / "brevane-test-XXXXXX";
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make " + pattern);
    _path = pattern;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

std::string TemporaryDirectory::write(std::string_view name, std::string_view content) const
{
    const std::filesystem::path path = file(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!stream.flush())
        throw std::runtime_error("cannot write " + path.string());
    return path;
}
