#pragma once

#include "platform/Data.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <sys/types.h>

namespace platform {

// Small files that are replaced whole: after a crash, a kill or a power cut at any moment the path holds the old or
// the new content, never a mixture. Failures are errno values.

// Writes beside the file, syncs, renames over it and syncs the folder, which must exist. When it returns success
// the content survives a power cut; when it fails before the rename, as on a full disk, the old file is untouched
// and nothing is left beside it.
std::expected<void, int> replaceFile(const std::string& path, std::span<const std::uint8_t> bytes, mode_t mode = 0644);

// Removes what replaceFile() left beside the file when it was killed. No writer may be at work.
void removeInterruptedReplacements(const std::string& path);

// The whole of a regular file. EFBIG when it holds more than `limit` bytes, EINVAL when it is not a regular file.
std::expected<Data, int> readFile(const std::string& path, std::size_t limit = std::size_t(16) << 20);
// The same from an open file's present position to its end.
std::expected<Data, int> readFile(int file, std::size_t limit);

} // namespace platform
