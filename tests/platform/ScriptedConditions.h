#pragma once

#include "platform/ComputerUse.h"
#include "platform/NetworkRoute.h"
#include "platform/PowerSources.h"
#include "platform/SleepPreventers.h"

#include <string>
#include <vector>

// What the machine is like. Any thread; those who follow it are told on their queues.
namespace scripted::conditions {

void reset(); // all as on a system that tells nothing; handlers of the time before are never called

void setPower(const platform::PowerState& state);
void setUse(const platform::ComputerUse& use);
void setSleepPreventers(const platform::SleepPreventers& preventers);
void setRoute(const platform::NetworkRoute& route);

void setInhibitable(bool isInhibitable);        // true at first
std::vector<std::string> reasonsAgainstSleep(); // of the inhibitors that live, oldest first

} // namespace scripted::conditions
