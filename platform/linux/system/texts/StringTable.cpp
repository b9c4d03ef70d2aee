#include "platform/linux/system/texts/StringTable.h"

#include "platform/linux/system/propertylists/PropertyListReader.h"
#include "platform/ProgramPath.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>
#include <utility>

namespace platform {

namespace {

constexpr const char* fallbackLanguage = "en";

Dictionary readTable(const std::string& folder, const std::string& language)
{
    std::ifstream file(folder + "/" + language + ".lproj/Localizable.strings", std::ios::binary);
    const Data bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    auto table = readPropertyList(bytes);
    Dictionary* texts = table ? table->dictionary() : nullptr;
    return texts ? std::move(*texts) : Dictionary();
}

// "zh_CN.UTF-8" is written in Simplified Chinese, whose folder is named after the script. Other languages may have a
// folder for the region besides the one for all.
void appendLanguages(std::vector<std::string>& languages, std::string_view locale)
{
    locale = locale.substr(0, locale.find_first_of(".@"));
    const std::string language(locale.substr(0, locale.find('_')));
    if (language == "zh") {
        const bool traditional = locale.ends_with("_TW") || locale.ends_with("_HK") || locale.ends_with("_MO");
        languages.push_back(traditional ? "zh-Hant" : "zh-Hans");
        return;
    }
    if (locale.size() > language.size())
        languages.push_back(language + "-" + std::string(locale.substr(language.size() + 1)));
    languages.push_back(language);
}

const char* variable(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? value : nullptr;
}

} // namespace

const StringTable& StringTable::shared()
{
    // Never destroyed, since threads may still describe errors while the process ends.
    static const StringTable& table = *new StringTable(load(resourceFolder(), preferredLanguages()));
    return table;
}

StringTable::StringTable(std::string language, Dictionary texts)
    : _language(std::move(language)),
      _texts(std::move(texts))
{
}

StringTable StringTable::load(const std::string& folder, const std::vector<std::string>& languages)
{
    Dictionary texts = readTable(folder, fallbackLanguage);
    for (const std::string& language : languages) {
        if (language == fallbackLanguage)
            break;
        const Dictionary table = readTable(folder, language);
        if (table.empty())
            continue;
        for (const Dictionary::Entry& entry : table)
            texts.set(entry.key, entry.value);
        return StringTable(language, std::move(texts));
    }
    return StringTable(fallbackLanguage, std::move(texts));
}

std::string StringTable::stringForKey(std::string_view key) const
{
    const std::string* text = _texts.stringForKey(key);
    return text ? *text : std::string(key);
}

std::vector<std::string> preferredLanguages()
{
    const char* locale = nullptr;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = variable(name);
        if (locale)
            break;
    }
    // A process in the C locale has no language of its own, whatever LANGUAGE lists.
    const std::string_view used = locale ? locale : "C";
    if (used == "C" || used == "POSIX" || used.starts_with("C."))
        return {};

    std::vector<std::string> languages;
    if (const char* list = variable("LANGUAGE")) {
        std::istringstream stream(list);
        for (std::string entry; std::getline(stream, entry, ':');) {
            if (!entry.empty())
                appendLanguages(languages, entry);
        }
    }
    appendLanguages(languages, used);
    return languages;
}

std::string resourceFolder()
{
    if (const char* named = variable("BREVANE_RESOURCES"))
        return named;
    auto folder = programFolder() + "/../share/brevane/resources";
#ifdef BREVANE_SOURCE_RESOURCES
    struct stat status{};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return BREVANE_SOURCE_RESOURCES;
#endif
    return folder;
}

} // namespace platform
