#pragma once

#include <expected>
#include <functional>
#include <string>
#include <vector>

// A check of everything in the application that needs neither the scheduler helper nor anybody's consent, for whoever
// starts it on a system for the first time: every interface in every language and state, and what the platform offers.
namespace selfcheck {

// What was found, in a few words of English, or what is wrong.
using Finding = std::expected<std::string, std::string>;

struct Check {
    std::string subject;
    std::function<Finding()> run;
};

// Those of the platform's facilities, and those of the interfaces, each of which lays itself out in all its states.
std::vector<Check> facilityChecks();
std::vector<Check> interfaceChecks();

// Prints a line a check and stops at the first that fails. False when one did.
bool runChecks(const std::string& language, const std::vector<Check>& checks);

// `brevane --self-check`: all checks in all languages, each in a process of its own (`--self-check LANGUAGE`). The
// exit status: 0, or 1 after the first fault.
int main(int argc, char** argv);

} // namespace selfcheck
