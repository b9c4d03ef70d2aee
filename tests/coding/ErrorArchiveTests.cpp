#include "platform/ErrorArchive.h"
#include "platform/linux/system/errors/URLReference.h"
#include "tests/coding/Samples.h"
#include "tests/support/TemporaryDirectory.h"

#include <cmath>
#include <doctest/doctest.h>
#include <fstream>
#include <iterator>
#include <memory>

using platform::archivedError;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Error;
using platform::PropertyList;
using platform::unarchivedError;

namespace {

Error sampleError()
{
    const auto innermost = std::make_shared<const Error>(Error{platform::POSIXErrorDomain, 2, {}, nullptr});
    const auto inner =
        std::make_shared<const Error>(Error{"com.zerkolin.authorization", 6, {{"rights", Array{"a", "b"}}}, innermost});
    return {"com.zerkolin.messager",
            -3,
            {{"message", 26},
             {"yes", true},
             {"real", 1.5},
             {"date", Date{0.25}},
             {"data", Data{1, 2, 3}},
             {"text", "é 😀"},
             {"empty", ""},
             {"nested", Dictionary{{"array", Array{Array{1}, Dictionary()}}}}},
            inner};
}

Error chain(int length)
{
    Error error{"domain", 0, {}, nullptr};
    for (int i = 1; i < length; ++i)
        error = {"domain", i, {}, std::make_shared<const Error>(error)};
    return error;
}

int lengthOfChain(const Error& error)
{
    int length = 0;
    for (const Error* link = &error; link; link = link->underlying.get())
        ++length;
    return length;
}

// An archive that python builds: `objects` behind "$null", the class descriptions by `cls(name)` appended to them.
platform::Result<Error> readArchive(const std::string& script, bool secure)
{
    const TemporaryDirectory folder;
    const std::string path = folder.file("archive");
    python(R"(
import plistlib, sys, datetime
U = plistlib.UID
objects = ['$null']
archive = {'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': U(1)}, '$objects': objects}
classes = {}
def cls(name, *ancestors):
    if name not in classes:
        classes[name] = {'$classname': name, '$classes': [name, *ancestors, 'NSObject']}
        objects.append(classes[name])
    return U(next(i for i, o in enumerate(objects) if o is classes[name]))
def add(object):
    objects.append(object)
    return U(len(objects) - 1)
def error(domain='d', code=1, info=U(0)):
    o = {'NSCode': code}
    r = add(o)
    o['NSDomain'] = add(domain)
    o['NSUserInfo'] = info
    o['$class'] = cls('NSError')
    return r
def dictionary(pairs, name='NSDictionary'):
    return add({'NS.keys': [add(k) for k in pairs], 'NS.objects': list(pairs.values()), '$class': cls(name)})
)" + script + R"(
with open(sys.argv[1], 'wb') as file:
    plistlib.dump(archive, file, fmt=plistlib.FMT_BINARY)
)",
           {path});
    std::ifstream file(path, std::ios::binary);
    return unarchivedError(Data{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()}, secure);
}

bool isRefused(const platform::Result<Error>& result)
{
    return !result && result.error().domain == platform::CocoaErrorDomain;
}

// Refused whether classes are checked or not.
bool isDamagedArchive(const std::string& script)
{
    return isRefused(readArchive(script, true)) && isRefused(readArchive(script, false));
}

} // namespace

TEST_CASE("an error comes back from its archive with its user info and its chain")
{
    for (const bool secure : {true, false}) {
        CHECK(unarchivedError(archivedError(sampleError()), secure).value() == sampleError());
        CHECK(unarchivedError(archivedError(Error()), secure).value() == Error());
    }
}

TEST_CASE("a code of any size comes back")
{
    for (const std::int64_t code : {std::int64_t{0}, std::int64_t{-1}, INT64_MAX, INT64_MIN, std::int64_t{-60006}})
        CHECK(unarchivedError(archivedError({"domain", code, {}, nullptr}), true).value().code == code);
}

