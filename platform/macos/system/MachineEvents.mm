#include "platform/macos/system/MachineEvents.h"

#include <notify.h>

namespace platform {

dispatch_queue_t machineEventsQueue()
{
    static dispatch_queue_t queue = dispatch_queue_create("com.zerkolin.brevane.machine", DISPATCH_QUEUE_SERIAL);
    return queue;
}

NotifyRegistration::NotifyRegistration(const char* name, std::function<void()> handler)
{
    if (notify_register_dispatch(name, &_token, machineEventsQueue(), ^(int) { handler(); }) != NOTIFY_STATUS_OK)
        _token = -1;
}

NotifyRegistration::~NotifyRegistration()
{
    if (_token >= 0)
        notify_cancel(_token);
}

} // namespace platform
