#pragma once

#include "helper/update/UpdateConfiguration.h"
#include "platform/Error.h"

#include <cstdint>

namespace helper {

// A package is an archive, followed by an Ed25519 signature of 64 bytes and the eight bytes "BRVSIG1\n". What is signed
// is the text "com.zerkolin.brevane.package\n" and the SHA-512 digest of the archive.
class PackageSignature {
public:
    // The length of the archive, once the signature is known to be the key's. Otherwise an installer-package error:
    // 0 with the path, 1 or 2.
    static platform::Result<std::uint64_t> verifiedLength(int file, const std::string& path,
                                                          const std::optional<UpdateConfiguration::PublicKey>& key);
};

} // namespace helper