TEST_CASE("an archive is laid out as the platform's keyed archiver does it")
{
    if (!hasPython())
        return;
    const TemporaryDirectory folder;
    const Data bytes = archivedError({"domain",
                                      7,
                                      {{"path", "/a"}, {"date", Date{2}}},
                                      std::make_shared<const Error>(Error{"inner", 8, {}, nullptr})});
    const std::string path = folder.write("archive", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    python(R"(
import plistlib, sys
a = plistlib.load(open(sys.argv[1], 'rb'))
assert a['$archiver'] == 'NSKeyedArchiver' and a['$version'] == 100000 and a['$top'] == {'root': plistlib.UID(1)}
o = a['$objects']
def at(uid):
    assert isinstance(uid, plistlib.UID)
    return o[uid.data]
def class_of(x):
    d = at(x['$class'])
    assert d['$classes'] == [d['$classname'], 'NSObject'], d
    return d['$classname']
def info_of(error):
    info = at(error['NSUserInfo'])
    assert class_of(info) == 'NSDictionary'
    return dict(zip(map(at, info['NS.keys']), map(at, info['NS.objects'])))
assert o[0] == '$null'
root = o[1]
assert class_of(root) == 'NSError' and root['NSCode'] == 7 and at(root['NSDomain']) == 'domain'
info = info_of(root)
assert list(info) == ['path', 'date', 'NSUnderlyingError'] and info['path'] == '/a'
assert class_of(info['date']) == 'NSDate' and info['date']['NS.time'] == 2.0
inner = info['NSUnderlyingError']
assert class_of(inner) == 'NSError' and inner['NSCode'] == 8 and at(inner['NSDomain']) == 'inner'
assert info_of(inner) == {}
assert len([x for x in o if isinstance(x, dict) and x.get('$classname') == 'NSError']) == 1
)",
           {path});
}

TEST_CASE("text that no property list can hold is archived with marks in its place")
{
    using namespace std::string_literals;
    const Error error{"a\xFF"
                      "b",
                      1,
                      {{"k\xC3", "x\0y"s}},
                      nullptr};
    CHECK(unarchivedError(archivedError(error), true).value()
          == Error{"a\uFFFDb", 1, {{"k\uFFFD", "x\uFFFDy"}}, nullptr});
}

TEST_CASE("what is nested too deeply for a reader is left out of an archive, and the rest arrives")
{
    const auto deep = unarchivedError(archivedError({"d", 1, {{"deep", nested(100)}, {"flat", 2}}, nullptr}), true);
    REQUIRE(deep);
    CHECK(deep->userInfo.integerForKey("flat") == 2);
    CHECK(*deep->userInfo.find("deep") == nested(63));
    const Error deepest{"d", 1, {{"deep", nested(63)}}, nullptr};
    CHECK(unarchivedError(archivedError(deepest), true).value() == deepest);
}

TEST_CASE("a chain of a thousand errors comes back, and of a longer one the first thousand")
{
    for (const int length : {20, 64, 65, 999, 1000}) {
        CAPTURE(length);
        CHECK(unarchivedError(archivedError(chain(length)), true).value() == chain(length));
    }
    const auto longChain = unarchivedError(archivedError(chain(1001)), true);
    REQUIRE(longChain);
    CHECK(longChain->code == 1000);
    CHECK(lengthOfChain(*longChain) == 1000);
    CHECK(lengthOfChain(unarchivedError(archivedError(chain(5000)), true).value()) == 1000);
}

TEST_CASE("each error of a chain may hold values nested as deeply as the first")
{
    const auto inner = std::make_shared<const Error>(Error{"inner", 2, {{"deep", nested(63)}}, nullptr});
    const Error error{"outer", 1, {{"deep", nested(63)}}, inner};
    CHECK(unarchivedError(archivedError(error), true).value() == error);
}

