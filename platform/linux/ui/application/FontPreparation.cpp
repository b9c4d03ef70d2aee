#include "platform/linux/ui/application/FontPreparation.h"

#include <csignal>
#include <fontconfig/fontconfig.h>

namespace platform::ui {

FontPreparation::FontPreparation()
{
    // Signals are for the threads that stay.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    _thread = std::thread([] { FcInit(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace platform::ui
