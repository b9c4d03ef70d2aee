#pragma once

#include "helper/AutoUpdatesStore.h"
#include "helper/Maintenance.h"
#include "helper/RequestReader.h"
#include "helper/SettingsStore.h"
#include "helper/update/AutomaticUpdates.h"
#include "platform/Queue.h"
#include "platform/ServiceConnection.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace helper {

// Serves the messages: checks who asks, then does it. Messages that need no right never wait for one that does.
class SchedulerHelper : public std::enable_shared_from_this<SchedulerHelper> {
public:
    using Reply = std::function<void(platform::ServiceDictionary)>;

    // Reads the stored settings of this edition. The handler is called, on any thread, when the program is to end.
    static std::shared_ptr<SchedulerHelper> create(const HelperOptions& options, Maintenance::EndHandler endHandler);

    // Returns at once; the reply is called once, on any thread. `sender` is the peer as the transport names it.
    void handle(platform::ServiceDictionary message, std::string sender, Reply reply);

    // Waits until what was handed over so far is done. False when that takes longer than the limit.
    bool drain(std::chrono::milliseconds limit);

private:
    SchedulerHelper(const HelperOptions& options, Maintenance::EndHandler endHandler);

    using Payload = RequestReader::Payload;
    using Outcome = platform::Result<platform::PropertyList>;
    struct Served {
        std::int64_t message;
        Outcome (SchedulerHelper::*perform)(const Request&, const Payload&);
    };
    static const Served messageTable[];

    void answer(platform::ServiceDictionary message, const std::string& sender, const Reply& reply);
    platform::Result<void> authorize(const Request& request, const std::string& sender) const;
    // Begins the work on the installation that the message asks for. False when it asks for none.
    bool beginMaintenance(std::int64_t message, const std::string& sender, const Reply& reply);
    Outcome perform(const Request& request);

    void followAutoUpdatesSetting();

    Outcome getSettings(const Request& request, const Payload& payload);
    Outcome applySettings(const Request& request, const Payload& payload);
    Outcome getAutoUpdates(const Request& request, const Payload& payload);
    Outcome setAutoUpdates(const Request& request, const Payload& payload);
    Outcome setAllowWithoutPassword(const Request& request, const Payload& payload);

    SettingsStore _settings;
    AutoUpdatesStore _autoUpdates;
    std::shared_ptr<Maintenance> _maintenance;
    std::shared_ptr<platform::Queue> _readingQueue;
    std::shared_ptr<platform::Queue> _changingQueue;
    std::atomic<std::size_t> _waitingSize = 0; // of the requests handed over and not answered yet, in bytes
    const bool _takesUpdates;                  // there is a key that they could be signed with
    AutomaticUpdates _automaticUpdates;        // ends first
};

} // namespace helper
