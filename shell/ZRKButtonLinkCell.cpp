#include "shell/ZRKButtonLinkCell.h"

#include "version/ZRKSystemVersionManager.h"

using platform::StyledText;
using platform::TextAttributes;

namespace {

constexpr unsigned yosemite = 0;
constexpr unsigned mojave = 4;

platform::Color linkColor(bool isHighlighted)
{
    const auto& system = ZRKSystemVersionManager::sharedManager();
    if (!system.runningAtLeast(yosemite))
        return platform::FixedColor{0, 0, 1};
    if (!isHighlighted)
        return platform::NamedColor::Link;
    return system.runningAtLeast(mojave) ? platform::NamedColor::PressedLink : platform::NamedColor::Label;
}

} // namespace

platform::ui::Rect ZRKButtonLinkCell::drawTitle(const StyledText& title, const platform::ui::Rect& frame,
                                                Canvas& canvas) const
{
    const auto color = linkColor(canvas.isHighlighted());
    StyledText colored;
    title.visitRuns(0, title.size(), [&](std::size_t begin, std::size_t end, TextAttributes attributes) {
        attributes.foreground = color;
        colored.appendString(std::string_view(title.string()).substr(begin, end - begin), attributes);
    });
    return ButtonCell::drawTitle(colored, frame, canvas);
}
