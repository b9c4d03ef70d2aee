#include "platform/Texts.h"

namespace platform {

std::string textForKey(const Dictionary& dictionary, std::string_view key)
{
    const auto* const text = dictionary.stringForKey(key);
    return text ? *text : std::string();
}

std::vector<std::string> textsOf(const Array* array)
{
    std::vector<std::string> texts;
    for (const auto& each : array ? *array : Array()) {
        if (const auto* const text = each.string())
            texts.push_back(*text);
    }
    return texts;
}

Array arrayOf(const std::vector<std::string>& texts)
{
    return {texts.begin(), texts.end()};
}

} // namespace platform