TEST_CASE("several errors under one come back in their order, each with its own chain")
{
    const auto made = [](const char* domain, std::shared_ptr<const Error> underlying = nullptr) {
        return std::make_shared<const Error>(Error{domain, 1, {{"k", "v"}}, std::move(underlying)});
    };
    const auto two = std::make_shared<const Error>(Error{"two", 2, {}, made("below two"), {made("x"), made("y")}});
    const Error error{"outer", 3, {{"a", 1}}, made("underlying", made("below")), {made("one"), two, made("three")}};
    const auto readBack = unarchivedError(archivedError(error), true);
    REQUIRE(readBack);
    REQUIRE(readBack->multipleUnderlying.size() == 3);
    CHECK(readBack->multipleUnderlying[0]->domain == "one");
    CHECK(readBack->multipleUnderlying[1]->multipleUnderlying[1]->domain == "y");
    CHECK(readBack->multipleUnderlying[2]->domain == "three");
    CHECK(*readBack == error);
    CHECK_FALSE(readBack->userInfo.contains("NSMultipleUnderlyingErrorsKey"));

    Error many{"outer", 0, {}, nullptr};
    for (int i = 0; i < 1500; ++i)
        many.multipleUnderlying.push_back(made("each"));
    CHECK(unarchivedError(archivedError(many), true).value().multipleUnderlying.size() == 999);
}

TEST_CASE("a date of any eight bytes and an integer of any size come back in an error")
{
    const Error error{"d",
                      1,
                      {{"nan", Date{std::nan("")}}, {"infinite", Date{-INFINITY}}, {"large", UINT64_MAX}, {"flat", 2}},
                      nullptr};
    CHECK(unarchivedError(archivedError(error), true).value() == error);
}

TEST_CASE("a UID, which an archive means something else by, is left out of one")
{
    const Error error{"d", 1, {{"uid", platform::UID{3}}, {"list", Array{platform::UID{1}, 2}}}, nullptr};
    CHECK(unarchivedError(archivedError(error), true).value() == Error{"d", 1, {{"list", Array{2}}}, nullptr});
}

TEST_CASE("an error without user info is read, whether it is null or missing or empty")
{
    if (!hasPython())
        return;
    const Error plain{"d", 1, {}, nullptr};
    CHECK(readArchive("error()", true).value() == plain);
    CHECK(readArchive("error(); del objects[1]['NSUserInfo']", true).value() == plain);
    CHECK(readArchive("error(); objects[1]['NSUserInfo'] = dictionary({})", true).value() == plain);
}

TEST_CASE("user info of every kind an error may hold is read, mutable ones too")
{
    if (!hasPython())
        return;
    const std::string script = R"(
error()
objects[1]['NSUserInfo'] = dictionary({
    'string': add({'NS.string': 'x', '$class': cls('NSMutableString', 'NSString')}),
    'data': add({'NS.data': b'ab', '$class': cls('NSMutableData', 'NSData')}),
    'array': add({'NS.objects': [add(1), add(True), add(2.5)], '$class': cls('NSMutableArray', 'NSArray')}),
    'date': add({'NS.time': 4.5, '$class': cls('NSDate')}),
    'dictionary': dictionary({'k': add('v')}, 'NSMutableDictionary'),
    'plain data': add(b'c'),
    'nothing': U(0),
    'NSUnderlyingError': error('inner', -5),
}, 'NSMutableDictionary')
)";
    const Error expected{"d",
                         1,
                         {{"string", "x"},
                          {"data", Data{'a', 'b'}},
                          {"array", Array{1, true, 2.5}},
                          {"date", Date{4.5}},
                          {"dictionary", Dictionary{{"k", "v"}}},
                          {"plain data", Data{'c'}}},
                         std::make_shared<const Error>(Error{"inner", -5, {}, nullptr})};
    CHECK(readArchive(script, true).value() == expected);
    CHECK(readArchive(script, false).value() == expected);
}

TEST_CASE("a value of a class that is not known costs that value alone")
{
    if (!hasPython())
        return;
    for (const char* object :
         {"add({'$class': cls('NSTask')})", "add({'$class': cls('Evil')})", "add({'$class': cls('NSNull')})",
          "add({'NS.string': 'x', '$class': cls('Evil', 'NSString')})",
          "add({'x': U(1), 'y': [U(99)], '$class': cls('Evil')})",
          "add({'NS.uuidbytes': b'0123456789abcdef', '$class': cls('NSUUID')})",
          "add({'NS.relative': add(5), 'NS.base': U(0), '$class': cls('NSURL')})", "error('elsewhere')"}) {
        CAPTURE(object);
        const std::string script = "error(); objects[1]['NSUserInfo'] = dictionary({'a': " + std::string(object)
            + ", 'b': add('kept'), 'c': add({'NS.objects': [add(1), " + object
            + ", add(2)], '$class': cls('NSArray')}), 'd': dictionary({'x': " + object
            + ", 'y': add('kept too')}), 'NSUnderlyingError': error('inner')})";
        const Error expected{"d",
                             1,
                             {{"b", "kept"}, {"c", Array{1, 2}}, {"d", Dictionary{{"y", "kept too"}}}},
                             std::make_shared<const Error>(Error{"inner", 1, {}, nullptr})};
        for (const bool secure : {true, false})
            CHECK(readArchive(script, secure).value() == expected);
    }
    CHECK(readArchive("error(); objects[1]['NSUserInfo'] = dictionary({'a': add(1)}, 'Evil')", true).value()
          == Error{"d", 1, {}, nullptr});
}

