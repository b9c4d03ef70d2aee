#include "tests/fuzz/RoundTrip.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const auto value = platform::propertyListWithData({bytes, size});
    if (value)
        requireRoundTrip(*value);
    else
        require(value.error().domain == platform::CocoaErrorDomain);
    return 0;
}
