#pragma once

#include "platform/Process.h"

#include <cstddef>
#include <string>
#include <vector>

// Child processes and what they write to their standard output. Any thread.
namespace scripted::process {

struct Start {
    std::string path;
    std::vector<std::string> arguments;
};

void reset(); // processes that write nothing and exit with 0
void failToStart(int error);
// Of every process from now on; each read gets at most one of the pieces.
void setOutput(std::vector<std::string> pieces);
void setExitStatus(int status);

// Processes that start from now on write nothing until they are let go.
void hold();
void letGo();

// Processes that are held stay so when they are killed, as one that waits for a broken disk does.
void ignoreKill();

std::vector<Start> starts();
std::size_t kills();
std::size_t greatestRead();  // the largest buffer that was offered
std::size_t waitedFor();     // processes whose end was waited for
std::size_t unclosedWaits(); // those that were waited for while their output was open

} // namespace scripted::process
