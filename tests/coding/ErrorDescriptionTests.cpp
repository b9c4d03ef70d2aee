#include "platform/Error.h"

#include <cerrno>
#include <cstring>
#include <doctest/doctest.h>

using platform::localizedDescription;

TEST_CASE("an error with a description of its own has that")
{
    CHECK(localizedDescription({platform::POSIXErrorDomain, ENOENT, {{platform::LocalizedDescriptionKey, "Lost."}}, {}})
          == "Lost.");
}

TEST_CASE("a POSIX error has the system's text for its code")
{
    CHECK(localizedDescription({platform::POSIXErrorDomain, ENOENT, {}, nullptr}) == std::strerror(ENOENT));
    CHECK(localizedDescription({platform::POSIXErrorDomain, 99999, {}, nullptr}) == std::strerror(99999));
}

TEST_CASE("another error names its domain and code")
{
    CHECK(localizedDescription({"com.zerkolin.unknown", -7, {}, nullptr})
          == "The operation couldn’t be completed. (com.zerkolin.unknown error -7.)");
    CHECK(localizedDescription({"d", INT64_MIN, {}, nullptr})
          == "The operation couldn’t be completed. (d error -9223372036854775808.)");
    CHECK(localizedDescription({platform::POSIXErrorDomain, -1, {}, nullptr})
          == "The operation couldn’t be completed. (NSPOSIXErrorDomain error -1.)");
    CHECK(localizedDescription({"d", 5, {{platform::LocalizedDescriptionKey, 5}}, nullptr})
          == "The operation couldn’t be completed. (d error 5.)");
}
