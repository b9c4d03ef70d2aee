#include "platform/Unicode.h"
#include "tests/localization/Tables.h"

#include <algorithm>
#include <cctype>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

using tables::Texts;

namespace {

std::set<std::string> keysOf(const Texts& texts)
{
    std::set<std::string> keys;
    for (const auto& [key, text] : texts)
        keys.insert(key);
    return keys;
}

std::set<std::string> difference(const std::set<std::string>& one, const std::set<std::string>& other)
{
    std::set<std::string> only;
    std::ranges::set_difference(one, other, std::inserter(only, only.begin()));
    return only;
}

bool isMarked(std::string_view title)
{
    const auto place = title.find('&');
    return place != std::string_view::npos && place + 1 < title.size() && title[place + 1] != ' ';
}

std::string trimmedOff(const std::string& text)
{
    const auto isSpace = [](char character) { return character == ' ' || character == '\n'; };
    const auto first = std::ranges::find_if_not(text, isSpace);
    const auto last = std::find_if_not(text.rbegin(), text.rend(), isSpace).base();
    return first == text.end() ? text : std::string(text.begin(), first) + "|" + std::string(last, text.end());
}

} // namespace

TEST_CASE("the folders of languages are those that are known")
{
    std::set<std::string> folders;
    for (const auto& entry : std::filesystem::directory_iterator(RESOURCES_FOLDER)) {
        if (entry.path().extension() == ".lproj")
            folders.insert(entry.path().stem().string());
    }
    CHECK(folders == std::set<std::string>(tables::languages().begin(), tables::languages().end()));
}

TEST_CASE("every table parses and is UTF-8 without a byte order mark")
{
    for (const std::string& language : tables::languages()) {
        CAPTURE(language);
        const std::string bytes = tables::bytes(language);
        CHECK(platform::isValidUTF8(bytes));
        CHECK_FALSE(bytes.starts_with("\xEF\xBB\xBF"));
        CHECK_FALSE(tables::read(language).empty());
    }
}

TEST_CASE("no key is written twice")
{
    for (const std::string& language : tables::languages()) {
        CAPTURE(language);
        std::vector<std::string> keys = tables::writtenKeys(language);
        CHECK(keys.size() == tables::read(language).size());
        std::ranges::sort(keys);
        const auto twice = std::ranges::adjacent_find(keys);
        CHECK_MESSAGE(twice == keys.end(), "written twice: ", twice == keys.end() ? "" : *twice);
    }
}

TEST_CASE("every language has every text and none besides")
{
    const auto english = keysOf(tables::read("en"));
    for (const std::string& language : tables::languages()) {
        CAPTURE(language);
        const auto keys = keysOf(tables::read(language));
        for (const std::string& key : difference(english, keys))
            FAIL_CHECK("missing: ", key);
        for (const std::string& key : difference(keys, english))
            FAIL_CHECK("surplus: ", key);
    }
}

TEST_CASE("the keys stand in the same order in every table")
{
    const auto english = tables::writtenKeys("en");
    for (const std::string& language : tables::languages()) {
        CAPTURE(language);
        CHECK(tables::writtenKeys(language) == english);
    }
}

TEST_CASE("no text is empty, and none gains or loses space around it")
{
    for (const std::string& language : tables::languages()) {
        for (const auto& [key, text] : tables::read(language)) {
            CAPTURE(language);
            CAPTURE(key);
            CHECK_FALSE(text.empty());
            CHECK(trimmedOff(text) == trimmedOff(key));
        }
    }
}

TEST_CASE("the placeholders of a text take the same arguments in every language")
{
    for (const std::string& language : tables::languages()) {
        for (const auto& [key, text] : tables::read(language)) {
            CAPTURE(language);
            CAPTURE(key);
            CAPTURE(text);
            CHECK(tables::placeholders(text) == tables::placeholders(key));
        }
    }
}

