#include "tests/macos-lists/Sources.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <set>

namespace {

using Names = std::vector<std::string>;

bool isAmong(const Names& names, const std::string& name)
{
    return std::ranges::find(names, name) != names.end();
}

// The classes that a header of the platform declares at the outermost level.
Names classesOf(const std::string& header)
{
    Names classes;
    for (const auto& match : Sources::matches(Sources::read(header), R"(^class (\w+)\b[^;\n]*\{?$)"))
        classes.push_back(match[0]);
    return classes;
}

// "Class::operation" of those classes, in the order in which the file defines them.
Names definedOperations(const std::string& source, const Names& classes)
{
    Names operations;
    for (const auto& match : Sources::matches(source, R"(^(?![\s#/@}-])[^\n;=]*?\b(\w+)::(~?\w+)\()")) {
        if (isAmong(classes, match[0]))
            operations.push_back(match[0] + "::" + match[1]);
    }
    return operations;
}

// The free functions that a header declares in the namespace of the platform, and the operations of its classes that
// somebody has to define: those of a class with virtual operations are a subclass's.
Names declaredFunctions(const std::string& header)
{
    Names functions;
    for (const auto& match : Sources::matches(Sources::read(header),
                                              R"-(^(?![\s#/}])(?!using|template|inline|constexpr))-"
                                              R"([\w:<>,&*\s]*?\b(\w+)\([^;{]*\);)"))
        functions.push_back(match[0]);
    for (const auto& match : Sources::matches(Sources::read(header), R"(^    static [^;={]*?\b(\w+)\([^;{]*\);)"))
        functions.push_back(match[0]);
    return functions;
}

bool defines(const std::string& source, const std::string& function)
{
    return !Sources::matches(source, "^(?![\\s#/@}])[^\\n;=]*\\b" + function + "\\(").empty();
}

std::string joined(const Names& names)
{
    std::string text;
    for (const auto& name : names)
        text.append(name).append("\n");
    return text;
}

} // namespace

TEST_CASE("Each control has the same operations in the same order on macOS as on Linux")
{
    int compared = 0;
    for (const auto& header : Sources::files("platform/ui", ".h")) {
        const auto name = Sources::nameOf(header);
        const auto classes = classesOf(header);
        const auto onLinux = definedOperations(Sources::read("platform/linux/ui/" + name + ".cpp"), classes);
        const auto onMac = definedOperations(Sources::read("platform/macos/ui/" + name + ".mm"), classes);
        INFO(header);
        CHECK(joined(onMac) == joined(onLinux));
        compared += static_cast<int>(onLinux.size());
    }
    CHECK(compared > 100);
}

TEST_CASE("Each function of the platform is defined on macOS")
{
    // Where a header's functions are, when not in the file of its name.
    const std::vector<std::pair<std::string, std::string>> elsewhere{{"Error", "ErrorDescription"}};
    int found = 0;
    for (const auto& folder : {"platform", "platform/ui"}) {
        for (const auto& header : Sources::files(folder, ".h")) {
            const auto name = Sources::nameOf(header);
            std::string source = Sources::read(std::string("platform/") + name + ".cpp")
                + Sources::read("platform/macos/system/" + name + ".mm")
                + Sources::read("platform/macos/ui/" + name + ".mm");
            for (const auto& [key, file] : elsewhere)
                if (key == name)
                    source += Sources::read("platform/macos/system/" + file + ".mm");
            // Values and formats are plain C++, some of it beside the file of the name.
            if (name == "Format")
                source += Sources::read("platform/Description.cpp");
            for (const auto& function : declaredFunctions(header)) {
                INFO(header << ": " << function);
                CHECK(defines(source, function));
                ++found;
            }
        }
    }
    CHECK(found > 50);
}

TEST_CASE("Nothing on macOS is left over from an operation that is gone")
{
    std::set<std::string> headers;
    for (const auto& folder : {"platform", "platform/ui"})
        for (const auto& header : Sources::files(folder, ".h"))
            headers.insert(header);
    int included = 0;
    for (const auto& folder : {"platform/macos/system", "platform/macos/ui", "platform/macos/interface"}) {
        for (const auto& extension : {".mm", ".cpp", ".h"}) {
            for (const auto& path : Sources::files(folder, extension)) {
                for (const auto& match : Sources::matches(Sources::read(path), R"(^#include "([^"]+)\")")) {
                    INFO(path);
                    CHECK_MESSAGE(!Sources::read(match[0]).empty(), match[0]);
                    included += static_cast<int>(headers.contains(match[0]));
                }
            }
        }
    }
    CHECK(included > 30);
}
