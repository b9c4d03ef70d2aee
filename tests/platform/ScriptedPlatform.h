#pragma once

namespace scripted {

// Every facility as in a new process. A test's first line.
void reset();

} // namespace scripted
