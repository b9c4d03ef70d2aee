#include "platform/ui/Image.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/ImageNative.h"

namespace platform::ui {

namespace {

// A volume's name for its icon is the path at which it stands.
NSImage* iconOfVolume(NSString* path)
{
    NSImage* icon = nil;
    [[NSURL fileURLWithPath:path isDirectory:YES] getResourceValue:&icon forKey:NSURLEffectiveIconKey error:nil];
    return [icon copy]; // shared ones keep their size
}

} // namespace

std::shared_ptr<Image> Image::imageNamed(const std::string& name)
{
    NSString* const text = foundation::string(name);
    NSImage* const image = text.absolutePath ? iconOfVolume(text) : [[NSImage imageNamed:text] copy];
    return image ? std::make_shared<Image>(std::unique_ptr<Native>(new Native{image})) : nullptr;
}

Image::Image(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Image::~Image() = default;

void Image::setSize(double width, double height)
{
    _native->image.size = NSMakeSize(width, height);
}

} // namespace platform::ui
