#pragma once

#include <cstdlib>
#include <string_view>
#include <unicode/locid.h>

namespace platform {

// The locale for one category, such as "LC_TIME", which the user may choose apart from the language.
inline icu::Locale userLocale(const char* category)
{
    for (const char* const variable : {"LC_ALL", category, "LANG"}) {
        const char* const name = std::getenv(variable);
        if (name && *name)
            return std::string_view(name).starts_with("C") || std::string_view(name) == "POSIX"
                ? icu::Locale("en", "US", "POSIX")
                : icu::Locale::createCanonical(name);
    }
    return {"en", "US", "POSIX"};
}

} // namespace platform
