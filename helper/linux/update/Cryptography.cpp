#include "helper/update/Cryptography.h"

#include <new>
#include <openssl/evp.h>
#include <openssl/sha.h>

namespace helper {

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype([](EVP_PKEY* key) { EVP_PKEY_free(key); })>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, decltype([](EVP_MD_CTX* digest) { EVP_MD_CTX_free(digest); })>;

} // namespace

struct SHA512::State {
    DigestContext context{EVP_MD_CTX_new()};
};

SHA512::SHA512() : _state(std::make_unique<State>())
{
    if (!_state->context || EVP_DigestInit_ex(_state->context.get(), EVP_sha512(), nullptr) != 1)
        throw std::bad_alloc();
}

SHA512::~SHA512() = default;

void SHA512::add(std::span<const std::uint8_t> bytes)
{
    EVP_DigestUpdate(_state->context.get(), bytes.data(), bytes.size());
}

SHA512::Digest SHA512::digest()
{
    Digest digest{};
    static_assert(std::tuple_size_v<Digest> == SHA512_DIGEST_LENGTH);
    EVP_DigestFinal_ex(_state->context.get(), digest.data(), nullptr);
    return digest;
}

std::array<std::uint8_t, 32> sha256(std::span<const std::uint8_t> bytes)
{
    std::array<std::uint8_t, 32> digest{};
    static_assert(std::tuple_size_v<decltype(digest)> == SHA256_DIGEST_LENGTH);
    ::SHA256(bytes.data(), bytes.size(), digest.data());
    return digest;
}

bool verifiesEd25519(const UpdateConfiguration::PublicKey& publicKey, std::span<const std::uint8_t> text,
                     std::span<const std::uint8_t, 64> signature)
{
    const Key key(EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, publicKey.data(), publicKey.size()));
    const DigestContext context(EVP_MD_CTX_new());
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1
        && EVP_DigestVerify(context.get(), signature.data(), signature.size(), text.data(), text.size()) == 1;
}

} // namespace helper
