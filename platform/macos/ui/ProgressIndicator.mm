#include "platform/ui/ProgressIndicator.h"

#include "platform/macos/ui/ProgressIndicatorNative.h"

namespace platform::ui {

ProgressIndicator::ProgressIndicator(std::unique_ptr<Native> native) : View(std::move(native)) { }

bool ProgressIndicator::isAnimating() const
{
    return static_cast<ProgressIndicatorNative&>(native()).isAnimating;
}

void ProgressIndicator::startAnimation()
{
    static_cast<ProgressIndicatorNative&>(native()).isAnimating = true;
    [static_cast<NSProgressIndicator*>(native().view) startAnimation:nil];
}

void ProgressIndicator::stopAnimation()
{
    static_cast<ProgressIndicatorNative&>(native()).isAnimating = false;
    [static_cast<NSProgressIndicator*>(native().view) stopAnimation:nil];
}

} // namespace platform::ui
