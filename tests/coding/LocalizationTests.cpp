#include "platform/linux/system/texts/StringTable.h"
#include "platform/Localization.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <string>
#include <thread>
#include <vector>

using platform::preferredLanguages;
using platform::StringTable;
using Languages = std::vector<std::string>;

namespace {

// Without a word of the environment's own.
struct NoLanguage {
    EnvironmentVariable language{"LANGUAGE"};
    EnvironmentVariable all{"LC_ALL"};
    EnvironmentVariable messages{"LC_MESSAGES"};
    EnvironmentVariable lang{"LANG"};
};

} // namespace

TEST_CASE("the label keys of the interval editor have the same English text, and other keys are their own")
{
    const StringTable table = StringTable::load(platform::resourceFolder(), {});
    for (const char* key :
         {"Back up every-minutes", "Back up every-hours", "Back up every-days", "Back up every-weeks"})
        CHECK(table.stringForKey(key) == "Back up every");
    CHECK(table.stringForKey("Settings already applied.") == "Settings already applied.");
}

TEST_CASE("a text comes from the first language that has a table, and what that lacks from the English one")
{
    const TemporaryDirectory folder;
    folder.write("en.lproj/Localizable.strings", "\"key-a\" = \"A\"; \"key-b\" = \"B\";");
    folder.write("de.lproj/Localizable.strings", "\"key-a\" = \"Ä\"; \"Text\" = \"Wort\";");
    folder.write("fr.lproj/Localizable.strings", "\"Text\" = \"mot\";");
    const StringTable table = StringTable::load(folder.path(), {"it", "de", "fr"});
    CHECK(table.stringForKey("key-a") == "Ä");
    CHECK(table.stringForKey("key-b") == "B");
    CHECK(table.stringForKey("Text") == "Wort");
    CHECK(table.stringForKey("None") == "None");
}

TEST_CASE("English ends the search for a language")
{
    const TemporaryDirectory folder;
    folder.write("de.lproj/Localizable.strings", "\"Text\" = \"Wort\";");
    CHECK(StringTable::load(folder.path(), {"en", "de"}).stringForKey("Text") == "Text");
}

TEST_CASE("a table may be old-style text, XML or binary, and a damaged or missing one leaves the keys")
{
    const TemporaryDirectory folder;
    folder.write("aa.lproj/Localizable.strings",
                 "<plist version=\"1.0\"><dict><key>Text</key><string>a</string></dict></plist>");
    folder.write("bb.lproj/Localizable.strings",
                 std::string_view("bplist00\xD1\1\2\x54Text\x51"
                                  "b\x08\x0B\x10\0\0\0\0\0\0\1\1\0\0\0\0\0\0\0\3\0\0\0\0\0\0\0\0"
                                  "\0\0\0\0\0\0\0\x12",
                                  53));
    folder.write("cc.lproj/Localizable.strings", "\"Text\" = ");
    CHECK(StringTable::load(folder.path(), {"aa"}).stringForKey("Text") == "a");
    CHECK(StringTable::load(folder.path(), {"bb"}).stringForKey("Text") == "b");
    CHECK(StringTable::load(folder.path(), {"cc"}).stringForKey("Text") == "Text");
    CHECK(StringTable::load(folder.file("missing"), {"aa"}).stringForKey("Text") == "Text");
}

TEST_CASE("the user's languages come from the environment, the list before the locale")
{
    const NoLanguage none;
    CHECK(preferredLanguages() == Languages{});
    none.lang.put("de_DE.UTF-8");
    CHECK(preferredLanguages() == Languages{"de-DE", "de"});
    none.messages.put("fr");
    CHECK(preferredLanguages() == Languages{"fr"});
    none.all.put("it_IT@euro");
    CHECK(preferredLanguages() == Languages{"it-IT", "it"});
    none.language.put("sv:pt_BR");
    CHECK(preferredLanguages() == Languages{"sv", "pt-BR", "pt", "it-IT", "it"});
}

TEST_CASE("Chinese is named after its script")
{
    const NoLanguage none;
    none.lang.put("zh_CN.UTF-8");
    CHECK(preferredLanguages() == Languages{"zh-Hans"});
    none.lang.put("zh_TW");
    CHECK(preferredLanguages() == Languages{"zh-Hant"});
}

TEST_CASE("a process without a locale of its own speaks English")
{
    const NoLanguage none;
    none.language.put("de");
    for (const char* locale : {"C", "POSIX", "C.UTF-8"}) {
        none.all.put(locale);
        CHECK(preferredLanguages() == Languages{});
    }
}

TEST_CASE("a variable names the folder of the resources")
{
    const EnvironmentVariable named("BREVANE_RESOURCES", "/somewhere/else");
    CHECK(platform::resourceFolder() == "/somewhere/else");
}

TEST_CASE("texts are looked up from many threads at once")
{
    std::vector<std::thread> threads;
    std::vector<int> same(8, 0);
    for (int& count : same) {
        threads.emplace_back([&count] {
            for (int i = 0; i < 1000; ++i)
                count += platform::localizedString("No table has this.") == "No table has this." ? 1 : 0;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    CHECK(same == std::vector<int>(8, 1000));
}

TEST_CASE("HTTP statuses have their phrases in lower case, unknown ones that of their class")
{
    CHECK(platform::localizedStringForStatusCode(404) == "not found");
    CHECK(platform::localizedStringForStatusCode(500) == "internal server error");
    CHECK(platform::localizedStringForStatusCode(429) == "too many requests");
    CHECK(platform::localizedStringForStatusCode(499) == "client error");
    CHECK(platform::localizedStringForStatusCode(599) == "server error");
    CHECK(platform::localizedStringForStatusCode(299) == "success");
    CHECK(platform::localizedStringForStatusCode(399) == "redirected");
    CHECK(platform::localizedStringForStatusCode(199) == "informational");
    for (const std::int64_t code : {std::int64_t{0}, std::int64_t{-1}, INT64_MAX, INT64_MIN})
        CHECK(platform::localizedStringForStatusCode(code) == "server error");
}

TEST_CASE("digits of every script are decimal digits with their values")
{
    CHECK(platform::isDecimalDigit('0'));
    CHECK(platform::decimalDigitValue('7') == 7);
    CHECK(platform::decimalDigitValue(U'٣') == 3);
    CHECK(platform::decimalDigitValue(U'९') == 9);
    CHECK(platform::decimalDigitValue(0x1D7D8) == 0); // a mathematical zero
    for (const char32_t character :
         {U'a', U'²', U'Ⅷ', U'½', U'一', char32_t{0xD800}, char32_t{0x110000}, char32_t{0xFFFFFFFF}}) {
        CHECK_FALSE(platform::isDecimalDigit(character));
        CHECK(platform::decimalDigitValue(character) == -1);
    }
}
