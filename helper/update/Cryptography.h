#pragma once

#include "helper/update/UpdateConfiguration.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace helper {

std::array<std::uint8_t, 32> sha256(std::span<const std::uint8_t> bytes);

// Of bytes that come one after the other.
class SHA512 {
public:
    using Digest = std::array<std::uint8_t, 64>;

    SHA512();
    ~SHA512();
    SHA512(const SHA512&) = delete;
    SHA512& operator=(const SHA512&) = delete;

    void add(std::span<const std::uint8_t> bytes);
    Digest digest(); // once, at the end

private:
    struct State;
    std::unique_ptr<State> _state;
};

// Whether the Ed25519 signature of the whole text is the key's.
bool verifiesEd25519(const UpdateConfiguration::PublicKey& key, std::span<const std::uint8_t> text,
                     std::span<const std::uint8_t, 64> signature);

} // namespace helper
