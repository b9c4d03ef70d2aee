#pragma once

#include <map>
#include <string>
#include <vector>

// One widget or action of a Linux interface file, with the texts that a user meets.
struct FileElement {
    std::string kind; // the widget's class, or "action"
    std::string title;
    std::string accessibleName;
    std::string key; // of an action: "Ctrl+Q"
    std::vector<std::string> items;
};

struct InterfaceFile {
    std::string windowTitle;
    std::map<std::string, FileElement> elements; // by identifier
    std::vector<std::vector<std::string>> menus; // the actions' identifiers; "separator" between

    static InterfaceFile read(const std::string& name);
};
