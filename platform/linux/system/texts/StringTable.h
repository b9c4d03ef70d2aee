#pragma once

#include "platform/Dictionary.h"

#include <string>
#include <string_view>
#include <vector>

namespace platform {

// The texts of one language, by their English words.
class StringTable {
public:
    // The process's own, in the user's language. Any thread.
    static const StringTable& shared();

    StringTable() = default;
    StringTable(std::string language, Dictionary texts);

    // The table of the first language that has one below the folder (LANGUAGE.lproj/Localizable.strings). What it lacks
    // comes from the English one, which exists for keys that are not themselves English texts.
    static StringTable load(const std::string& folder, const std::vector<std::string>& languages);

    // As its folder is named.
    const std::string& language() const { return _language; }
    // The key itself when there is no text.
    std::string stringForKey(std::string_view key) const;

private:
    std::string _language;
    Dictionary _texts;
};

// The languages of the process's environment, best first, as the folders are named: "de", "zh-Hans", "pt-BR". English
// ends the search.
std::vector<std::string> preferredLanguages();

// Beside the program when it is installed, in the source tree when it runs from the build. BREVANE_RESOURCES names
// another.
std::string resourceFolder();

} // namespace platform
