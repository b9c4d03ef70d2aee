#include "helper/update/PackageSignature.h"

#include "helper/update/Cryptography.h"
#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
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
    SHA512 archive;
    std::vector<std::uint8_t> buffer(std::size_t(1) << 20);
    for (std::uint64_t offset = 0; offset < length;) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), length - offset));
        if (!readAt(file, buffer.data(), count, offset))
            return {};
        archive.add(std::span(buffer).first(count));
        offset += count;
    }
    const auto digest = archive.digest();
    platform::Data text(purpose.begin(), purpose.end());
    text.insert(text.end(), digest.begin(), digest.end());
    return text;
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
    if (!key || !verifiesEd25519(*key, text, std::span(trailer).first<signatureLength>()))
        return packageError(ZRKInstallerPackageErrorInvalidSignature);
    return length;
}

} // namespace helper
