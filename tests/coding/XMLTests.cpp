#include "platform/Unicode.h"
#include "tests/coding/Samples.h"

#include <cmath>
#include <doctest/doctest.h>
#include <limits>

using namespace std::string_literals;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;
using platform::UID;

namespace {

platform::Result<PropertyList> readElement(std::string_view element)
{
    return read(xml(element));
}

bool isDamagedElement(std::string_view element)
{
    return isDamaged(xml(element));
}

} // namespace

TEST_CASE("every element of an XML property list is read")
{
    CHECK(readElement("<dict><key>a</key><string>x</string><key>b</key><array><true/><false/></array></dict>").value()
          == PropertyList(Dictionary{{"a", "x"}, {"b", Array{true, false}}}));
    CHECK(readElement("<integer>-12</integer>").value() == PropertyList(-12));
    CHECK(readElement("<real>2.5e3</real>").value() == PropertyList(2500.0));
    CHECK(readElement("<date>2001-01-02T03:04:05Z</date>").value() == PropertyList(Date{97445}));
    CHECK(readElement("<data>AAEC\n\t/w==</data>").value() == PropertyList(Data{0, 1, 2, 255}));
    CHECK(readElement("<true></true>").value() == PropertyList(true));
}

TEST_CASE("empty elements are empty values")
{
    CHECK(readElement("<dict/>").value() == PropertyList(Dictionary()));
    CHECK(readElement("<array />").value() == PropertyList(Array()));
    CHECK(readElement("<string/>").value() == PropertyList(""));
    CHECK(readElement("<data></data>").value() == PropertyList(Data()));
    CHECK(readElement("<dict><key/><true/></dict>").value() == PropertyList(Dictionary{{"", true}}));
}

TEST_CASE("integers may be hexadecimal, signed and surrounded by space, and fit into 64 bits")
{
    CHECK(readElement("<integer> 0x1F </integer>").value() == PropertyList(31));
    CHECK(readElement("<integer>+7</integer>").value() == PropertyList(7));
    CHECK(readElement("<integer>010</integer>").value() == PropertyList(10));
    CHECK(readElement("<integer>9223372036854775807</integer>").value() == PropertyList(INT64_MAX));
    CHECK(readElement("<integer>-9223372036854775808</integer>").value() == PropertyList(INT64_MIN));
    CHECK(readElement("<integer>9223372036854775808</integer>").value() == PropertyList(std::uint64_t{1} << 63));
    CHECK(readElement("<integer>18446744073709551615</integer>").value() == PropertyList(UINT64_MAX));
    CHECK(readElement("<integer>0xFFFFFFFFFFFFFFFF</integer>").value() == PropertyList(UINT64_MAX));
    for (const char* text : {"", " ", "-", "+", "0x", "1x", "12 34", "--1", "-+1", "1.0", "-9223372036854775809",
                             "18446744073709551616", "99999999999999999999", "0x10000000000000000"}) {
        CAPTURE(text);
        CHECK(isDamagedElement("<integer>" + std::string(text) + "</integer>"));
    }
    CHECK(isDamagedElement("<integer/>"));
}

TEST_CASE("reals may be infinite or no number, and are read the same in every locale")
{
    CHECK(readElement("<real>nan</real>").value() == PropertyList(std::nan("")));
    CHECK(readElement("<real>-infinity</real>").value() == PropertyList(-std::numeric_limits<double>::infinity()));
    CHECK(readElement("<real>-0.5</real>").value() == PropertyList(-0.5));
    for (const char* text : {"", "x", "1,5", "1.5x", "1e", "--1", "1 2"}) {
        CAPTURE(text);
        CHECK(isDamagedElement("<real>" + std::string(text) + "</real>"));
    }
}

