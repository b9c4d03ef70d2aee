#include <cstdlib>

namespace {

// Before the first text is looked up: a table whose labels differ.
[[maybe_unused]] const int isSet = ::setenv("BREVANE_RESOURCES", BREVANE_TEST_RESOURCES, 1);

} // namespace
