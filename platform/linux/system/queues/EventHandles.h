#pragma once

#include <memory>
#include <systemd/sd-event.h>

namespace platform {

struct EventDeleter {
    void operator()(sd_event* event) const { sd_event_unref(event); }
    // A source's handler is not called any more.
    void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};

using EventHandle = std::unique_ptr<sd_event, EventDeleter>;
using EventSource = std::unique_ptr<sd_event_source, EventDeleter>;

} // namespace platform
