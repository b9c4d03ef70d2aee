#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform::ui {

class Window;

// Asks for the place and the name of a file to write, and before an existing one is replaced.
class SavePanel {
public:
    struct Choice {
        std::string path;
        std::vector<std::string> tagNames; // those that the user entered
    };

    // The extensions that the name may have, without a dot; it gets the first one when the user enters none of them.
    void setAllowedFileTypes(std::vector<std::string> types) { _allowedFileTypes = std::move(types); }
    // The name proposed.
    void setNameFieldStringValue(std::string name) { _name = std::move(name); }

    // Attached to the window, which takes no input until it is answered. Returns at once; the completion runs on the
    // main thread after the panel has closed, without a choice when the user cancels. The panel outlives this object.
    void beginSheet(const std::shared_ptr<Window>& window, std::function<void(std::optional<Choice>)> completion) const;

private:
    std::vector<std::string> _allowedFileTypes;
    std::string _name;
};

} // namespace platform::ui
