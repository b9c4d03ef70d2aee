#include "helper/macos/update/Ed25519.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <doctest/doctest.h>
#include <memory>
#include <openssl/evp.h>
#include <random>
#include <string_view>
#include <vector>

using helper::Ed25519;

namespace {

using Bytes = std::vector<std::uint8_t>;
using SignatureBytes = std::array<std::uint8_t, 64>;
using Key = std::unique_ptr<EVP_PKEY, decltype([](EVP_PKEY* key) { EVP_PKEY_free(key); })>;
using Digest = std::unique_ptr<EVP_MD_CTX, decltype([](EVP_MD_CTX* digest) { EVP_MD_CTX_free(digest); })>;

Bytes bytesOf(std::string_view hexadecimal)
{
    Bytes bytes(hexadecimal.size() / 2);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        const char* const at = hexadecimal.data() + 2 * index;
        REQUIRE(std::from_chars(at, at + 2, bytes[index], 16).ec == std::errc());
    }
    return bytes;
}

template <class Array>
Array arrayOf(std::string_view hexadecimal)
{
    const auto bytes = bytesOf(hexadecimal);
    Array array{};
    REQUIRE(bytes.size() == array.size());
    std::ranges::copy(bytes, array.begin());
    return array;
}

bool verifiesByLibrary(const Ed25519::PublicKey& key, const Bytes& text, const SignatureBytes& signature)
{
    const Key loaded(EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, key.data(), key.size()));
    const Digest context(EVP_MD_CTX_new());
    return loaded && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, loaded.get()) == 1
        && EVP_DigestVerify(context.get(), signature.data(), signature.size(), text.data(), text.size()) == 1;
}

// Both, which must say the same.
bool verifies(const Ed25519::PublicKey& key, const Bytes& text, const SignatureBytes& signature)
{
    const bool ours = Ed25519::verifies(key, text, signature);
    CHECK(ours == verifiesByLibrary(key, text, signature));
    return ours;
}

struct Signed {
    Ed25519::PublicKey key{};
    Bytes text;
    SignatureBytes signature{};
};

// With a new key.
Signed signedByLibrary(Bytes text)
{
    const Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"));
    const Digest context(EVP_MD_CTX_new());
    Signed made{.key = {}, .text = std::move(text), .signature = {}};
    std::size_t keyLength = made.key.size();
    std::size_t length = made.signature.size();
    REQUIRE(EVP_PKEY_get_raw_public_key(key.get(), made.key.data(), &keyLength) == 1);
    REQUIRE(EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1);
    REQUIRE(EVP_DigestSign(context.get(), made.signature.data(), &length, made.text.data(), made.text.size()) == 1);
    return made;
}

