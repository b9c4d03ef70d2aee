#include "tests/platform/ScriptedProcess.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace scripted::process {

namespace {

struct Script {
    std::mutex mutex;
    std::condition_variable wake;
    int startFailure = 0;
    std::vector<std::string> pieces;
    int status = 0;
    bool held = false;
    std::vector<Start> starts;
    std::size_t greatestRead = 0;
    std::size_t waits = 0;
    std::size_t unclosedWaits = 0;
    std::size_t kills = 0;
    bool ignoresKill = false;
};

Script& script()
{
    static auto* const shared = new Script;
    return *shared;
}

class PlayedProcess final : public platform::Process {
public:
    explicit PlayedProcess(const std::vector<std::string>& pieces) : _pieces(pieces.begin(), pieces.end()) { }

    std::size_t read(std::span<char> buffer) override
    {
        std::unique_lock lock(script().mutex);
        script().greatestRead = std::max(script().greatestRead, buffer.size());
        script().wake.wait(lock, [this] { return !script().held || (_killed && !script().ignoresKill); });
        if (_pieces.empty() || _killed)
            return 0;
        auto& piece = _pieces.front();
        const auto count = std::min(piece.size(), buffer.size());
        std::ranges::copy_n(piece.begin(), static_cast<std::ptrdiff_t>(count), buffer.begin());
        piece.erase(0, count);
        if (piece.empty())
            _pieces.pop_front();
        return count;
    }

    void closeOutput() override { _closed = true; }

    void kill() override
    {
        const std::lock_guard lock(script().mutex);
        _killed = true;
        script().kills += 1;
        script().wake.notify_all();
    }

    int waitUntilExit() override
    {
        const std::lock_guard lock(script().mutex);
        ++script().waits;
        script().unclosedWaits += !_closed;
        return script().status;
    }

private:
    std::deque<std::string> _pieces;
    bool _closed = false;
    bool _killed = false;
};

} // namespace

void reset()
{
    letGo();
    const std::lock_guard lock(script().mutex);
    script().startFailure = 0;
    script().pieces.clear();
    script().status = 0;
    script().starts.clear();
    script().greatestRead = script().waits = script().unclosedWaits = script().kills = 0;
    script().ignoresKill = false;
}

void failToStart(int error)
{
    const std::lock_guard lock(script().mutex);
    script().startFailure = error;
}

void setOutput(std::vector<std::string> pieces)
{
    const std::lock_guard lock(script().mutex);
    std::erase(pieces, "");
    script().pieces = std::move(pieces);
}

void setExitStatus(int status)
{
    const std::lock_guard lock(script().mutex);
    script().status = status;
}

void hold()
{
    const std::lock_guard lock(script().mutex);
    script().held = true;
}

void letGo()
{
    const std::lock_guard lock(script().mutex);
    script().held = false;
    script().wake.notify_all();
}

void ignoreKill()
{
    const std::lock_guard lock(script().mutex);
    script().ignoresKill = true;
}

std::size_t kills()
{
    const std::lock_guard lock(script().mutex);
    return script().kills;
}

std::vector<Start> starts()
{
    const std::lock_guard lock(script().mutex);
    return script().starts;
}

std::size_t greatestRead()
{
    const std::lock_guard lock(script().mutex);
    return script().greatestRead;
}

std::size_t waitedFor()
{
    const std::lock_guard lock(script().mutex);
    return script().waits;
}

std::size_t unclosedWaits()
{
    const std::lock_guard lock(script().mutex);
    return script().unclosedWaits;
}

} // namespace scripted::process

namespace platform {

std::expected<std::unique_ptr<Process>, int> Process::start(const std::string& path,
                                                            const std::vector<std::string>& arguments)
{
    auto& script = scripted::process::script();
    const std::lock_guard lock(script.mutex);
    script.starts.push_back({path, arguments});
    if (script.startFailure != 0)
        return std::unexpected(script.startFailure);
    return std::make_unique<scripted::process::PlayedProcess>(script.pieces);
}

} // namespace platform
