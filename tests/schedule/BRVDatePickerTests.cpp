#include "platform/linux/ui/controls/ViewNative.h"
#include "platform/linux/ui/layout/TextBaseline.h"
#include "platform/ui/Interface.h"
#include "schedule/BRVDatePicker.h"
#include "tests/shell/support/EditorTest.h"

#include <doctest/doctest.h>

namespace {

struct Layout {
    int height = 0;
    double baseline = 0; // from the middle
};

// Of a picker of the interface file on such a system.
Layout layoutOn(const platform::OperatingSystemVersion& version)
{
    setUp({.system = version});
    const auto interface = platform::ui::Interface::load("MainWindow");
    const auto picker = interface->outlet<platform::ui::DatePicker>("suspendFromPicker");
    BRVDatePicker::correctLayout(*picker);
    const auto& widget = *picker->native().widget;
    const int height = std::max(widget.sizeHint().height(), widget.minimumHeight());
    return {height, platform::ui::textBaseline(&widget, widget.width()).offset};
}

} // namespace

TEST_CASE("before macOS 10.10 a picker's baseline lies 6 points higher and the picker is 2 points higher")
{
    setUp({.system = {10, 9, 5}});
    CHECK(BRVDatePicker::baselineOffsetFromBottom(4.5) == 10.5);
    CHECK(BRVDatePicker::intrinsicContentHeight(20) == 22);
}

TEST_CASE("from macOS 10.10 on a picker's measures are the platform's own")
{
    for (const platform::OperatingSystemVersion& version : {platform::OperatingSystemVersion{10, 10, 0}, {14, 0, 0}}) {
        setUp({.system = version});
        CHECK(BRVDatePicker::baselineOffsetFromBottom(4.5) == 4.5);
        CHECK(BRVDatePicker::intrinsicContentHeight(20) == 20);
    }
}

TEST_CASE("layouts follow a picker's corrections")
{
    const Layout plain = layoutOn({10, 10, 0});
    const Layout corrected = layoutOn({10, 9, 5});
    CHECK(corrected.height == plain.height + 2);
    CHECK(corrected.baseline == plain.baseline - 6);
    CHECK(layoutOn({14, 0, 0}).height == plain.height);
}
