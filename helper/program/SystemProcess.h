#pragma once

#include <optional>

namespace helper {

// What the program does in another way on each system.

// What its arguments ask for besides serving. The exit status; nullopt when it is to serve.
std::optional<int> runSystemCommand(int count, char** arguments);

// Before it serves.
void prepareProcess();

// Why it serves no longer, without having been told to end.
extern const char* const lossOfService;

// After another version has taken this one's place: goes on as that one, with the same arguments, or ends so that it is
// started. The exit status; when the new one should have gone on and cannot, EX_TEMPFAIL.
int startNextVersion(char** arguments);

// After the product was removed: there is nothing left to start. May end this process.
void leaveService();

} // namespace helper
