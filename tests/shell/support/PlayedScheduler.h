#pragma once

#include "platform/Error.h"
#include "platform/ServiceConnection.h"
#include "protocol/ScheduleSettings.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

// The scheduler helper as tests play it. It holds a record, hands it out for message 1 and takes the one of message 2;
// keeps whether updates are installed automatically (18, 21) and whether the schedule needs a password (6); knows of no
// update (26) and of no snapshot (11); tells the status that it is given (5); and starts backups, installs and
// uninstalls without complaint (3, 27, 28). Borg is its backup program (7, 12) at first. It answers from its
// construction on, until scripted::reset().
class PlayedScheduler {
public:
    explicit PlayedScheduler(ScheduleSettings record);

    // What it holds and hands out.
    const ScheduleSettings& record() const { return _state->record; }
    void setRecord(ScheduleSettings record) { _state->record = std::move(record); }
    // On at first, so that the end of the application asks nothing.
    bool installsUpdates() const { return _state->installsUpdates; }
    void setInstallsUpdates(bool installs) { _state->installsUpdates = installs; }

    // By the keys of BackupStatusKey; nothing at first.
    void setStatus(platform::Dictionary status) { _state->status = std::move(status); }

    // What it replies to message 7; message 12 changes it.
    const platform::Dictionary& backupProgram() const { return _state->backupProgram; }
    void setBackupProgram(platform::Dictionary reply) { _state->backupProgram = std::move(reply); }

    // Message 2 is answered with this error from now on; nothing: it is accepted.
    void refuseWith(std::optional<platform::Error> error) { _state->refusal = std::move(error); }
    // Every message is answered with this from now on.
    void answerWith(platform::ServiceReply reply) { _state->reply = std::move(reply); }
    // Those of one number are.
    void answerMessage(std::int64_t message, platform::ServiceReply reply);
    void refuseMessage(std::int64_t message, const platform::Error& error);

    std::size_t fetches() const { return count(1); }
    std::size_t count(std::int64_t message) const;
    // The numbers of all messages, in the order in which they arrived.
    const std::vector<std::int64_t>& messages() const { return _state->messages; }
    // The records of message 2 as they arrived, refused ones too, with their keys in the order of the bytes.
    const std::vector<ScheduleSettings>& received() const { return _state->payloads[2]; }
    // What came with the messages of this number.
    const std::vector<platform::Dictionary>& payloads(std::int64_t message) const { return _state->payloads[message]; }

private:
    struct State {
        ScheduleSettings record;
        platform::Dictionary status;
        bool installsUpdates = true;
        platform::Dictionary backupProgram{{"Program", "borg"}};
        std::optional<platform::Error> refusal;
        std::optional<platform::ServiceReply> reply;
        std::map<std::int64_t, platform::ServiceReply> replies;
        std::vector<std::int64_t> messages;
        std::map<std::int64_t, std::vector<platform::Dictionary>> payloads;

        platform::ServiceReply answer(const platform::ServiceDictionary& request);
        platform::ServiceReply usualAnswer(std::int64_t message);
    };

    std::shared_ptr<State> _state;
};

// A reply with this payload, or with this error.
platform::ServiceReply replyWith(const platform::PropertyList& payload);
platform::ServiceReply replyWithError(const platform::Error& error);
