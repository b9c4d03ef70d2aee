#include "platform/linux/system/texts/StringTable.h"
#include "tests/support/EnvironmentVariable.h"

#include <doctest/doctest.h>
#include <string>
#include <vector>

using platform::StringTable;

namespace {

struct Environment {
    const char* language = "";
    const char* all = "";
    const char* messages = "";
    const char* lang = "";
};

// Which of the product's own tables a process in this environment takes.
std::string languageIn(const Environment& environment)
{
    const EnvironmentVariable language("LANGUAGE", environment.language);
    const EnvironmentVariable all("LC_ALL", environment.all);
    const EnvironmentVariable messages("LC_MESSAGES", environment.messages);
    const EnvironmentVariable lang("LANG", environment.lang);
    return StringTable::load(RESOURCES_FOLDER, platform::preferredLanguages()).language();
}

std::string languageIn(const char* locale)
{
    return languageIn({.lang = locale});
}

} // namespace

TEST_CASE("the user's locale chooses the language, whatever the region")
{
    CHECK(languageIn("de_DE.UTF-8") == "de");
    CHECK(languageIn("de_AT.UTF-8") == "de");
    CHECK(languageIn("de_CH") == "de");
    CHECK(languageIn("de_LU.ISO-8859-15@euro") == "de");
    CHECK(languageIn("fr_CA.UTF-8") == "fr");
    CHECK(languageIn("es_MX.UTF-8") == "es");
    CHECK(languageIn("it_CH.UTF-8") == "it");
    CHECK(languageIn("ja_JP.eucJP") == "ja");
    CHECK(languageIn("de") == "de");
}

TEST_CASE("Simplified Chinese is for the regions that write it, and the others read English")
{
    CHECK(languageIn("zh_CN.UTF-8") == "zh-Hans");
    CHECK(languageIn("zh_CN.GB18030") == "zh-Hans");
    CHECK(languageIn("zh_SG.UTF-8") == "zh-Hans");
    CHECK(languageIn("zh_TW.UTF-8") == "en");
    CHECK(languageIn("zh_HK.UTF-8") == "en");
    CHECK(languageIn("zh_MO.UTF-8") == "en");
}

TEST_CASE("a language that is not spoken here becomes English")
{
    CHECK(languageIn("pt_BR.UTF-8") == "en");
    CHECK(languageIn("sv_SE.UTF-8") == "en");
    CHECK(languageIn("tlh") == "en");
    CHECK(languageIn("en_GB.UTF-8") == "en");
    CHECK(languageIn("nonsense.@_") == "en");
}

TEST_CASE("no locale, and the locale of programs, are English")
{
    CHECK(languageIn("") == "en");
    CHECK(languageIn("C") == "en");
    CHECK(languageIn("POSIX") == "en");
    CHECK(languageIn("C.UTF-8") == "en");
    CHECK(languageIn({.language = "de", .lang = "C.UTF-8"}) == "en");
}

TEST_CASE("the user's list of languages goes before the locale, and its first one spoken here is taken")
{
    CHECK(languageIn({.language = "fr", .lang = "de_DE.UTF-8"}) == "fr");
    CHECK(languageIn({.language = "pt_BR:sv:it_CH:de", .lang = "en_US.UTF-8"}) == "it");
    CHECK(languageIn({.language = "sv", .lang = "de_DE.UTF-8"}) == "de");
    CHECK(languageIn({.language = "zh_TW:ja", .lang = "zh_TW.UTF-8"}) == "ja");
    CHECK(languageIn({.language = ":::", .lang = "de_DE.UTF-8"}) == "de");
}

TEST_CASE("English in the user's list is a language like the others")
{
    CHECK(languageIn({.language = "en:de", .lang = "de_DE.UTF-8"}) == "en");
    CHECK(languageIn({.language = "en_GB:de", .lang = "de_DE.UTF-8"}) == "en");
}

TEST_CASE("the variable for everything goes before that for messages, and that before the general one")
{
    CHECK(languageIn({.all = "de_DE", .messages = "fr_FR", .lang = "it_IT"}) == "de");
    CHECK(languageIn({.messages = "fr_FR", .lang = "it_IT"}) == "fr");
    CHECK(languageIn({.all = "C", .messages = "fr_FR", .lang = "it_IT"}) == "en");
}

TEST_CASE("a table in the user's language has its texts")
{
    const EnvironmentVariable language("LANGUAGE", "");
    const EnvironmentVariable all("LC_ALL", "de_AT.UTF-8");
    const StringTable table = StringTable::load(RESOURCES_FOLDER, platform::preferredLanguages());
    CHECK(table.stringForKey("Settings applied successfully.") == "Die Einstellungen wurden angewendet.");
    CHECK(table.stringForKey("Back up every-minutes") == "Backup alle");
    CHECK(table.stringForKey("Nobody has translated this.") == "Nobody has translated this.");
}
