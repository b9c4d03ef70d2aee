#include "platform/linux/ui/application/FontPreparation.h"

#include "platform/linux/system/queues/BlockedSignals.h"

#include <fontconfig/fontconfig.h>

namespace platform::ui {

FontPreparation::FontPreparation()
{
    const BlockedSignals blocked;
    _thread = std::thread([] { FcInit(); });
}

} // namespace platform::ui
