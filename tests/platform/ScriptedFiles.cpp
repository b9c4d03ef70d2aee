#include "tests/platform/ScriptedFiles.h"

#include "tests/platform/ScriptedSystemInformation.h"

#include <mutex>
#include <thread>
#include <utility>

namespace scripted::files {

namespace {

std::mutex filesMutex;
std::vector<File> filesWritten;
std::optional<platform::Error> filesFailure;
std::chrono::milliseconds filesDuration{};

} // namespace

void reset()
{
    const std::lock_guard lock(filesMutex);
    filesWritten.clear();
    filesFailure.reset();
    filesDuration = {};
}

void setFailure(std::optional<platform::Error> error)
{
    const std::lock_guard lock(filesMutex);
    filesFailure = std::move(error);
}

void setDuration(std::chrono::milliseconds duration)
{
    const std::lock_guard lock(filesMutex);
    filesDuration = duration;
}

std::vector<File> written()
{
    const std::lock_guard lock(filesMutex);
    return filesWritten;
}

} // namespace scripted::files

namespace platform {

Result<void> writeFileAtomically(const std::string& path, std::string_view bytes)
{
    using namespace scripted::files;
    std::unique_lock lock(filesMutex);
    const auto duration = filesDuration;
    lock.unlock();
    std::this_thread::sleep_for(duration);
    lock.lock();
    if (filesFailure)
        return std::unexpected(*filesFailure);
    filesWritten.push_back({path, std::string(bytes), {}, scripted::system::suddenTerminationDisabled() > 0});
    return {};
}

bool setTagNames(const std::string& path, const std::vector<std::string>& names)
{
    using namespace scripted::files;
    const std::lock_guard lock(filesMutex);
    for (auto& file : filesWritten) {
        if (file.path == path)
            file.tagNames = names;
    }
    return false; // the user is not to notice
}

} // namespace platform