TEST_CASE("placeholders are told apart by number and type")
{
    using Found = std::map<int, std::string>;
    CHECK(tables::placeholders("100 %% sure") == Found{});
    CHECK(tables::placeholders("%@ (%lu)") == Found{{1, "@"}, {2, "lu"}});
    CHECK(tables::placeholders("%2$lu %1$@") == Found{{1, "@"}, {2, "lu"}});
    CHECK(tables::placeholders("%d") != tables::placeholders("%ld"));
}

TEST_CASE("sentences are translated")
{
    static const std::regex sentence("[A-Za-z']+ [A-Za-z']+ [A-Za-z']+");
    for (const std::string& language : tables::languages()) {
        if (language == "en")
            continue;
        for (const auto& [key, text] : tables::read(language)) {
            CAPTURE(language);
            if (std::regex_search(key, sentence))
                CHECK(text != key);
        }
    }
}

TEST_CASE("a title has a letter for Alt in every language or in none")
{
    for (const std::string& language : tables::languages()) {
        for (const auto& [key, text] : tables::read(language)) {
            CAPTURE(language);
            CAPTURE(key);
            CHECK(isMarked(text) == isMarked(key));
        }
    }
}

TEST_CASE("a retitled button keeps the letter that its first title has")
{
    const std::map<const char*, std::vector<const char*>> titles{
        {"Show Ad&vanced Settings", {"Show Advanced Settings", "Hide Advanced Settings"}},
        {"Choo&se", {"Choose", "Save"}},
    };
    for (const std::string& language : tables::languages()) {
        const Texts texts = tables::read(language);
        for (const auto& [marked, later] : titles) {
            const std::string first = texts.at(marked);
            const char letter = first[first.find('&') + 1];
            const bool inParentheses = first.ends_with(")");
            for (const char* title : later) {
                CAPTURE(language);
                CAPTURE(title);
                const auto hasLetter = [&](char character) { return std::tolower(character) == std::tolower(letter); };
                CHECK((inParentheses || std::ranges::any_of(texts.at(title), hasLetter)));
            }
        }
    }
}

TEST_CASE("what each backup program's file says of its backups is in the tables, and keeps the fields' names")
{
    int seen = 0;
    for (const auto& entry : std::filesystem::directory_iterator(RESOURCES_FOLDER "/programs")) {
        std::ifstream file(entry.path());
        const std::string text(std::istreambuf_iterator<char>(file), {});
        static const std::regex pattern("<key>Place</key>\\s*<string>([^<]*)</string>");
        std::smatch found;
        CAPTURE(entry.path().string());
        REQUIRE(std::regex_search(text, found, pattern));
        const std::string place = found[1];
        for (const std::string& language : tables::languages()) {
            CAPTURE(language);
            const Texts texts = tables::read(language);
            REQUIRE(texts.contains(place));
            CHECK(texts.at(place).contains("{Repository}") == place.contains("{Repository}"));
        }
        ++seen;
    }
    CHECK(seen >= 8);
}

TEST_CASE("German addresses the user formally")
{
    static const std::regex informal(R"re((^|[^A-Za-z])(du|dein|deine|deinen|deinem|deiner|dich|dir)([^A-Za-z]|$))re",
                                     std::regex::icase);
    for (const auto& [key, text] : tables::read("de")) {
        CAPTURE(text);
        CHECK_FALSE(std::regex_search(text, informal));
    }
}

TEST_CASE("French sets a no-break space before a colon, a question mark and inside quotes")
{
    static const std::regex bare("[^\xA0][:?!](\\s|$)|\xC2\xAB[^\xC2]|[^\xA0]\xC2\xBB");
    for (const auto& [key, text] : tables::read("fr")) {
        CAPTURE(text);
        CHECK_FALSE(std::regex_search(text, bare));
    }
}

TEST_CASE("every group of texts says what it is for")
{
    static const std::regex group(R"re((^|\n\n)(?!/\*))re");
    for (const std::string& language : tables::languages()) {
        CAPTURE(language);
        CHECK_FALSE(std::regex_search(tables::bytes(language), group));
    }
}
