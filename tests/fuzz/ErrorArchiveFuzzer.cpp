#include "platform/ErrorArchive.h"
#include "tests/fuzz/Require.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto strict = platform::unarchivedError({bytes, size}, true);
    const auto lenient = platform::unarchivedError({bytes, size}, false);
    // What is fine with classes checked is the same without.
    require(!strict || (lenient && *strict == *lenient));
    if (!lenient) {
        require(lenient.error().domain == platform::CocoaErrorDomain);
        return 0;
    }
    const auto readBack = platform::unarchivedError(platform::archivedError(*lenient), true);
    require(readBack && *readBack == *lenient);
    return 0;
}
