#pragma once

#include <memory>
#include <string>

namespace platform::ui {

// A picture, such as an item's icon.
class Image {
public:
    // Null when there is none of this name. Volumes tell the names of theirs.
    static std::shared_ptr<Image> imageNamed(const std::string& name);
    ~Image();

    // How large it is drawn, in points.
    void setSize(double width, double height);

    struct Native;
    explicit Image(std::unique_ptr<Native> native);
    Native& native() const { return *_native; }

private:
    std::unique_ptr<Native> _native;
};

} // namespace platform::ui
