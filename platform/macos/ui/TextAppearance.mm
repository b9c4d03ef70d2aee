#include "platform/ui/TextAppearance.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/Colors.h"

namespace platform::ui {

namespace {

NSColor* linkColor(NamedColor name)
{
    if (@available(macOS 10.14, *)) {
        if (name == NamedColor::PressedLink)
            return [NSColor.linkColor colorWithSystemEffect:NSColorSystemEffectPressed];
    }
    if (@available(macOS 10.10, *))
        return NSColor.linkColor;
    return NSColor.blueColor;
}

NSColor* labelColor()
{
    if (@available(macOS 10.10, *))
        return NSColor.labelColor;
    return NSColor.textColor;
}

// The adaptive colours came with 10.10; what is older has the standard ones.
NSColor* namedColor(NamedColor name)
{
    if (name == NamedColor::Link || name == NamedColor::PressedLink)
        return linkColor(name);
    if (name == NamedColor::Label)
        return labelColor();
    if (name == NamedColor::Text)
        return NSColor.textColor;
    if (name == NamedColor::SelectedTextBackground)
        return NSColor.selectedTextBackgroundColor;
    if (@available(macOS 10.10, *)) {
        switch (name) {
        case NamedColor::SystemBlue:
            return NSColor.systemBlueColor;
        case NamedColor::SystemGreen:
            return NSColor.systemGreenColor;
        case NamedColor::SystemOrange:
            return NSColor.systemOrangeColor;
        default:
            return NSColor.systemRedColor;
        }
    }
    switch (name) {
    case NamedColor::SystemBlue:
        return NSColor.blueColor;
    case NamedColor::SystemGreen:
        return NSColor.greenColor;
    case NamedColor::SystemOrange:
        return NSColor.orangeColor;
    default:
        return NSColor.redColor;
    }
}

NSAppearance* nativeAppearance(Appearance appearance)
{
    if (@available(macOS 10.14, *)) {
        if (appearance == Appearance::Dark)
            return [NSAppearance appearanceNamed:NSAppearanceNameDarkAqua];
    }
    return [NSAppearance appearanceNamed:NSAppearanceNameAqua];
}

FixedColor components(NSColor* color)
{
    NSColor* const fixed = [color colorUsingColorSpace:NSColorSpace.sRGBColorSpace];
    if (!fixed)
        return {};
    return {fixed.redComponent, fixed.greenComponent, fixed.blueComponent, fixed.alphaComponent};
}

} // namespace

NSColor* nativeColor(const Color& color)
{
    if (const auto* const name = std::get_if<NamedColor>(&color))
        return namedColor(*name);
    const auto* const fixed = std::get_if<FixedColor>(&color);
    return [NSColor colorWithSRGBRed:fixed->red green:fixed->green blue:fixed->blue alpha:fixed->alpha];
}

FontDescription userFixedPitchFont()
{
    NSFont* const font = [NSFont userFixedPitchFontOfSize:0];
    return {foundation::string(font.familyName), font.pointSize};
}

FixedColor resolvedColor(const Color& color, Appearance appearance)
{
    @autoreleasepool {
        if (@available(macOS 11.0, *)) {
            __block FixedColor resolved;
            [nativeAppearance(appearance)
                performAsCurrentDrawingAppearance:^{ resolved = components(nativeColor(color)); }];
            return resolved;
        }
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
        NSAppearance* const before = NSAppearance.currentAppearance;
        NSAppearance.currentAppearance = nativeAppearance(appearance);
        const FixedColor resolved = components(nativeColor(color));
        NSAppearance.currentAppearance = before;
#pragma clang diagnostic pop
        return resolved;
    }
}

} // namespace platform::ui
