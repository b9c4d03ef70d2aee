#include "platform/ByteCountFormat.h"
#include "tests/support/EnvironmentVariable.h"

#include <doctest/doctest.h>

namespace {

std::string inLocale(const char* locale, std::uint64_t count)
{
    const EnvironmentVariable all("LC_ALL", locale);
    platform::ByteCountFormat format;
    return format.stringFromByteCount(count);
}

} // namespace

TEST_CASE("sizes of files are told in the largest unit that gives at least one, a thousand apart")
{
    const auto text = [](std::uint64_t count) { return inLocale("en_US.UTF-8", count); };
    CHECK(text(0) == "0 bytes");
    CHECK(text(1) == "1 byte");
    CHECK(text(999) == "999 bytes");
    CHECK(text(1000) == "1 kB");
    CHECK(text(1499) == "1 kB");
    CHECK(text(16'384) == "16 kB");
    CHECK(text(1'234'567) == "1.2 MB");
    CHECK(text(5'000'000) == "5 MB");
    CHECK(text(1'234'567'890) == "1.23 GB");
    CHECK(text(2'500'000'000'000) == "2.5 TB");
    CHECK(text(1'000'000'000'000'000) == "1 PB");
    CHECK(text(UINT64_MAX) == "18,446.74 PB");
}

TEST_CASE("a size that would be rounded to a thousand is one of the next unit")
{
    const auto text = [](std::uint64_t count) { return inLocale("en_US.UTF-8", count); };
    CHECK(text(999'499) == "999 kB");
    CHECK(text(999'500) == "1 MB");
    CHECK(text(999'949'999) == "999.9 MB");
    CHECK(text(999'950'000) == "1 GB");
    CHECK(text(999'994'999'999) == "999.99 GB");
    CHECK(text(999'995'000'000) == "1 TB");
}

TEST_CASE("sizes of files are told in the user's language, and in English for the C locale")
{
    CHECK(inLocale("de_DE.UTF-8", 1'234'567) == "1,2 MB");
    CHECK(inLocale("fr_FR.UTF-8", 1'234'567) == "1,2\u202FMo");
    CHECK(inLocale("C.UTF-8", 1'234'567) == "1.2 MB");
    CHECK(inLocale("POSIX", 3) == "3 bytes");
}
