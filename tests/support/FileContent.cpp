#include "tests/support/FileContent.h"

#include <fstream>

std::string contentOfFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const auto size = file ? static_cast<std::streamoff>(file.tellg()) : 0;
    std::string content(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    file.seekg(0);
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    return content;
}