TEST_CASE("a URL is its absolute string, with its base or without, and a set is an array")
{
    if (!hasPython())
        return;
    const std::string script = R"(
error()
def url(relative, base=U(0)):
    return add({'NS.base': base, 'NS.relative': add(relative), '$class': cls('NSURL')})
objects[1]['NSUserInfo'] = dictionary({
    'NSURL': url('file:///Library/a%20b'),
    'based': url('../c?d#e', url('https://host/a/b/', U(0))),
    'twice': url('x', url('y/', url('file:///z'))),
    'bare': url('a/b'),
    'set': add({'NS.objects': [add('a'), url('x:y')], '$class': cls('NSSet')}),
    'mutable set': add({'NS.objects': [], '$class': cls('NSMutableSet', 'NSSet')}),
}))";
    CHECK(readArchive(script, true).value()
          == Error{"d",
                   1,
                   {{"NSURL", "file:///Library/a%20b"},
                    {"based", "https://host/a/c?d#e"},
                    {"twice", "file:///y/x"},
                    {"bare", "a/b"},
                    {"set", Array{"a", "x:y"}},
                    {"mutable set", Array()}},
                   nullptr});
}

TEST_CASE("references of URLs are resolved as RFC 3986 has it")
{
    const std::pair<const char*, const char*> examples[] = {
        {"g:h", "g:h"},
        {"g", "http://a/b/c/g"},
        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"},
        {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q#s"},
        {"g#s", "http://a/b/c/g#s"},
        {"g?y#s", "http://a/b/c/g?y#s"},
        {";x", "http://a/b/c/;x"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"./", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../g", "http://a/b/g"},
        {"../..", "http://a/"},
        {"../../g", "http://a/g"},
        {"../../../g", "http://a/g"},
        {"/./g", "http://a/g"},
        {"/../g", "http://a/g"},
        {"g.", "http://a/b/c/g."},
        {"..g", "http://a/b/c/..g"},
        {"./g/.", "http://a/b/c/g/"},
        {"g/./h", "http://a/b/c/g/h"},
        {"g/../h", "http://a/b/c/h"},
        {"g;x=1/../y", "http://a/b/c/y"},
        {"g?y/./x", "http://a/b/c/g?y/./x"},
    };
    for (const auto& [reference, absolute] : examples) {
        CAPTURE(reference);
        CHECK(platform::absoluteURL(reference, "http://a/b/c/d;p?q") == absolute);
    }
    CHECK(platform::absoluteURL("g", "http://a") == "http://a/g");
    CHECK(platform::absoluteURL("g", "no base") == "g");
    CHECK(platform::absoluteURL("a:b", "") == "a:b");
}

TEST_CASE("several errors under one are read from an archive, and what is no error among them is left out")
{
    if (!hasPython())
        return;
    const std::string script = "error(); objects[1]['NSUserInfo'] = dictionary({'NSMultipleUnderlyingErrorsKey': "
                               "add({'NS.objects': [error('a'), add('x'), error('b', 2)], '$class': cls('NSArray')})})";
    const auto inner = [](const char* domain, int code) {
        return std::make_shared<const Error>(Error{domain, code, {}, nullptr});
    };
    CHECK(readArchive(script, true).value() == Error{"d", 1, {}, nullptr, {inner("a", 1), inner("b", 2)}});
}

TEST_CASE("a pair whose key is no string is left out of a dictionary")
{
    if (!hasPython())
        return;
    CHECK(readArchive("error(); objects[1]['NSUserInfo'] = dictionary({5: add(1), 'b': add(2)})", true).value()
          == Error{"d", 1, {{"b", 2}}, nullptr});
}

TEST_CASE("a keyed archive in the XML format is read")
{
    const std::string archive = xml(R"(<dict>
<key>$version</key><integer>100000</integer><key>$archiver</key><string>NSKeyedArchiver</string>
<key>$top</key><dict><key>root</key><dict><key>CF$UID</key><integer>1</integer></dict></dict>
<key>$objects</key><array>
<string>$null</string>
<dict><key>NSCode</key><integer>-7</integer><key>NSDomain</key><dict><key>CF$UID</key><integer>2</integer></dict>
<key>NSUserInfo</key><dict><key>CF$UID</key><integer>4</integer></dict>
<key>$class</key><dict><key>CF$UID</key><integer>3</integer></dict></dict>
<string>domain</string>
<dict><key>$classname</key><string>NSError</string></dict>
<dict><key>NS.keys</key><array><dict><key>CF$UID</key><integer>2</integer></dict></array>
<key>NS.objects</key><array><dict><key>CF$UID</key><integer>5</integer></dict></array>
<key>$class</key><dict><key>CF$UID</key><integer>6</integer></dict></dict>
<true/>
<dict><key>$classname</key><string>NSDictionary</string></dict>
</array></dict>)");
    CHECK(unarchivedError(bytesOf(archive), true).value() == Error{"domain", -7, {{"domain", true}}, nullptr});
}

TEST_CASE("a root that is no error is refused")
{
    if (!hasPython())
        return;
    CHECK(isDamagedArchive("add('text')"));
    CHECK(isDamagedArchive("dictionary({}); archive['$top']['root'] = U(len(objects) - 2)"));
    CHECK(isDamagedArchive("add({'$class': cls('NSTask')})"));
    CHECK(isDamagedArchive("error(); archive['$top']['root'] = U(0)"));
    CHECK(isDamagedArchive("error(); archive['$top']['root'] = U(99)"));
    CHECK(isDamagedArchive("error(); archive['$top']['root'] = 1"));
    CHECK(isDamagedArchive("error(); archive['$top'] = {}"));
}

TEST_CASE("an archive without its parts is refused")
{
    if (!hasPython())
        return;
    for (const char* change : {"del archive['$archiver']",
                               "archive['$archiver'] = 'NSArchiver'",
                               "del archive['$version']",
                               "archive['$version'] = 1",
                               "del archive['$top']",
                               "archive['$top'] = U(1)",
                               "del archive['$objects']",
                               "archive['$objects'] = {}",
                               "archive['$objects'] = []",
                               "del objects[1]['NSDomain']",
                               "objects[1]['NSDomain'] = 'd'",
                               "objects[1]['NSDomain'] = U(0)",
                               "objects[1]['NSDomain'] = U(99)",
                               "objects[1]['NSDomain'] = add(5)",
                               "del objects[1]['NSCode']",
                               "objects[1]['NSCode'] = 'x'",
                               "objects[1]['NSCode'] = 1.5",
                               "objects[1]['NSCode'] = U(2)",
                               "del objects[1]['$class']",
                               "objects[1]['$class'] = U(0)",
                               "objects[1]['$class'] = U(99)",
                               "objects[1]['$class'] = U(1)",
                               "objects[1]['NSUserInfo'] = add('x')",
                               "objects[1]['NSUserInfo'] = add({})",
                               "objects[1]['NSUserInfo'] = error()",
                               "objects[1]['NSUserInfo'] = U(99)"}) {
        CAPTURE(change);
        CHECK(isDamagedArchive("error(); " + std::string(change)));
    }
}

TEST_CASE("a damaged dictionary, array or value in an archive is refused")
{
    if (!hasPython())
        return;
    for (const char* object :
         {"{'NS.keys': [], '$class': cls('NSDictionary')}", "{'NS.objects': [], '$class': cls('NSDictionary')}",
          "{'NS.keys': [add('k')], 'NS.objects': [], '$class': cls('NSDictionary')}",
          "{'NS.keys': ['k'], 'NS.objects': ['v'], '$class': cls('NSDictionary')}", "{'$class': cls('NSArray')}",
          "{'NS.objects': [1], '$class': cls('NSArray')}", "{'NS.objects': 'x', '$class': cls('NSArray')}",
          "{'$class': cls('NSMutableString')}", "{'NS.string': 1, '$class': cls('NSMutableString')}",
          "{'NS.data': 'x', '$class': cls('NSMutableData')}", "{'NS.time': 'x', '$class': cls('NSDate')}",
          "{'NS.time': 1, '$class': U(0)}", "{}", "[1, 2]", "U(1)"}) {
        CAPTURE(object);
        CHECK(isDamagedArchive("error(); objects[1]['NSUserInfo'] = dictionary({'k': add(" + std::string(object)
                               + ")})"));
    }
}

TEST_CASE("an archive whose objects contain each other is refused")
{
    if (!hasPython())
        return;
    CHECK(isDamagedArchive("error(); objects[1]['NSUserInfo'] = dictionary({'NSUnderlyingError': U(1)})"));
    CHECK(isDamagedArchive("error(); objects[1]['NSUserInfo'] = dictionary({'NSMultipleUnderlyingErrorsKey': "
                           "add({'NS.objects': [U(1), U(1)], '$class': cls('NSArray')})})"));
    CHECK(isDamagedArchive("error(); a = {'$class': cls('NSURL'), 'NS.relative': add('x')}; r = add(a); "
                           "a['NS.base'] = r; objects[1]['NSUserInfo'] = dictionary({'k': r})"));
    CHECK(isDamagedArchive("error(); a = {'$class': cls('NSArray')}; r = add(a); a['NS.objects'] = [r]; "
                           "objects[1]['NSUserInfo'] = dictionary({'k': r})"));
    CHECK(isDamagedArchive("error(); objects[1]['NSUserInfo'] = dictionary({'k': U(2)}); "
                           "d = objects[1]['NSUserInfo'].data; objects[d]['NS.objects'] = [U(d)]"));
}

TEST_CASE("an archive nested more than 64 deep is refused and one below is read")
{
    if (!hasPython())
        return;
    const auto arrays = [](int count) {
        return "error(); r = add('x')\nfor i in range(" + std::to_string(count)
            + "): r = add({'NS.objects': [r], '$class': cls('NSArray')})\n"
              "objects[1]['NSUserInfo'] = dictionary({'k': r})";
    };
    CHECK(readArchive(arrays(60), true));
    CHECK(isDamagedArchive(arrays(65)));
    CHECK(isDamagedArchive(arrays(1000)));
}

TEST_CASE("an archive whose shared objects would unfold into a vast value is refused")
{
    if (!hasPython())
        return;
    CHECK(isDamagedArchive("error(); r = add('x')\nfor i in range(20): r = add({'NS.objects': [r] * 10, '$class': "
                           "cls('NSArray')})\nobjects[1]['NSUserInfo'] = dictionary({'k': r})"));
    CHECK(isDamagedArchive("error(); r = add('x' * 1000000)\nr = add({'NS.objects': [r] * 1000, '$class': "
                           "cls('NSArray')})\nobjects[1]['NSUserInfo'] = dictionary({'k': r})"));
}

TEST_CASE("bytes that are no archive are refused")
{
    for (const std::string_view text : {"", "x", "bplist00", "<plist><dict/></plist>", "{ a = b; }"}) {
        CHECK(isRefused(unarchivedError(bytesOf(text), true)));
        CHECK(isRefused(unarchivedError(bytesOf(text), false)));
    }
    CHECK(isRefused(unarchivedError(platform::binaryPropertyList(everyType()).value(), true)));
    CHECK(isRefused(unarchivedError(platform::binaryPropertyList(Array()).value(), false)));
}

TEST_CASE("any change of one byte of an archive is damage or an error")
{
    const Data sound = archivedError(sampleError());
    for (std::size_t i = 0; i < sound.size(); ++i) {
        for (const int change : {1, 2, 0x10, 0x80, 0xFF}) {
            Data changed = sound;
            changed[i] = static_cast<std::uint8_t>(changed[i] ^ change);
            for (const bool secure : {true, false}) {
                const auto error = unarchivedError(changed, secure);
                if (error)
                    CHECK(unarchivedError(archivedError(*error), true));
                else
                    CHECK(isRefused(error));
            }
        }
    }
}
