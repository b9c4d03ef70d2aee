#pragma once

#include "platform/Error.h"
#include "platform/ServiceConnection.h"
#include "schedule/ScheduleSettings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

// The scheduler helper as the editor's tests play it: it holds a record, hands it out for message 1 and takes the one
// of message 2. It answers from its construction on, until scripted::reset().
class PlayedScheduler {
public:
    explicit PlayedScheduler(ScheduleSettings record);

    // What it holds and hands out.
    const ScheduleSettings& record() const { return _state->record; }
    void setRecord(ScheduleSettings record) { _state->record = std::move(record); }
    // Message 2 is answered with this error from now on; nothing: it is accepted.
    void refuseWith(std::optional<platform::Error> error) { _state->refusal = std::move(error); }
    // Every message is answered with this from now on.
    void answerWith(platform::ServiceReply reply) { _state->reply = std::move(reply); }

    std::size_t fetches() const { return _state->fetches; }
    // The records of message 2 as they arrived, refused ones too, with their keys in the order of the bytes.
    const std::vector<ScheduleSettings>& received() const { return _state->received; }

private:
    struct State {
        ScheduleSettings record;
        std::optional<platform::Error> refusal;
        std::optional<platform::ServiceReply> reply;
        std::size_t fetches = 0;
        std::vector<ScheduleSettings> received;

        platform::ServiceReply answer(const platform::ServiceDictionary& request);
    };

    std::shared_ptr<State> _state;
};
