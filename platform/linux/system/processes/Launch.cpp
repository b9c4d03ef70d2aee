#include "platform/linux/system/processes/Launch.h"

#include "platform/Queue.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

class SpawnAttributes {
public:
    // A session of its own, and the signals of a fresh process.
    SpawnAttributes()
    {
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_init(&_attributes);
        ::posix_spawnattr_setsigmask(&_attributes, &none);
        ::posix_spawnattr_setsigdefault(&_attributes, &all);
        ::posix_spawnattr_setflags(&_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&_attributes); }

    const posix_spawnattr_t* get() const { return &_attributes; }

private:
    posix_spawnattr_t _attributes;
};

class SpawnStreams {
public:
    explicit SpawnStreams(const StandardStreams& streams)
    {
        ::posix_spawn_file_actions_init(&_actions);
        if (streams.input >= 0)
            ::posix_spawn_file_actions_adddup2(&_actions, streams.input, STDIN_FILENO);
        if (streams.output >= 0)
            ::posix_spawn_file_actions_adddup2(&_actions, streams.output, STDOUT_FILENO);
        if (streams.error >= 0)
            ::posix_spawn_file_actions_adddup2(&_actions, streams.error, STDERR_FILENO);
    }
    SpawnStreams(const SpawnStreams&) = delete;
    SpawnStreams& operator=(const SpawnStreams&) = delete;
    ~SpawnStreams() { ::posix_spawn_file_actions_destroy(&_actions); }

    const posix_spawn_file_actions_t* get() const { return &_actions; }

private:
    posix_spawn_file_actions_t _actions;
};

} // namespace

std::expected<pid_t, int> spawn(const std::vector<std::string>& command, const StandardStreams& streams)
{
    std::vector<char*> arguments;
    for (const auto& argument : command) {
        if (argument.find('\0') != std::string::npos)
            return std::unexpected(EINVAL);
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    if (arguments.empty())
        return std::unexpected(EINVAL);
    arguments.push_back(nullptr);

    pid_t child = -1;
    const int failure = ::posix_spawnp(&child, arguments[0], SpawnStreams(streams).get(), SpawnAttributes().get(),
                                       arguments.data(), environ);
    if (failure != 0)
        return std::unexpected(failure);
    return child;
}

void reap(pid_t child)
{
    Queue::global()->async([child] {
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) { }
    });
}

bool launch(const std::vector<std::string>& command)
{
    const auto child = spawn(command);
    if (child)
        reap(*child);
    return child.has_value();
}

} // namespace platform
