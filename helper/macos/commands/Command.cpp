#include "helper/macos/commands/Command.h"

#include "platform/Process.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

namespace helper {

namespace {

constexpr std::size_t maximumOutput = std::size_t(1) << 20;
constexpr std::size_t longestWords = 300;

// Ends a process that does not end by itself.
class Watchdog {
public:
    Watchdog(platform::Process& process, std::chrono::milliseconds limit)
        : _thread([this, &process, limit] {
              std::unique_lock guard(_lock);
              if (_changed.wait_for(guard, limit, [this] { return _isOver; }))
                  return;
              _hasBitten = true;
              process.kill();
          })
    {
    }
    ~Watchdog()
    {
        {
            const std::lock_guard guard(_lock);
            _isOver = true;
        }
        _changed.notify_one();
        _thread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    bool hasBitten()
    {
        const std::lock_guard guard(_lock);
        return _hasBitten;
    }

private:
    std::mutex _lock; // guards what follows
    std::condition_variable _changed;
    bool _isOver = false;
    bool _hasBitten = false;
    std::thread _thread; // begins last
};

// Its last line that is not empty, without the program's name before it.
std::string lastWords(std::string_view output, std::string_view name)
{
    constexpr std::string_view space = " \t\r\n";
    const auto last = output.find_last_not_of(space);
    if (last == std::string_view::npos)
        return {};
    output = output.substr(0, last + 1);
    output.remove_prefix(output.rfind('\n') + 1); // 0 when there is none
    output.remove_prefix(std::min(output.find_first_not_of(space), output.size()));
    if (const auto prefix = std::string(name) + ": "; output.starts_with(prefix))
        output.remove_prefix(prefix.size());
    while (output.ends_with('.'))
        output.remove_suffix(1);
    return std::string(output.substr(0, longestWords));
}

} // namespace

CommandEnd runCommand(const std::vector<std::string>& command, std::chrono::milliseconds limit)
{
    // The shell puts both kinds of output into one, and becomes the program.
    std::vector<std::string> arguments{"-c", "exec \"$@\" 2>&1 </dev/null", "sh"};
    arguments.insert(arguments.end(), command.begin(), command.end());
    const auto process = platform::Process::start("/bin/sh", arguments);
    if (!process)
        return {.status = CommandEnd::cannotRun, .wasInTime = true, .output = std::strerror(process.error())};
    CommandEnd end;
    Watchdog watchdog(**process, limit);
    std::array<char, 16384> buffer{};
    while (const auto count = (*process)->read(buffer))
        end.output.append(buffer.data(), std::min(count, maximumOutput - end.output.size()));
    (*process)->closeOutput();
    end.status = (*process)->waitUntilExit();
    end.wasInTime = !watchdog.hasBitten();
    return end;
}

std::expected<void, std::string> successOf(std::expected<std::string, std::string> output)
{
    if (!output)
        return std::unexpected(std::move(output.error()));
    return {};
}

std::string failureOfCommand(const std::vector<std::string>& command, const CommandEnd& end)
{
    const auto& path = command.front();
    const auto name = path.substr(path.rfind('/') + 1);
    if (!end.wasInTime)
        return name + " did not answer in time";
    if (end.status == CommandEnd::notThere)
        return "there is no program '" + path + "'";
    if (end.status == CommandEnd::cannotRun)
        return "'" + path + "' cannot be run";
    if (auto words = lastWords(end.output, name); !words.empty())
        return words;
    if (end.status < 0)
        return name + " was ended by signal " + std::to_string(-end.status);
    return name + " ended with status " + std::to_string(end.status);
}

} // namespace helper
