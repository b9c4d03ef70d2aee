#include "diagnostics/console/LogFetch.h"

#include <utility>

void LogFetch::stop()
{
    const std::lock_guard lock(_mutex);
    _isStopped = true;
    if (_tool)
        _tool->kill();
}

bool LogFetch::isStopped() const
{
    const std::lock_guard lock(_mutex);
    return _isStopped;
}

void LogFetch::setTool(std::shared_ptr<platform::Process> tool)
{
    const std::lock_guard lock(_mutex);
    _tool = std::move(tool);
    if (_isStopped)
        _tool->kill();
}
