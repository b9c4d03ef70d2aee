#include "platform/ui/ProgressIndicator.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/controls/Spinner.h"

namespace platform::ui {

ProgressIndicator::ProgressIndicator(std::unique_ptr<Native> native) : View(std::move(native)) { }

bool ProgressIndicator::isAnimating() const
{
    return widgetOf<Spinner>(*this).isSpinning();
}

void ProgressIndicator::startAnimation()
{
    widgetOf<Spinner>(*this).setSpinning(true);
}

void ProgressIndicator::stopAnimation()
{
    widgetOf<Spinner>(*this).setSpinning(false);
}

} // namespace platform::ui
