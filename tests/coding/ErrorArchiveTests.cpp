#include "platform/ErrorArchive.h"
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
    CHECK(deep->userInfo.arrayForKey("deep") != nullptr);

    CHECK(unarchivedError(archivedError(chain(20)), true).value() == chain(20));
    const auto longChain = unarchivedError(archivedError(chain(100)), true);
    REQUIRE(longChain);
    CHECK(longChain->code == 99);
    CHECK(lengthOfChain(*longChain) > 20);
}

TEST_CASE("a date that is no number is left out of an archive")
{
    CHECK(unarchivedError(archivedError({"d", 1, {{"date", Date{std::nan("")}}, {"flat", 2}}, nullptr}), true).value()
          == Error{"d", 1, {{"flat", 2}}, nullptr});
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

TEST_CASE("an object of another class is refused when reading securely and left out otherwise")
{
    if (!hasPython())
        return;
    for (const char* name : {"NSURL", "NSTask", "Evil"}) {
        CAPTURE(name);
        const std::string script = "error(); objects[1]['NSUserInfo'] = dictionary({'a': add({'$class': cls('"
            + std::string(name) + "')}), 'b': add('kept')})";
        CHECK(isRefused(readArchive(script, true)));
        CHECK(readArchive(script, false).value() == Error{"d", 1, {{"b", "kept"}}, nullptr});
    }
    const std::string disguised = "error(); objects[1]['NSUserInfo'] = dictionary({'a': add({'NS.string': 'x', "
                                  "'$class': cls('Evil', 'NSString')})})";
    CHECK(isRefused(readArchive(disguised, true)));
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
                               "objects[1]['NSUserInfo'] = U(99)",
                               "objects[1].update({'k%d' % i: i for i in range(100)})"}) {
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
          "{'NS.keys': [add(1)], 'NS.objects': [U(0)], '$class': cls('NSDictionary')}",
          "{'NS.keys': ['k'], 'NS.objects': ['v'], '$class': cls('NSDictionary')}", "{'$class': cls('NSArray')}",
          "{'NS.objects': [1], '$class': cls('NSArray')}", "{'NS.objects': 'x', '$class': cls('NSArray')}",
          "{'$class': cls('NSMutableString')}", "{'NS.string': 1, '$class': cls('NSMutableString')}",
          "{'NS.data': 'x', '$class': cls('NSMutableData')}", "{'NS.time': 'x', '$class': cls('NSDate')}",
          "{'NS.time': float('nan'), '$class': cls('NSDate')}", "{'NS.time': 1, '$class': U(0)}", "{}", "[1, 2]",
          "U(1)"}) {
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
