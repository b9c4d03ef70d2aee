#include "shell/ZRKButtonLinkCell.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedSystemInformation.h"

#include <doctest/doctest.h>
#include <string>
#include <utility>
#include <vector>

using platform::Color;
using platform::FixedColor;
using platform::NamedColor;
using platform::StyledText;
using platform::TextAttributes;
using platform::ui::Rect;

namespace {

// Notes what is drawn, and draws it one point further in.
class NotingCanvas : public platform::ui::ButtonCell::Canvas {
public:
    explicit NotingCanvas(bool isHighlighted) : _isHighlighted(isHighlighted) { }

    bool isHighlighted() const override { return _isHighlighted; }

    Rect drawTitle(const StyledText& title, const Rect& frame) override
    {
        titles.push_back(title.string());
        title.visitRuns(0, title.size(), [this](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
            runs.emplace_back(end - begin, attributes);
        });
        return {frame.x + 1, frame.y + 1, frame.width - 2, frame.height - 2};
    }

    std::vector<std::string> titles;
    std::vector<std::pair<std::size_t, TextAttributes>> runs;

private:
    bool _isHighlighted;
};

Color colorOn(platform::OperatingSystemVersion system, bool isHighlighted)
{
    scripted::system::setOperatingSystemVersion(system);
    StyledText title;
    title.appendString("Web Site", {});
    NotingCanvas canvas(isHighlighted);
    ZRKButtonLinkCell().drawTitle(title, {0, 0, 10, 10}, canvas);
    REQUIRE(canvas.runs.size() == 1);
    return canvas.runs[0].second.foreground.value();
}

} // namespace

TEST_CASE("a link is drawn in the link colour, which the pressed effect changes from macOS 10.14 on")
{
    scripted::reset();
    const Color blue = FixedColor{0, 0, 1};
    struct Case {
        platform::OperatingSystemVersion system;
        Color color, highlighted;
    };
    for (const Case& each : {Case{{10, 9, 5}, blue, blue}, Case{{10, 10, 0}, NamedColor::Link, NamedColor::Label},
                             Case{{10, 13, 6}, NamedColor::Link, NamedColor::Label},
                             Case{{10, 14, 0}, NamedColor::Link, NamedColor::PressedLink},
                             Case{{14, 0, 0}, NamedColor::Link, NamedColor::PressedLink}}) {
        CAPTURE(each.system.major);
        CAPTURE(each.system.minor);
        CHECK(colorOn(each.system, false) == each.color);
        CHECK(colorOn(each.system, true) == each.highlighted);
    }
}

TEST_CASE("a link's title keeps all but its colour over its whole length, and is drawn once in the frame")
{
    scripted::reset();
    StyledText title;
    title.appendString("Web ", {.font = platform::TextFont::UserFixedPitch, .foreground = NamedColor::SystemRed});
    title.appendString("S\u00efte", {});
    NotingCanvas canvas(false);
    const auto drawn = ZRKButtonLinkCell().drawTitle(title, {3, 4, 50, 20}, canvas);
    CHECK(drawn == Rect{4, 5, 48, 18});
    CHECK(canvas.titles == std::vector<std::string>{"Web S\u00efte"});
    REQUIRE(canvas.runs.size() == 2);
    const TextAttributes fixedPitch{.font = platform::TextFont::UserFixedPitch, .foreground = NamedColor::Link};
    CHECK(canvas.runs[0] == std::pair(std::size_t(4), fixedPitch));
    CHECK(canvas.runs[1] == std::pair(std::size_t(5), TextAttributes{.font = {}, .foreground = NamedColor::Link}));
    // The caller's own title is as it was.
    title.visitRuns(0, 1, [](std::size_t, std::size_t, const TextAttributes& attributes) {
        CHECK(attributes.foreground == Color(NamedColor::SystemRed));
    });
}

TEST_CASE("an empty title of a link is drawn too, without a colour")
{
    scripted::reset();
    NotingCanvas canvas(true);
    ZRKButtonLinkCell().drawTitle({}, {0, 0, 10, 10}, canvas);
    CHECK(canvas.titles == std::vector<std::string>{""});
    CHECK(canvas.runs.empty());
}
