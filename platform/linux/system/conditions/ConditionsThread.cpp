#include "platform/linux/system/conditions/ConditionsThread.h"

#include "platform/linux/system/conditions/ConditionsBus.h"
#include "platform/linux/system/queues/BlockedSignals.h"
#include "platform/linux/system/queues/RunTask.h"

#include <pthread.h>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <thread>
#include <utility>

namespace platform {

namespace {

thread_local bool isConditionsThread = false;

// What a source calls belongs to it.
template <class Handler>
EventSource owningHandler(sd_event_source* source, std::unique_ptr<Handler> handler)
{
    sd_event_source_set_destroy_callback(source, [](void* context) { delete static_cast<Handler*>(context); });
    [[maybe_unused]] const Handler* const owned = handler.release();
    return EventSource(source);
}

using Handler = std::function<void()>;

} // namespace

ConditionsThread& ConditionsThread::shared()
{
    static auto& thread = *new ConditionsThread; // it may outlive main()
    return thread;
}

ConditionsThread::ConditionsThread()
{
    sd_event* made = nullptr;
    sd_event_new(&made);
    _event.reset(made);
    _bus = std::make_unique<ConditionsBus>(*this);
    const BlockedSignals blocked;
    std::thread([this] { run(); }).detach();
}

void ConditionsThread::run()
{
    isConditionsThread = true;
    ::pthread_setname_np(::pthread_self(), "conditions");
    const auto wake = watchDescriptor(_wake.get(), [this] { runTasks(); });
    sd_event_loop(_event.get());
}

void ConditionsThread::runTasks()
{
    _wake.reset();
    std::unique_lock lock(_mutex);
    while (!_tasks.empty()) {
        const auto task = std::move(_tasks.front());
        _tasks.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

void ConditionsThread::sync(const Task& task)
{
    if (isConditionsThread) {
        task();
        return;
    }
    Completion completion;
    {
        const std::lock_guard lock(_mutex);
        _tasks.emplace_back([&] {
            task();
            completion.signal();
        });
    }
    _wake.signal();
    completion.wait();
}

EventSource ConditionsThread::watchDescriptor(int descriptor, std::function<void()> handler)
{
    auto owned = std::make_unique<Handler>(std::move(handler));
    sd_event_source* source = nullptr;
    const auto call = [](sd_event_source*, int, std::uint32_t, void* context) {
        (*static_cast<Handler*>(context))();
        return 0;
    };
    if (sd_event_add_io(_event.get(), &source, descriptor, EPOLLIN, call, owned.get()) < 0)
        return nullptr;
    return owningHandler(source, std::move(owned));
}

EventSource ConditionsThread::watchFile(const std::string& path, std::uint32_t mask, FileHandler handler)
{
    auto owned = std::make_unique<FileHandler>(std::move(handler));
    sd_event_source* source = nullptr;
    const auto call = [](sd_event_source*, const inotify_event* event, void* context) {
        (*static_cast<FileHandler*>(context))(*event);
        return 0;
    };
    if (sd_event_add_inotify(_event.get(), &source, path.c_str(), mask, call, owned.get()) < 0)
        return nullptr;
    return owningHandler(source, std::move(owned));
}

EventSource ConditionsThread::runAfter(std::chrono::milliseconds delay, std::function<void()> handler)
{
    auto owned = std::make_unique<Handler>(std::move(handler));
    sd_event_source* source = nullptr;
    const auto call = [](sd_event_source*, std::uint64_t, void* context) {
        (*static_cast<Handler*>(context))();
        return 0;
    };
    const auto microseconds = static_cast<std::uint64_t>(std::chrono::microseconds(delay).count());
    if (sd_event_add_time_relative(_event.get(), &source, CLOCK_MONOTONIC, microseconds, 0, call, owned.get()) < 0)
        return nullptr;
    return owningHandler(source, std::move(owned));
}

} // namespace platform
