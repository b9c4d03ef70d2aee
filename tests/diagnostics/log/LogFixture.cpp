#include "tests/diagnostics/log/LogFixture.h"

#include "tests/diagnostics/log/CountedCalls.h"
#include "tests/support/FileContent.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <filesystem>
#include <sstream>

LogFixture::LogFixture()
{
    scripted::reset();
    scripted::system::setHomeDirectory(_home.path());
    counted::reset();
}

void LogFixture::makeFile(const std::string& suffix, std::uint64_t size, std::string_view beginning) const
{
    _home.write("Library/Logs/Brevane/application" + suffix, beginning);
    std::filesystem::resize_file(path(suffix), size);
}

bool LogFixture::exists(const std::string& suffix) const
{
    return std::filesystem::exists(path(suffix));
}

std::uint64_t LogFixture::size(const std::string& suffix) const
{
    return std::filesystem::file_size(path(suffix));
}

std::string LogFixture::content(const std::string& suffix) const
{
    return contentOfFile(path(suffix));
}

std::vector<std::string> LogFixture::files() const
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder()))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> linesOf(const std::string& text)
{
    CHECK((text.empty() || text.back() == '\n'));
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string messageOf(const std::string& line)
{
    auto end = line.find("] ");
    return end == std::string::npos ? "no prefix: " + line : line.substr(end + 2);
}
