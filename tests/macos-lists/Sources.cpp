#include "tests/macos-lists/Sources.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <QRegularExpression>
#include <sstream>
#include <stdexcept>

namespace Sources {

namespace {

const std::filesystem::path root = SOURCE_FOLDER;

template <class Iterator>
std::vector<std::string> list(const std::string& folder, const std::string& extension)
{
    std::vector<std::string> found;
    if (!std::filesystem::is_directory(root / folder))
        return found;
    for (const auto& entry : Iterator(root / folder))
        if (entry.is_regular_file() && entry.path().extension() == extension)
            found.push_back(std::filesystem::relative(entry.path(), root).string());
    std::ranges::sort(found);
    return found;
}

} // namespace

std::string read(const std::string& path)
{
    std::ifstream file(root / path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> files(const std::string& folder, const std::string& extension)
{
    return list<std::filesystem::directory_iterator>(folder, extension);
}

std::vector<std::string> filesBelow(const std::string& folder, const std::string& extension)
{
    return list<std::filesystem::recursive_directory_iterator>(folder, extension);
}

std::string nameOf(const std::string& path)
{
    return std::filesystem::path(path).stem().string();
}

std::vector<std::vector<std::string>> matches(const std::string& text, const std::string& expression)
{
    const QRegularExpression pattern(QString::fromStdString(expression), QRegularExpression::MultilineOption);
    if (!pattern.isValid())
        throw std::logic_error("no regular expression: " + expression);
    std::vector<std::vector<std::string>> all;
    auto found = pattern.globalMatch(QString::fromStdString(text));
    while (found.hasNext()) {
        std::vector<std::string> groups;
        for (const QString& group : found.next().capturedTexts())
            groups.push_back(group.toStdString());
        groups.erase(groups.begin());
        all.push_back(std::move(groups));
    }
    return all;
}

} // namespace Sources
