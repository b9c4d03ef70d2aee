#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <span>

namespace platform {

// An error value as the platform's keyed archiver lays it out: a binary property list with "$archiver",
// "$version", "$top" {"root"} and "$objects", the error an object of class NSError with "NSCode", "NSDomain" and
// "NSUserInfo", underlying errors nested in the user info. Of a chain of more than 1,000 errors the rest is left out,
// and so are values nested more than 64 deep and UIDs.
Data archivedError(const Error& error);

// Reads such an archive, in the XML format too. The user info may hold what a property list holds, and a URL (as its
// absolute string) or a set (as an array); values of other classes are left out. With `secure` no object of another
// class is made, which macOS otherwise does. Damage, objects that contain themselves, and more than 1,000 errors are a
// CocoaErrorDomain error.
Result<Error> unarchivedError(std::span<const std::uint8_t> bytes, bool secure);

} // namespace platform
