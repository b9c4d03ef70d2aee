#include "helper/update/PackageSignature.h"

#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <openssl/evp.h>
#include <openssl/sha.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace helper {

namespace {

constexpr std::string_view mark = "BRVSIG1\n";
constexpr std::string_view purpose = "com.zerkolin.brevane.package\n";
constexpr std::size_t signatureLength = 64;
constexpr std::size_t trailerLength = signatureLength + mark.size();

using Trailer = std::array<std::uint8_t, trailerLength>;
using Key = std::unique_ptr<EVP_PKEY, decltype([](EVP_PKEY* key) { EVP_PKEY_free(key); })>;
using Digest = std::unique_ptr<EVP_MD_CTX, decltype([](EVP_MD_CTX* digest) { EVP_MD_CTX_free(digest); })>;

bool readAt(int file, std::uint8_t* bytes, std::size_t count, std::uint64_t offset)
{
    while (count > 0) {
        auto read = ::pread(file, bytes, count, static_cast<off_t>(offset));
        if (read < 0 && errno == EINTR)
            continue;
        if (read <= 0)
            return false;
        bytes += read;
        offset += static_cast<std::uint64_t>(read);
        count -= static_cast<std::size_t>(read);
    }
    return true;
}

// The signed text of the archive that the file begins with; empty when the file cannot be read.
platform::Data signedText(int file, std::uint64_t length)
{
    const Digest digest(EVP_MD_CTX_new());
    std::vector<std::uint8_t> buffer(std::size_t(1) << 20);
    bool isGood = digest && EVP_DigestInit_ex(digest.get(), EVP_sha512(), nullptr) == 1;
    for (std::uint64_t offset = 0; isGood && offset < length;) {
        auto count = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), length - offset));
        isGood =
            readAt(file, buffer.data(), count, offset) && EVP_DigestUpdate(digest.get(), buffer.data(), count) == 1;
        offset += count;
    }
    platform::Data text(purpose.begin(), purpose.end());
    text.resize(purpose.size() + SHA512_DIGEST_LENGTH);
    if (!isGood || EVP_DigestFinal_ex(digest.get(), text.data() + purpose.size(), nullptr) != 1)
        return {};
    return text;
}

bool isSignedBy(const UpdateConfiguration::PublicKey& publicKey, const platform::Data& text, const Trailer& trailer)
{
    const Key key(EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, publicKey.data(), publicKey.size()));
    const Digest context(EVP_MD_CTX_new());
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1
        && EVP_DigestVerify(context.get(), trailer.data(), signatureLength, text.data(), text.size()) == 1;
}

std::unexpected<platform::Error> packageError(std::int64_t code, platform::Dictionary userInfo = {})
{
    return std::unexpected(ZRKError::errorWithDomain(ZRKInstallerPackageErrorDomain, code, std::move(userInfo)));
}

} // namespace

platform::Result<std::uint64_t>
PackageSignature::verifiedLength(int file, const std::string& path,
                                 const std::optional<UpdateConfiguration::PublicKey>& key)
{
    struct stat status{};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        return packageError(ZRKInstallerPackageErrorRead, {{"path", path}});
    auto size = static_cast<std::uint64_t>(status.st_size);
    if (size < trailerLength)
        return packageError(ZRKInstallerPackageErrorNotSigned);
    auto length = size - trailerLength;
    Trailer trailer{};
    if (!readAt(file, trailer.data(), trailer.size(), length))
        return packageError(ZRKInstallerPackageErrorRead, {{"path", path}});
    if (!std::equal(mark.begin(), mark.end(), trailer.begin() + signatureLength))
        return packageError(ZRKInstallerPackageErrorNotSigned);
    auto text = signedText(file, length);
    if (text.empty())
        return packageError(ZRKInstallerPackageErrorRead, {{"path", path}});
    if (!key || !isSignedBy(*key, text, trailer))
        return packageError(ZRKInstallerPackageErrorInvalidSignature);
    return length;
}

} // namespace helper
