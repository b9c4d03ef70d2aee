#include "tests/coding/Samples.h"

#include "tests/support/ChildProcess.h"

#include <doctest/doctest.h>
#include <fstream>
#include <iterator>
#include <unistd.h>
#include <utility>

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;

namespace {

constexpr const char* interpreter = "/usr/bin/python3";

} // namespace

PropertyList everyType()
{
    return Dictionary{
        {"yes", true},
        {"no", false},
        {"small", 5},
        {"byte", 255},
        {"word", 65535},
        {"long", std::int64_t{4294967295}},
        {"largest", INT64_MAX},
        {"unsigned", std::uint64_t{1} << 63},
        {"largest unsigned", UINT64_MAX},
        {"negative", -1},
        {"smallest", INT64_MIN},
        {"real", 0.1},
        {"date", Date{684000000}},
        {"text", "plain text of more than fifteen characters"},
        {"", "empty key"},
        {"empty", ""},
        {"accents", "é € 😀"},
        {"ключ", "non-ASCII key"},
        {"data", Data{0, 1, 2, 253, 254, 255}},
        {"no data", Data()},
        {"array", Array{1, "two", Array{3.0}, Dictionary()}},
        {"no elements", Array()},
        {"dictionary", Dictionary{{"inner", Dictionary{{"innermost", true}}}}},
        {"many", Array{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}},
    };
}

PropertyList nested(int depth, PropertyList innermost)
{
    PropertyList value = std::move(innermost);
    for (int i = 0; i < depth; ++i) {
        Array array;
        array.push_back(std::move(value));
        value = PropertyList(std::move(array));
    }
    return value;
}

std::string xml(std::string_view element)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n"
        + std::string(element) + "\n</plist>\n";
}

Data binary(const std::vector<std::string>& objects, std::uint8_t root)
{
    Data bytes{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    Data offsets;
    for (const std::string& object : objects) {
        for (const int shift : {24, 16, 8, 0})
            offsets.push_back(static_cast<std::uint8_t>(bytes.size() >> shift));
        bytes.insert(bytes.end(), object.begin(), object.end());
    }
    const auto table = static_cast<std::uint32_t>(bytes.size());
    bytes.insert(bytes.end(), offsets.begin(), offsets.end());
    const Data trailer{0, 0, 0, 0, 0, 0, 4, 1,    0, 0, 0, 0, 0, 0, 0, static_cast<std::uint8_t>(objects.size()),
                       0, 0, 0, 0, 0, 0, 0, root, 0, 0, 0, 0};
    bytes.insert(bytes.end(), trailer.begin(), trailer.end());
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::uint8_t>(table >> shift));
    return bytes;
}

Data contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool hasPython()
{
    if (::access(interpreter, X_OK) == 0)
        return true;
    MESSAGE("SKIPPED: there is no /usr/bin/python3");
    return false;
}

std::string python(const std::string& script, const std::vector<std::string>& files)
{
    ChildProcess::Arguments arguments{interpreter, "-c", script};
    arguments.insert(arguments.end(), files.begin(), files.end());
    ChildProcess child(arguments);
    child.closeInput();
    std::string output = child.readAll();
    REQUIRE(child.wait() == 0);
    return output;
}