Bytes randomBytes(std::mt19937& random, std::size_t count)
{
    Bytes bytes(count);
    std::ranges::generate(bytes, [&random] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

constexpr const char* firstKey = "d75a980182b10ab7d54bfed3c964073a0ee172f3daa62325af021a68f707511a";
constexpr const char* firstSignature = "e5564300c360ac729086e2cc806e828a84877f1eb8e5d974d873e06522490155"
                                       "5fb8821590a33bacc61e39701cf9b46bd25bf5f0595bbe24655141438e7a100b";

} // namespace

TEST_CASE("the standard's own signatures of Ed25519 verify")
{
    const auto check = [](const char* key, const char* text, const char* signature) {
        return verifies(arrayOf<Ed25519::PublicKey>(key), bytesOf(text), arrayOf<SignatureBytes>(signature));
    };
    CHECK(check(firstKey, "", firstSignature));
    CHECK(check("3d4017c3e843895a92b70aa74d1b7ebc9c982ccf2ec4968cc0cd55f12af4660c", "72",
                "92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da"
                "085ac1e43e15996e458f3613d0f11d8c387b2eaeb4302aeeb00d291612bb0c00"));
    CHECK(check("fc51cd8e6218a1a38da47ed00230f0580816ed13ba3303ac5deb911548908025", "af82",
                "6291d657deec24024827e69c3abe01a30ce548a284743a445e3680d7db5ac3ac"
                "18ff9b538d16f290ae67f760984dc6594a7c15e9716ed28dc027beceea1ec40a"));
    CHECK(check("ec172b93ad5e563bf4932c70e1245034c35467ef2efd4d64ebf819683467e2bf",
                "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
                "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f",
                "dc2a4459e7369633a52b1bf277839a00201009a3efbf3ecb69bea2186c26b589"
                "09351fc9ac90b3ecfdfbc7c66431e0303dca179c138ac17ad9bef1177331a704"));
}

TEST_CASE("signatures of random texts by random keys verify, and with one bit changed they do not")
{
    std::mt19937 random(20'261'122);
    for (int round = 0; round < 60; ++round) {
        auto made = signedByLibrary(randomBytes(random, random() % 200));
        CHECK(verifies(made.key, made.text, made.signature));
        const auto flip = [&random](auto& bytes) {
            const auto bit = random() % (bytes.size() * 8);
            bytes[bit / 8] ^= static_cast<std::uint8_t>(1 << (bit % 8));
        };
        auto signature = made.signature;
        flip(signature);
        CHECK_FALSE(verifies(made.key, made.text, signature));
        auto key = made.key;
        flip(key);
        CHECK_FALSE(verifies(key, made.text, made.signature));
        if (!made.text.empty())
            flip(made.text);
        else
            made.text.push_back(0);
        CHECK_FALSE(verifies(made.key, made.text, made.signature));
    }
}

TEST_CASE("random keys and signatures verify nothing")
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        Ed25519::PublicKey key{};
        SignatureBytes signature{};
        std::ranges::copy(randomBytes(random, key.size()), key.begin());
        std::ranges::copy(randomBytes(random, signature.size()), signature.begin());
        signature.back() &= 0x0f; // the second half may be in its range
        CHECK_FALSE(verifies(key, {1, 2, 3}, signature));
    }
}

TEST_CASE("a signature whose second half is written with the order added to it verifies nothing")
{
    constexpr std::array<std::uint8_t, 32> order{0xed, 0xd3, 0xf5, 0x5c, 0x1a, 0x63, 0x12, 0x58, 0xd6, 0x9c, 0xf7,
                                                 0xa2, 0xde, 0xf9, 0xde, 0x14, 0,    0,    0,    0,    0,    0,
                                                 0,    0,    0,    0,    0,    0,    0,    0,    0,    0x10};
    const auto key = arrayOf<Ed25519::PublicKey>(firstKey);
    auto signature = arrayOf<SignatureBytes>(firstSignature);
    unsigned carry = 0;
    for (std::size_t index = 0; index < order.size(); ++index) {
        carry += static_cast<unsigned>(signature[32 + index]) + order[index];
        signature[32 + index] = static_cast<std::uint8_t>(carry);
        carry >>= 8;
    }
    CHECK_FALSE(verifies(key, {}, signature));
}

TEST_CASE("a key that is no point of the curve, or not written in its one right form, verifies nothing")
{
    const auto signature = arrayOf<SignatureBytes>(firstSignature);
    // y is 2, which no point has; y is the modulus and more; x is 0 and said to be odd
    for (const char* const key : {"0200000000000000000000000000000000000000000000000000000000000000",
                                  "edffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f",
                                  "eeffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f",
                                  "ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff",
                                  "0100000000000000000000000000000000000000000000000000000000000080"})
        CHECK_FALSE(Ed25519::verifies(arrayOf<Ed25519::PublicKey>(key), {}, signature));

    // The neutral point is a key whose signatures anybody can make: 0 times the base point. In another form it is none.
    SignatureBytes neutral{};
    neutral[0] = 1;
    CHECK(verifies(arrayOf<Ed25519::PublicKey>("0100000000000000000000000000000000000000000000000000000000000000"), {},
                   neutral));
    CHECK_FALSE(Ed25519::verifies(
        arrayOf<Ed25519::PublicKey>("0100000000000000000000000000000000000000000000000000000000000080"), {}, neutral));
    CHECK_FALSE(Ed25519::verifies(
        arrayOf<Ed25519::PublicKey>("eeffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff7f"), {}, neutral));
    neutral[31] = 0x80;
    CHECK_FALSE(verifies(
        arrayOf<Ed25519::PublicKey>("0100000000000000000000000000000000000000000000000000000000000000"), {}, neutral));
}
