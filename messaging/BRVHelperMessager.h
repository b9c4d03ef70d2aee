#pragma once

#include "messaging/ZRKMessagerClient.h"
#include "protocol/Messages.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The application's one door to the scheduler helper.
class BRVHelperMessager : public ZRKMessagerClientDelegate, public std::enable_shared_from_this<BRVHelperMessager> {
public:
    using Payload = ZRKMessagerClient::Payload;
    using Reply = ZRKMessagerClient::Reply;
    using ReplyHandler = ZRKMessagerClient::ReplyHandler;

    static const std::shared_ptr<BRVHelperMessager>& sharedMessager();
    static std::shared_ptr<BRVHelperMessager> create();

    platform::Result<void> sendMessage(std::int64_t message, const Payload& payload = {});
    void sendMessage(std::int64_t message, const Payload& payload, std::shared_ptr<platform::Queue> replyQueue,
                     ReplyHandler handler);
    Reply sendSynchronousMessage(std::int64_t message, const Payload& payload = {});
    void cancel();

    // What concerns backups: the reply is a dictionary, anything else an error. The handler runs on the queue; when the
    // request cannot be built, as when the user cancels the authentication, at once on the calling thread.
    using DictionaryHandler = std::function<void(platform::Result<platform::Dictionary>)>;
    void getStatus(std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler); // BackupStatusKey
    void startBackup(std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler);
    void getBackupProgram(std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler); // BackupProgramKey
    void setBackupProgram(const platform::Dictionary& choice, std::shared_ptr<platform::Queue> replyQueue,
                          DictionaryHandler handler);
    // The same for the local snapshots of the volume that is mounted there.
    void listSnapshots(const std::string& volume, std::shared_ptr<platform::Queue> replyQueue,
                       DictionaryHandler handler); // SnapshotListKey

    std::optional<std::vector<std::string>> authorizationRightsForMessage(const ZRKMessagerClient& client,
                                                                          std::int64_t message) override;
    bool requiresAuthorizationForMessage(std::int64_t message) const;

private:
    BRVHelperMessager() = default;
    void sendMessageForDictionary(std::int64_t message, const Payload& payload,
                                  std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler);
    std::unique_ptr<ZRKMessagerClient> _client;
};

// True when the helper's reply to a message without payload says that it does not serve its number: it is of another
// version.
bool helperDoesNotServeMessage(const platform::Error& error);
