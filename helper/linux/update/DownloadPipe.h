#pragma once

#include "helper/update/Download.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace helper {

// What a process that downloads tells the one that waits for it, over a pipe: pieces of the content, signs of life, and
// how it ended. Each is a letter, a length of four bytes, the lowest first, and that many bytes.
class DownloadPipe {
public:
    static constexpr std::size_t maximumPiece = 65536; // bytes

    // The side that downloads. 0 or an errno value: EPIPE when nobody reads any more.
    static int writePiece(int pipe, std::span<const std::uint8_t> bytes);
    static int writeSignOfLife(int pipe);
    static int writeOutcome(int pipe, const Download::Outcome<void>& outcome);

    // The side that waits. It trusts the other in nothing: what is too much, damaged or cut off is a failure.
    using Source = std::function<std::size_t(std::span<char>)>; // 0 at the end
    static Download::Outcome<void> read(const Source& source, const Download::Terms& terms, const Download::Sink& sink);
};

} // namespace helper
