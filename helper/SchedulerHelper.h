#pragma once

#include "helper/AutoUpdatesStore.h"
#include "helper/enforcement/Enforcer.h"
#include "helper/enforcement/SnapshotKeeper.h"
#include "helper/Maintenance.h"
#include "helper/RefusalLog.h"
#include "helper/RequestReader.h"
#include "helper/Service.h"
#include "helper/SettingsStore.h"
#include "helper/Turns.h"
#include "helper/update/AutomaticUpdates.h"
#include "platform/Queue.h"
#include "platform/ServiceListener.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace helper {

// Serves the messages: checks who asks, then has it done. What is ready at any moment is answered at once; everything
// else waits for its user's turn. A right is asked about when the turn has come, without waiting, and a payload is read
// only after that.
//
// Except for what is said otherwise, on the listener's thread.
class SchedulerHelper : public std::enable_shared_from_this<SchedulerHelper> {
public:
    using Listener = platform::ServiceListener;

    // Reads the stored settings of this edition. The end handler is called, on any thread, when the program is to end.
    // The listener must live as long as the helper serves; its handlers call the three below.
    static std::shared_ptr<SchedulerHelper> create(const HelperOptions& options, const HelperParts& parts,
                                                   Listener& listener, Maintenance::EndHandler endHandler);

    void handle(Listener::Request request, Listener::Reply reply);
    void identify(const platform::ServicePeer& peer);
    void forget(const std::string& sender);

    // Defines how a message is served; before the listener runs. Its rights are those of the protocol's table.
    void serve(std::int64_t message, Service service);

    // After the listener has ended: forgets what waits, and waits until what is being done is done. False when that
    // takes longer than the limit.
    bool drain(std::chrono::milliseconds limit);

private:
    // A request on its way.
    struct Job {
        Request request;
        std::string sender;
        Listener::Reply reply;            // null when nobody waits for one
        const Service* service = nullptr; // null when the message is not served
        bool needsRight = false;
    };

    SchedulerHelper(const HelperOptions& options, const HelperParts& parts, Listener& listener,
                    Maintenance::EndHandler endHandler);
    void serveEverything();
    void serveEnforcement();
    void serveSnapshots();
    void followAutoUpdatesSetting();
    void followSnapshotsSetting();

    void enqueue(Job job, std::size_t size, std::optional<platform::Error> fault);
    void begin(const std::shared_ptr<Job>& job, const Turns::Turn& turn);
    void perform(const std::shared_ptr<Job>& job, const platform::ServicePeer& sender, const Turns::Turn& turn);
    void refuse(const Job& job, const platform::ServicePeer& sender, const platform::Error& error);
    Service::Completion completionOf(const std::shared_ptr<Job>& job, const platform::ServicePeer& sender);
    const std::shared_ptr<platform::Queue>& queueOf(Service::Lane lane) const;

    // On the queue for changes.
    Service::Outcome applySettings(const Service::Call& call);
    Service::Outcome setAutoUpdates(const Service::Call& call);
    Service::Outcome setAllowWithoutPassword(const Service::Call& call);
    Service::Outcome setBackupProgram(const Service::Call& call);

    Listener& _listener;
    const std::shared_ptr<Peers> _peers = std::make_shared<Peers>();
    const std::shared_ptr<Turns> _turns;
    RefusalLog _refusals;
    std::map<std::int64_t, Service> _services;
    SettingsStore _settings;
    AutoUpdatesStore _autoUpdates;
    std::shared_ptr<Maintenance> _maintenance;
    std::shared_ptr<platform::Queue> _readingQueue;
    std::shared_ptr<platform::Queue> _changingQueue;
    std::shared_ptr<platform::Queue> _listingQueue; // of snapshots
    const std::shared_ptr<BackupPrograms> _program;
    const std::shared_ptr<LocalSnapshots> _localSnapshots;
    Enforcer _enforcer;
    SnapshotKeeper _snapshots;
    const bool _takesUpdates;           // there is a key that they could be signed with
    AutomaticUpdates _automaticUpdates; // ends first
};

} // namespace helper
