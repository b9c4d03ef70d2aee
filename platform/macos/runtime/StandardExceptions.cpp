// The C++ library of systems before 10.13 has no home for these two exceptions. Defining the functions that anchor them
// brings them into the program, which then asks no system for them.
#include <optional>
#include <variant>

namespace std {

bad_optional_access::~bad_optional_access() noexcept = default;

const char* bad_optional_access::what() const noexcept
{
    return "bad_optional_access";
}

const char* bad_variant_access::what() const noexcept
{
    return "bad_variant_access";
}

} // namespace std
