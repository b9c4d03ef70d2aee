#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform::ui {

class Window;

// Asks for a folder or a file that is there.
class OpenPanel {
public:
    enum class Kind { Folder, File };
    explicit OpenPanel(Kind kind) : _kind(kind) { }

    // The folder that is shown first, if it is there; else the platform chooses.
    void setDirectory(std::string path) { _directory = std::move(path); }

    // Attached to the window, which takes no input until it is answered. Returns at once; the completion runs on the
    // main thread after the panel has closed, without a path when the user cancels. The panel outlives this object.
    void beginSheet(const std::shared_ptr<Window>& window,
                    std::function<void(std::optional<std::string>)> completion) const;

private:
    Kind _kind;
    std::string _directory;
};

} // namespace platform::ui