TEST_CASE("dates are of the one form, and of days that exist")
{
    CHECK(readElement("<date>1970-01-01T00:00:00Z</date>").value() == PropertyList(Date{-978307200}));
    CHECK(readElement("<date>4001-01-01T00:00:00Z</date>").value() == PropertyList(Date{63113904000}));
    CHECK(readElement("<date>2024-02-29T23:59:59Z</date>").value() == PropertyList(Date{730943999}));
    for (const char* text :
         {"", "2001-01-01", "2001-01-01T00:00:00", "2001-01-01T00:00:00+0100", "2001-13-01T00:00:00Z",
          "2001-00-01T00:00:00Z", "2001-02-29T00:00:00Z", "2001-01-00T00:00:00Z", "2001-01-01T24:00:00Z",
          "2001-01-01T00:60:00Z", "2001-01-01T00:00:61Z", "2001-1-1T0:0:0Z", "20x1-01-01T00:00:00Z"}) {
        CAPTURE(text);
        CHECK(isDamagedElement("<date>" + std::string(text) + "</date>"));
    }
}

TEST_CASE("data is whole base 64")
{
    CHECK(readElement("<data>YQ==</data>").value() == PropertyList(Data{'a'}));
    CHECK(readElement("<data>Y W J\tj</data>").value() == PropertyList(Data{'a', 'b', 'c'}));
    for (const char* text : {"Y", "YQ", "YQ=", "YQ===", "=", "YQ==YQ==", "Y*==", "YWJj="}) {
        CAPTURE(text);
        CHECK(isDamagedElement("<data>" + std::string(text) + "</data>"));
    }
}

TEST_CASE("strings keep their space, and hold the five entities and any character by number")
{
    CHECK(readElement("<string> a\n b </string>").value() == PropertyList(" a\n b "));
    CHECK(readElement("<string>&lt;&amp;&gt;&quot;&apos;</string>").value() == PropertyList("<&>\"'"));
    CHECK(readElement("<string>&#233;&#xE9;&#x1F600;</string>").value() == PropertyList("éé😀"));
    CHECK(readElement("<string>&amp;lt;</string>").value() == PropertyList("&lt;"));
    for (const char* text : {"&", "&;", "&amp", "&nbsp;", "&ampx;", "&#0;", "&#x0;", "&#xD800;", "&#x110000;", "&#;",
                             "&#x;", "&#-1;", "&#xFFFFFFFFFF;", "&#12a;"}) {
        CAPTURE(text);
        CHECK(isDamagedElement("<string>" + std::string(text) + "</string>"));
    }
}

TEST_CASE("character data sections are taken as they are and comments are left out")
{
    CHECK(readElement("<string>a<![CDATA[<&]] >]]>b<!-- <c> -->d</string>").value() == PropertyList("a<&]] >bd"));
    CHECK(readElement("<!-- a --><array><!-- b --><true/><!-- c --></array><!-- d -->").value()
          == PropertyList(Array{true}));
    CHECK(readElement("<dict><!-- a --><key>k</key><!-- b --><true/></dict>").value()
          == PropertyList(Dictionary{{"k", true}}));
    CHECK(isDamagedElement("<string>a<![CDATA[b</string>"));
    CHECK(isDamagedElement("<string>a<!-- b</string>"));
}

TEST_CASE("a prolog, a byte-order mark and space are skipped")
{
    CHECK(read("<plist><true/></plist>").value() == PropertyList(true));
    CHECK(read("\xEF\xBB\xBF \n<?xml version='1.0'?><!-- c --><!DOCTYPE plist><?p i?><plist><true/></plist>\n ").value()
          == PropertyList(true));
    CHECK(read("<!DOCTYPE plist><plist version=\"1.0\"><true/></plist>").value() == PropertyList(true));
}

TEST_CASE("a document type that declares entities is damage")
{
    CHECK(isDamaged("<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aa\"><!ENTITY b \"&a;&a;\">]>"
                    "<plist><string>&b;</string></plist>"));
    CHECK(isDamaged("<!DOCTYPE plist SYSTEM \"file:///etc/passwd\" []><plist><true/></plist>"));
}

