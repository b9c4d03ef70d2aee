#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/macos/interface/PlainTitle.h"
#include "tests/macos-lists/InterfaceFile.h"
#include "tests/macos-lists/Sources.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <functional>
#include <map>
#include <set>

using namespace platform::macos;

namespace {

void visit(const Element& element, const std::function<void(const Element&)>& visitor)
{
    visitor(element);
    for (const Element& child : element.children)
        visit(child, visitor);
}

void visitAll(const InterfaceDescription& description, const std::function<void(const Element&)>& visitor)
{
    visit(description.root, visitor);
    for (const Element& element : description.detached)
        visit(element, visitor);
}

std::map<std::string, const Element*> namedElements(const InterfaceDescription& description)
{
    std::map<std::string, const Element*> named;
    visitAll(description, [&](const Element& element) {
        if (*element.identifier)
            named.emplace(element.identifier, &element);
    });
    return named;
}

// What the portable rooms call each kind, and the widget that it is on Linux.
struct Kind {
    ElementKind kind;
    const char* outlet;
    const char* widget;
};

constexpr Kind kinds[] = {
    {ElementKind::Row, "View", "QWidget"},
    {ElementKind::Column, "View", "QWidget"},
    {ElementKind::StackRow, "View", "platform::ui::StackContainer"},
    {ElementKind::Stack, "View", "platform::ui::StackContainer"},
    {ElementKind::CheckBox, "CheckBox", "QCheckBox"},
    {ElementKind::Button, "Button", "QPushButton"},
    {ElementKind::PopUpButton, "PopUpButton", "QComboBox"},
    {ElementKind::Label, "TextField", "QLabel"},
    {ElementKind::Explanation, "TextField", "QLabel"},
    {ElementKind::TextField, "TextField", "platform::ui::LineEdit"},
    {ElementKind::Stepper, "Stepper", "platform::ui::StepperBox"},
    {ElementKind::TimePicker, "DatePicker", "QTimeEdit"},
    {ElementKind::RuleEditor, "RuleEditor", "platform::ui::RuleEditorBox"},
    {ElementKind::TextView, "TextView", "platform::ui::StyledTextView"},
    {ElementKind::TableView, "TableView", "platform::ui::DataTable"},
    {ElementKind::Spinner, "ProgressIndicator", "platform::ui::Spinner"},
};

const Kind& kindOf(const Element& element)
{
    const auto found = std::ranges::find(kinds, element.kind, &Kind::kind);
    REQUIRE(found != std::end(kinds));
    return *found;
}

// Kinds of widgets that hold others, or that only Linux has.
bool isForLinuxAlone(const std::string& identifier, const FileElement& element)
{
    static const std::set<std::string> kindsOfTheWindow{"QMainWindow", "QMenuBar", "QMenu", "action"};
    return kindsOfTheWindow.contains(element.kind) || identifier == "rowsOutOfSight";
}

std::string roomsText()
{
    std::string text;
    for (const auto& room : {"shell", "schedule", "diagnostics", "update"})
        for (const auto& path : Sources::filesBelow(room, ".cpp"))
            text += Sources::read(path);
    return text;
}

} // namespace

TEST_CASE("Every outlet that the rooms ask for is described, as the kind that they ask for")
{
    std::map<std::string, std::string> described;
    for (const auto& description : interfaceDescriptions())
        for (const auto& [identifier, element] : namedElements(description))
            described.emplace(identifier, kindOf(*element).outlet);
    const auto outlets = Sources::matches(roomsText(), R"-(outlet<(?:\w+::)*(\w+)>\("(\w+)"\))-");
    CHECK(outlets.size() > 25);
    for (const auto& outlet : outlets) {
        INFO(outlet[1]);
        REQUIRE(described.contains(outlet[1]));
        CHECK((outlet[0] == "View" || described[outlet[1]] == outlet[0]));
    }
}

TEST_CASE("Every interface that the rooms load is described")
{
    int loaded = 0;
    for (const auto& path : Sources::files("resources/linux", ".ui")) {
        INFO(path);
        CHECK(findInterfaceDescription(Sources::nameOf(path)));
        ++loaded;
    }
    CHECK(loaded == static_cast<int>(interfaceDescriptions().size()));
    CHECK(!findInterfaceDescription("NoSuchInterface"));
}

TEST_CASE("The windows have the same controls on macOS as on Linux")
{
    for (const auto& description : interfaceDescriptions()) {
        INFO(description.name);
        const auto file = InterfaceFile::read(description.name);
        const auto named = namedElements(description);
        for (const auto& [identifier, element] : file.elements) {
            INFO(identifier);
            CHECK((isForLinuxAlone(identifier, element) || named.contains(identifier)));
        }
        for (const auto& [identifier, element] : named) {
            INFO(identifier);
            REQUIRE(file.elements.contains(identifier));
            CHECK(file.elements.at(identifier).kind == kindOf(*element).widget);
        }
    }
}

TEST_CASE("The windows and their controls say the same on macOS as on Linux")
{
    int texts = 0;
    for (const auto& description : interfaceDescriptions()) {
        INFO(description.name);
        const auto file = InterfaceFile::read(description.name);
        if (*description.window.identifier) {
            CHECK(file.elements.contains(description.window.identifier));
            CHECK(file.windowTitle == description.window.title);
        }
        for (const auto& [identifier, element] : namedElements(description)) {
            INFO(identifier);
            const auto& other = file.elements.at(identifier);
            CHECK(other.title == element->title);
            CHECK(other.accessibleName == element->accessibleName);
            CHECK(other.items == std::vector<std::string>(element->items.begin(), element->items.end()));
            texts += static_cast<int>(!other.title.empty());
        }
    }
    CHECK(texts >= 20);
}

TEST_CASE("No identifier stands twice")
{
    std::set<std::string> seen;
    for (const auto& description : interfaceDescriptions()) {
        visitAll(description, [&](const Element& element) {
            if (*element.identifier)
                CHECK_MESSAGE(seen.insert(element.identifier).second, element.identifier);
        });
    }
}

TEST_CASE("Every control has a name for assistive tools")
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

TEST_CASE("Only what holds others has children, and a column is never empty")
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

TEST_CASE("A window has at most one button for Return")
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

TEST_CASE("A title loses the mark for a key that macOS has not")
{
    CHECK(plainTitle("&File") == "File");
    CHECK(plainTitle("Cu&t") == "Cut");
    CHECK(plainTitle("A && B") == "A & B");
    CHECK(plainTitle("適用(&A)") == "適用");
    CHECK(plainTitle("バックアップを自動作成(&B):") == "バックアップを自動作成:");
    CHECK(plainTitle("アップデートを確認(&C)…") == "アップデートを確認…");
    CHECK(plainTitle("(now)") == "(now)");
    CHECK(plainTitle("to") == "to");
    CHECK(plainTitle("") == "");
    CHECK(plainTitle("at the end &") == "at the end ");
}
