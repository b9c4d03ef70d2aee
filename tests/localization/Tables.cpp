#include "tests/localization/Tables.h"

#include "platform/PropertyListCoding.h"
#include "tests/support/FileContent.h"

#include <regex>

namespace tables {

const std::vector<std::string>& languages()
{
    static const std::vector<std::string> all{"en", "de", "fr", "es", "it", "ja", "zh-Hans"};
    return all;
}

std::string path(std::string_view language)
{
    return std::string(RESOURCES_FOLDER) + "/" + std::string(language) + ".lproj/Localizable.strings";
}

std::string bytes(std::string_view language)
{
    return contentOfFile(path(language));
}

Texts read(std::string_view language)
{
    const std::string text = bytes(language);
    const auto list = platform::propertyListWithData(platform::Data(text.begin(), text.end()));
    const platform::Dictionary* dictionary = list ? list->dictionary() : nullptr;
    Texts texts;
    if (!dictionary)
        return texts;
    for (const platform::Dictionary::Entry& entry : *dictionary) {
        const std::string* value = entry.value.string();
        texts[entry.key] = value ? *value : std::string();
    }
    return texts;
}

std::vector<std::string> writtenKeys(std::string_view language)
{
    static const std::regex entry(R"re(^"((?:[^"\\]|\\.)*)" = ")re", std::regex::multiline);
    const std::string text = bytes(language);
    std::vector<std::string> keys;
    for (std::sregex_iterator match(text.begin(), text.end(), entry), end; match != end; ++match)
        keys.push_back((*match)[1]);
    return keys;
}

std::map<int, std::string> placeholders(std::string_view format)
{
    static const std::regex conversion(R"re(%(?:(\d+)\$)?(?:\{\w+\})?((?:hh|h|ll|l|q|z)?[@sdiuxc]|%))re");
    const std::string text(format);
    std::map<int, std::string> found;
    int next = 1;
    for (std::sregex_iterator match(text.begin(), text.end(), conversion), end; match != end; ++match) {
        if ((*match)[2] == "%")
            continue;
        const int number = (*match)[1].matched ? std::stoi((*match)[1]) : next++;
        found[number] += (*match)[2];
    }
    return found;
}

} // namespace tables