TEST_CASE("elements that don't fit together are damage")
{
    for (const char* element : {"",
                                "<dict>",
                                "</dict>",
                                "<array><true/>",
                                "<array></dict>",
                                "<dict></array>",
                                "<true/><true/>",
                                "text",
                                "<true/>text",
                                "<array>text</array>",
                                "<dict>text</dict>",
                                "<true>yes</true>",
                                "<false>0</false>",
                                "<unknown/>",
                                "<dict><true/></dict>",
                                "<dict><key>a</key></dict>",
                                "<dict><key>a</key><key>b</key></dict>",
                                "<dict><key>a</key><true/><true/></dict>",
                                "<array><key>a</key></array>",
                                "<key>a</key>",
                                "<dict><string>a</string><true/></dict>",
                                "<string><string>a</string></string>",
                                "<string>a</integer>",
                                "<string>a",
                                "<string",
                                "<",
                                "<>",
                                "</>",
                                "< true/>",
                                "<plist><true/></plist>",
                                "<true/",
                                "<tr<ue/>",
                                "<dict><key>a<true/></key></dict>",
                                "</string/>",
                                "<!ELEMENT a>",
                                "<![CDATA[a]]>"}) {
        CAPTURE(element);
        CHECK(isDamagedElement(element));
    }
    for (const char* document : {"<?xml version=\"1.0\"?>",
                                 "<?xml",
                                 "<!--",
                                 "<!-- a",
                                 "<!DOCTYPE",
                                 "<!DOCTYPE plist>",
                                 "<plist>",
                                 "<plist/>",
                                 "<plist></plist>",
                                 "<plist><true/>",
                                 "<plist><true/></plist>x",
                                 "<plist><true/></plist><plist><true/></plist>",
                                 "<?xml?><?x",
                                 "<plist><true/></plist><?x",
                                 "<dict/><dict/>",
                                 "<true/>x",
                                 "<dict></plist>",
                                 "<true/></plist>",
                                 "<key>a</key>",
                                 "<?xml version=\"1.0\"?></dict>"}) {
        CAPTURE(document);
        CHECK(isDamaged(document));
    }
}

TEST_CASE("the root may stand alone, without a plist element around it")
{
    CHECK(read("<?xml version=\"1.0\"?><dict/>").value() == PropertyList(Dictionary()));
    CHECK(read(" <dict><key>a</key><true/></dict>\n").value() == PropertyList(Dictionary{{"a", true}}));
    CHECK(read("<array><true/></array>").value() == PropertyList(Array{true}));
    CHECK(read("<string>a</string><!-- c -->").value() == PropertyList("a"));
    CHECK(read("<integer>1</integer>").value() == PropertyList(1));
    CHECK(read("<real>1.5</real>").value() == PropertyList(1.5));
    CHECK(read("<date>2001-01-01T00:00:00Z</date>").value() == PropertyList(Date{0}));
    CHECK(read("<data>YQ==</data>").value() == PropertyList(Data{'a'}));
    CHECK(read("<true/>").value() == PropertyList(true));
    CHECK(read("<false/>").value() == PropertyList(false));
    // Data in the old style.
    CHECK(read("<da7a>").value() == PropertyList(Data{0xDA, 0x7A}));
}

TEST_CASE("a dictionary of CF$UID and a number is a UID")
{
    CHECK(readElement("<dict><key>CF$UID</key><integer>7</integer></dict>").value() == PropertyList(UID{7}));
    CHECK(readElement("<array><dict><key>CF$UID</key><integer>18446744073709551615</integer></dict></array>").value()
          == PropertyList(Array{UID{UINT64_MAX}}));
    CHECK(readElement("<dict><key>CF$UID</key><integer>-1</integer></dict>").value()
          == PropertyList(Dictionary{{"CF$UID", -1}}));
    CHECK(readElement("<dict><key>CF$UID</key><string>7</string></dict>").value()
          == PropertyList(Dictionary{{"CF$UID", "7"}}));
    CHECK(readElement("<dict><key>CF$UID</key><integer>7</integer><key>b</key><true/></dict>").value()
          == PropertyList(Dictionary{{"CF$UID", 7}, {"b", true}}));
}

namespace {

// In UTF-16, the characters of a text in UTF-8.
std::string utf16(std::string_view text, bool isBigEndian)
{
    std::string made;
    const auto append = [&](char32_t unit) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit);
        made += isBigEndian ? high : low;
        made += isBigEndian ? low : high;
    };
    while (!text.empty()) {
        const char32_t character = platform::takeCharacter(text);
        if (character >= 0x10000) {
            append(0xD800 + ((character - 0x10000) >> 10));
            append(0xDC00 + ((character - 0x10000) & 0x3FF));
        } else {
            append(character);
        }
    }
    return made;
}

} // namespace

