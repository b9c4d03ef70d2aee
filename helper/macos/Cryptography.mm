#include "helper/update/Cryptography.h"

#include "helper/macos/update/Ed25519.h"

#include <algorithm>
#include <CommonCrypto/CommonDigest.h>
#include <limits>

namespace helper {

namespace {

constexpr std::size_t mostAtOnce = std::numeric_limits<CC_LONG>::max();

} // namespace

std::array<std::uint8_t, 32> sha256(std::span<const std::uint8_t> bytes)
{
    CC_SHA256_CTX context;
    CC_SHA256_Init(&context);
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), mostAtOnce));
        CC_SHA256_Update(&context, part.data(), static_cast<CC_LONG>(part.size()));
        bytes = bytes.subspan(part.size());
    }
    std::array<std::uint8_t, 32> digest{};
    static_assert(std::tuple_size_v<decltype(digest)> == CC_SHA256_DIGEST_LENGTH);
    CC_SHA256_Final(digest.data(), &context);
    return digest;
}

struct SHA512::State {
    CC_SHA512_CTX context{};
};

SHA512::SHA512() : _state(std::make_unique<State>())
{
    CC_SHA512_Init(&_state->context);
}

SHA512::~SHA512() = default;

void SHA512::add(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const auto part = bytes.first(std::min(bytes.size(), mostAtOnce));
        CC_SHA512_Update(&_state->context, part.data(), static_cast<CC_LONG>(part.size()));
        bytes = bytes.subspan(part.size());
    }
}

SHA512::Digest SHA512::digest()
{
    Digest digest{};
    static_assert(std::tuple_size_v<Digest> == CC_SHA512_DIGEST_LENGTH);
    CC_SHA512_Final(digest.data(), &_state->context);
    return digest;
}

// The system has this kind of signature from macOS 10.15 on, and then for programs in Swift alone.
bool verifiesEd25519(const UpdateConfiguration::PublicKey& key, std::span<const std::uint8_t> text,
                     std::span<const std::uint8_t, 64> signature)
{
    return Ed25519::verifies(key, text, signature);
}

} // namespace helper
