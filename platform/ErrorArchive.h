#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <span>

namespace platform {

// An error value as the platform's keyed archiver lays it out: a binary property list with "$archiver",
// "$version", "$top" {"root"} and "$objects", the error an object of class NSError with "NSCode", "NSDomain" and
// "NSUserInfo", underlying errors nested in the user info.
Data archivedError(const Error& error);

// Reads such an archive. With `secure`, the root and every object in it must be of a class that an error may hold
// (error, dictionary, array, string, number, date, data and their mutable kinds); without it, values of
// other classes are left out. Fails with a CocoaErrorDomain error; never recurses without bound.
Result<Error> unarchivedError(std::span<const std::uint8_t> bytes, bool secure);

} // namespace platform
