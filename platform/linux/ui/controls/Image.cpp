#include "platform/ui/Image.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/ImageNative.h"

#include <QApplication>
#include <QStyle>

namespace platform::ui {

namespace {

// The toolkit's own drawings, for a desktop without an icon theme.
QIcon standardIcon(std::string_view name)
{
    const auto* const style = QApplication::style();
    if (name.starts_with("drive-optical"))
        return style->standardIcon(QStyle::SP_DriveCDIcon);
    if (name.starts_with("drive-") || name.starts_with("media-"))
        return style->standardIcon(QStyle::SP_DriveHDIcon);
    return {};
}

} // namespace

std::shared_ptr<Image> Image::imageNamed(const std::string& name)
{
    auto icon = QIcon::fromTheme(qtString(name));
    if (icon.isNull())
        icon = standardIcon(name);
    return icon.isNull() ? nullptr : std::make_shared<Image>(std::unique_ptr<Native>(new Native{std::move(icon), {}}));
}

Image::Image(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Image::~Image() = default;

void Image::setSize(double width, double height)
{
    _native->size = QSizeF(width, height).toSize();
}

} // namespace platform::ui
