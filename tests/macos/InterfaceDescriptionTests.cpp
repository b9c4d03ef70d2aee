#include "platform/macos/interface/InterfaceDescription.h"
#include "tests/macos/Elements.h"

#include <doctest/doctest.h>
#include <set>
#include <string>

using namespace platform::macos;

TEST_CASE("no identifier stands twice")
{
    std::set<std::string> seen;
    for (const auto& description : interfaceDescriptions()) {
        visitAll(description, [&](const Element& element) {
            if (*element.identifier)
                CHECK_MESSAGE(seen.insert(element.identifier).second, element.identifier);
        });
    }
}

TEST_CASE("every control has a name for assistive tools")
{
    const std::set<ElementKind> needsNone{ElementKind::Row, ElementKind::Column, ElementKind::Stack,
                                          ElementKind::StackRow, ElementKind::Space};
    int named = 0;
    for (const auto& description : interfaceDescriptions()) {
        visitAll(description, [&](const Element& element) {
            if (needsNone.contains(element.kind))
                return;
            CHECK_MESSAGE((*element.title || *element.accessibleName), element.identifier);
            ++named;
        });
    }
    CHECK(named > 20);
}

TEST_CASE("only what holds others has children, and a column is never empty")
{
    for (const auto& description : interfaceDescriptions()) {
        visitAll(description, [](const Element& element) {
            const bool holds = element.kind == ElementKind::Row || element.kind == ElementKind::Column
                || element.kind == ElementKind::StackRow;
            CHECK_MESSAGE(element.children.empty() != holds, element.identifier);
            CHECK(element.spacing >= 0);
            CHECK(element.indentation >= 0);
        });
    }
}

TEST_CASE("a window has at most one button for Return")
{
    int windowsWithOne = 0;
    for (const auto& description : interfaceDescriptions()) {
        int count = 0;
        visitAll(description, [&](const Element& element) {
            count += static_cast<int>(element.isDefault);
            CHECK((!element.isDefault || element.kind == ElementKind::Button));
        });
        CHECK(count <= 1);
        windowsWithOne += count;
    }
    CHECK(windowsWithOne > 0);
}
