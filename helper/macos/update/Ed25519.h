#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace helper {

// Verifies signatures as RFC 8032 has them, for systems that cannot. It knows no secret, so how long it takes is of no
// interest.
class Ed25519 {
public:
    using PublicKey = std::array<std::uint8_t, 32>;

    // Whether the signature of the text is the key's. A key or a signature that is not written in its one right form
    // verifies nothing.
    static bool verifies(const PublicKey& key, std::span<const std::uint8_t> text,
                         std::span<const std::uint8_t, 64> signature);
};

} // namespace helper
