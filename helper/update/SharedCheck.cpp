#include "helper/update/SharedCheck.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace helper {

std::shared_ptr<SharedCheck> SharedCheck::create(Check check, std::chrono::milliseconds keeping)
{
    return std::shared_ptr<SharedCheck>(new SharedCheck(std::move(check), keeping));
}

SharedCheck::SharedCheck(Check check, std::chrono::milliseconds keeping)
    : _check(std::move(check)),
      _keeping(keeping),
      _queue(platform::Queue::createSerial("com.zerkolin.brevane.scheduler.checking"))
{
}

std::optional<SharedCheck::Outcome> SharedCheck::answerAtOnce(const std::string& sender) const
{
    if (_closed)
        return std::unexpected(*_closed);
    if (_answer && Clock::now() < _answer->end)
        return _answer->outcome;
    if (std::ranges::count(_questions, sender, &Question::sender) >= static_cast<std::ptrdiff_t>(maximumQuestions))
        return std::unexpected(platform::Error{platform::POSIXErrorDomain, EBUSY, {}, nullptr});
    return std::nullopt;
}

void SharedCheck::ask(const std::string& sender, const Completion& completion)
{
    std::unique_lock guard(_lock);
    if (auto outcome = answerAtOnce(sender)) {
        guard.unlock();
        completion(std::move(*outcome));
        return;
    }
    _questions.push_back({sender, completion});
    if (!std::exchange(_isRunning, true))
        _queue->async([self = shared_from_this()] { self->run(); });
}

void SharedCheck::forget(const std::string& sender)
{
    const std::lock_guard guard(_lock);
    std::erase_if(_questions, [&](const Question& question) { return question.sender == sender; });
}

void SharedCheck::close(platform::Error error)
{
    std::vector<Question> questions;
    {
        const std::lock_guard guard(_lock);
        _closed = error;
        questions.swap(_questions);
    }
    for (const Question& question : questions)
        question.completion(std::unexpected(error));
}

void SharedCheck::open()
{
    const std::lock_guard guard(_lock);
    _closed.reset();
}

void SharedCheck::run()
{
    bool isGivenUp = false;
    const auto isWaitedForByNobody = [&] {
        const std::lock_guard guard(_lock);
        if (!isGivenUp && _questions.empty()) {
            isGivenUp = true;
            _isRunning = false; // whoever asks now gets another one
        }
        return isGivenUp;
    };
    if (isWaitedForByNobody())
        return;
    const Outcome outcome = _check(isWaitedForByNobody);
    if (isGivenUp)
        return;
    std::vector<Question> questions;
    {
        const std::lock_guard guard(_lock);
        _isRunning = false;
        _answer = Answer{outcome, Clock::now() + _keeping};
        questions.swap(_questions);
    }
    for (const Question& question : questions)
        question.completion(outcome);
}

} // namespace helper
