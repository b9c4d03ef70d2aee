#include "sandbox/authority/Grants.h"

#include <algorithm>
#include <fstream>
#include <sstream>

std::optional<Process> Process::running(std::uint32_t identifier)
{
    std::ifstream file("/proc/" + std::to_string(identifier) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), {});
    // The second field, the program's name in parentheses, may hold anything; the start time is the 22nd.
    auto end = text.rfind(')');
    if (end == std::string::npos)
        return std::nullopt;
    std::istringstream fields(text.substr(end + 1));
    std::string skipped;
    for (int field = 3; field < 22; ++field)
        fields >> skipped;
    Process process{identifier, 0};
    if (!(fields >> process.startTime))
        return std::nullopt;
    return process;
}

const Grants::Grant& Grants::add(const Process& process, const std::string& action, Clock::time_point now)
{
    return _grants.emplace_back("grant" + std::to_string(++_count), process, action, now);
}

const Grants::Grant* Grants::find(const Process& process, const std::string& action, Clock::time_point now)
{
    forgetExpired(now);
    auto found = std::ranges::find_if(
        _grants, [&](const Grant& grant) { return grant.process == process && grant.action == action; });
    return found == _grants.end() ? nullptr : &*found;
}

const std::vector<Grants::Grant>& Grants::all(Clock::time_point now)
{
    forgetExpired(now);
    return _grants;
}

bool Grants::revoke(const std::string& identifier)
{
    return std::erase_if(_grants, [&](const Grant& grant) { return grant.identifier == identifier; }) > 0;
}

void Grants::revokeAll(const Process& process)
{
    std::erase_if(_grants, [&](const Grant& grant) { return grant.process == process; });
}

void Grants::forgetExpired(Clock::time_point now)
{
    std::erase_if(_grants, [&](const Grant& grant) { return now - grant.since >= lifetime; });
}
