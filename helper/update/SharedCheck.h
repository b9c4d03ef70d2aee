#pragma once

#include "platform/Error.h"
#include "platform/Queue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// The one check for updates that is under way: whoever asks meanwhile waits for the same answer, which is kept for a
// while and given to everybody. Any thread; a completion is called once, on another thread or before the return.
class SharedCheck : public std::enable_shared_from_this<SharedCheck> {
public:
    using Outcome = platform::Result<platform::PropertyList>;
    using Completion = std::function<void(Outcome)>;
    // Called on a queue of this object's own. Asks from time to time whether anybody still waits; when nobody does, it
    // ends soon, and what it returns is dropped.
    using Check = std::function<Outcome(const std::function<bool()>& isGivenUp)>;

    static constexpr std::size_t maximumQuestions = 8; // that one sender may have waiting

    static std::shared_ptr<SharedCheck> create(Check check, std::chrono::milliseconds keeping);

    // EBUSY when the sender has too many questions waiting.
    void ask(const std::string& sender, const Completion& completion);
    // The sender does not wait any more; its completions are not called.
    void forget(const std::string& sender);

    // Answers everybody who waits, and whoever asks from now on, with this error.
    void close(platform::Error error);
    void open();

    const std::shared_ptr<platform::Queue>& queue() const { return _queue; }

private:
    using Clock = std::chrono::steady_clock;
    struct Question {
        std::string sender;
        Completion completion;
    };
    struct Answer {
        Outcome outcome;
        Clock::time_point end;
    };

    SharedCheck(Check check, std::chrono::milliseconds keeping);
    std::optional<Outcome> answerAtOnce(const std::string& sender) const;
    void run();

    const Check _check;
    const std::chrono::milliseconds _keeping;
    const std::shared_ptr<platform::Queue> _queue;
    std::mutex _lock; // guards what follows
    std::vector<Question> _questions;
    std::optional<Answer> _answer;
    std::optional<platform::Error> _closed;
    bool _isRunning = false; // a check whose answer those who wait will get, if only in the queue
};

} // namespace helper
