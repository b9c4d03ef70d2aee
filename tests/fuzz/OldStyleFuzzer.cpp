#include "tests/fuzz/RoundTrip.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto value = platform::propertyListWithOldStyleText({reinterpret_cast<const char*>(bytes), size});
    if (!value) {
        require(value.error().domain == platform::CocoaErrorDomain);
        return 0;
    }
    requireRoundTrip(*value);
    return 0;
}