TEST_CASE("XML in UTF-16 of either order is read, with a byte-order mark or without")
{
    const std::string document =
        "<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><array><string>é € 😀</string></array></plist>";
    for (const bool isBigEndian : {true, false}) {
        CAPTURE(isBigEndian);
        const std::string mark = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
        CHECK(read(mark + utf16(document, isBigEndian)).value() == PropertyList(Array{"é € 😀"}));
        CHECK(read(utf16(document, isBigEndian)).value() == PropertyList(Array{"é € 😀"}));
        CHECK(isDamaged(mark + utf16(document, isBigEndian) + "x"));
        CHECK(isDamaged(mark + utf16(document, !isBigEndian)));
        CHECK(read(mark + utf16("{ a = é; }", isBigEndian)).has_value() == false);
        CHECK(read(mark + utf16("{ a = \"é\"; }", isBigEndian)).value() == PropertyList(Dictionary{{"a", "é"}}));
    }
}

TEST_CASE("half of a surrogate pair in UTF-16 is damage")
{
    const auto document = [](std::string_view units) {
        return utf16("<string>", true) + std::string(units) + utf16("</string>", true);
    };
    CHECK(read(document("\xD8\x3D\xDE\x00"s)).value() == PropertyList("😀"));
    CHECK(read(document("\xD8\x00\xDC\x00"s)).value() == PropertyList("\U00010000"));
    CHECK(read(document("\xDB\xFF\xDF\xFF"s)).value() == PropertyList("\U0010FFFF"));
    CHECK(isDamaged(document("\xD8\x3D"s)));
    CHECK(isDamaged(document("\xDE\x00"s)));
    CHECK(isDamaged(document("\xDE\x00\xD8\x3D"s)));
    CHECK(isDamaged(document("\xD8\x3D\xD8\x3D"s)));
    CHECK(isDamaged(document("\0\0"s)));
    CHECK(isDamaged(utf16("<string>", true) + "\xD8\x3D"));
    CHECK(isDamaged("\xFE\xFF\xD8\x3D"));
}

TEST_CASE("XML in ISO-8859-1 is read when its declaration says so")
{
    const auto document = [](std::string_view encoding, std::string_view text) {
        return "<?xml version='1.0' encoding=" + std::string(encoding) + "?><string>" + std::string(text) + "</string>";
    };
    CHECK(read(document("\"ISO-8859-1\"", "caf\xE9 \xA3")).value() == PropertyList("café £"));
    CHECK(read(document("'iso-8859-1'", "\xFF\x80")).value() == PropertyList("ÿ\u0080"));
    CHECK(read(document("\"UTF-8\"", "café")).value() == PropertyList("café"));
    CHECK(read(document("\"utf-8\"", "café")).value() == PropertyList("café"));
    CHECK(read(document("\"US-ASCII\"", "a")).value() == PropertyList("a"));
    CHECK(read("\xEF\xBB\xBF" + document("\"ISO-8859-1\"", "é")).value() == PropertyList("é"));
    CHECK(isDamaged(document("\"UTF-8\"", "caf\xE9")));
    CHECK(isDamaged(document("\"UTF-16\"", "a")));
    CHECK(isDamaged(document("\"windows-1252\"", "a")));
    CHECK(isDamaged(document("\"ISO-8859-1\"", "a\0b"s)));
}

TEST_CASE("text that is not UTF-8 or has a NUL is damage")
{
    CHECK(isDamagedElement("<string>\xFF</string>"));
    CHECK(isDamagedElement("<string>a\0b</string>"s));
    CHECK(isDamaged("\xFF\xFE<\0?\0x\0"s));
}

TEST_CASE("a key given twice in XML has its last value")
{
    CHECK(readElement("<dict><key>k</key><true/><key>k</key><string>x</string></dict>").value()
          == PropertyList(Dictionary{{"k", "x"}}));
}
