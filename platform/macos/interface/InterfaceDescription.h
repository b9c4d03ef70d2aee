#pragma once

#include <string_view>
#include <vector>

// What the windows are made of, as plain values: what is in a window can be read and tested on any system.
namespace platform::macos {

enum class ElementKind {
    Row,         // children beside each other on one baseline; a plain container
    Column,      // children below each other; a plain container
    StackRow,    // a row that is no plain container
    Stack,       // empty: its rows come and go
    Space,       // takes what a row has left
    CheckBox,    //
    Button,      //
    PopUpButton, // `items` are the titles
    Label,       // of one line
    Explanation, // a label that wraps at `width`
    TextField,   //
    Stepper,     // from 1 to 999
    TimePicker,  //
    RuleEditor,  //
    TextView,    // scrolls
    TableView,   // scrolls; `items` are the columns' identifiers, which are also their titles
    Spinner,     // not seen while it stands still
};

struct Element {
    ElementKind kind = ElementKind::Row;
    const char* identifier = "";
    const char* title = "";          // English, looked up when shown
    const char* accessibleName = ""; // likewise
    std::vector<const char*> items = {};
    std::vector<Element> children = {};
    double spacing = 8;     // between children
    double indentation = 0; // before children
    double width = 0;       // of a field or an explanation; at least this of others. 0: as the content needs
    double height = 0;      // at least
    bool isDefault = false; // the button that Return presses
    bool isCancel = false;  // the button that Escape presses
    bool isHidden = false;
    bool isSelectable = false; // the text of a label
    bool isText = false;       // a field's content is a text, not a number; it takes what a row has left
};

struct WindowDescription {
    const char* identifier = "";
    const char* title = "";
    bool isResizable = false;
};

struct InterfaceDescription {
    const char* name = "";
    WindowDescription window = {}; // without an identifier: a view for another window
    Element root = {};
    std::vector<Element> detached = {}; // views that stand in no other until they are put there
};

const std::vector<InterfaceDescription>& interfaceDescriptions();
// Null when there is none of this name.
const InterfaceDescription* findInterfaceDescription(std::string_view name);

} // namespace platform::macos
