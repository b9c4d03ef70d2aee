#pragma once

#include <string>

namespace platform {

// Where the edition is installed, below which the product's absolute paths stand. Absolute, and "/" where they are the
// system's own.
const char* installedRoot();

// Fixes the root for this process, whatever the environment says. A privileged program calls it before anything else,
// with its argument or installedRoot(), and then never reads BREVANE_ROOT.
void setSystemRoot(const std::string& path);

// The root given to setSystemRoot(), else, where editions may stand anywhere, BREVANE_ROOT, else installedRoot().
// Absolute, without a trailing slash, and so empty for "/".
std::string systemRoot();

// Whether this is a sandbox, with logs and devices of its own below its root.
bool usesSandboxStore();

} // namespace platform
