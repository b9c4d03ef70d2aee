#pragma once

#include "helper/HelperParts.h"
#include "helper/PasswordRule.h"
#include "helper/Peers.h"
#include "helper/update/SharedCheck.h"
#include "platform/Queue.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace helper {

// The work on the installation itself: one operation at a time, whoever asks. Another one meanwhile, and a check, is
// refused with an error of the product's domain. Never waits; a completion is called once, on another thread or before
// the return.
class Maintenance : public std::enable_shared_from_this<Maintenance> {
public:
    using Completion = std::function<void(platform::Result<platform::PropertyList>)>;
    enum class End {
        Restart, // another version of this program has taken its place
        Stop,    // there is none any more
    };
    using EndHandler = std::function<void(End)>;

    // Finishes what was interrupted. The handler is called after the reply, and nothing is served from then on.
    static std::shared_ptr<Maintenance> create(const HelperOptions& options, const HelperParts& parts,
                                               std::shared_ptr<Peers> peers, EndHandler endHandler);

    // A backup is under way, if only about to begin. Whoever sets it asks isAtWork() afterwards, and whoever begins to
    // work looks at it afterwards, so that of the two at most one goes on.
    const std::shared_ptr<std::atomic<bool>>& backupIsUnderWay() const { return _backupIsUnderWay; }
    // The installation is being changed.
    bool isAtWork() const { return _operation != Operation::None; }
    // Called, on any thread, when isAtWork() has changed. Before anything is asked of this object.
    void setChangeHandler(std::function<void()> handler) { _changeHandler = std::move(handler); }

    // Shared by all who ask at the same time or soon after; never in the way of the other operations, which end it.
    void checkForUpdates(const std::string& sender, const Completion& completion);
    // The sender has left.
    void forget(const std::string& sender) { _check->forget(sender); }
    // False when it was refused at once.
    bool installUpdate(Completion completion);
    // Nobody asked for it, so the outcome is only logged, and programs that use this one are left
    // alone. The same result.
    bool installUpdateUnasked();
    // On the thread of the caller, which must be the one that writes settings. The sender is the peer who asks.
    void uninstall(const std::string& sender, const Completion& completion);

    // From then on no settings may be written.
    bool isUninstalling() const { return _operation == Operation::Uninstall; }

    PasswordRule& passwordRule() { return _passwordRule; }
    // The program is to end: no check is under way or begun from now on.
    void endChecks();
    // Nor is another program waited for, which ends this one for the next version.
    void stopWaiting() { *_isEnding = true; }
    const std::shared_ptr<platform::Queue>& queue() const { return _queue; }
    const std::shared_ptr<platform::Queue>& checkQueue() const { return _check->queue(); }

private:
    enum class Operation { None, Install, Uninstall };

    Maintenance(const HelperOptions& options, const HelperParts& parts, std::shared_ptr<Peers> peers,
                EndHandler endHandler);
    bool begin(Operation operation, const Completion& completion);
    void tellChange() const;
    void finish(const Completion& completion, platform::Result<platform::PropertyList> result);
    void end(const Completion& completion, End how);

    std::function<bool()> isEnding() const;
    void remove(const Completion& completion);

    const std::shared_ptr<ProductInstallation> _installation;
    const std::shared_ptr<std::atomic<bool>> _isEnding = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<SharedCheck> _check;
    PasswordRule _passwordRule;
    EndHandler _endHandler;
    std::function<void()> _changeHandler;
    const std::shared_ptr<std::atomic<bool>> _backupIsUnderWay = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<Peers> _peers;
    std::atomic<Operation> _operation = Operation::None;
    std::shared_ptr<platform::Queue> _queue;
};

} // namespace helper
