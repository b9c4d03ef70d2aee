#pragma once

// Counts the program's calls of write() and fstat() since reset(), and lets fstat() fail on demand.
namespace counted {

void reset();
int writes();
int queries();
void failQueries(int error); // 0 to stop

} // namespace counted
