#pragma once

#include <string>

namespace platform {

// Where the edition is installed, below which the product's absolute paths stand.
inline constexpr const char* InstalledRoot = "/opt/brevane";

// Fixes the root for this process, whatever the environment says. A privileged program calls it before anything else,
// with its argument or InstalledRoot, and then never reads BREVANE_ROOT.
void setSystemRoot(const std::string& path);

// The root given to setSystemRoot(), else BREVANE_ROOT, else InstalledRoot. Absolute, without a trailing slash, and
// so empty for "/".
std::string systemRoot();

// Whether this is a sandbox, with logs and devices of its own below its root.
bool usesSandboxStore();

} // namespace platform
