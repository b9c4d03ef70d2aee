#pragma once

#include "platform/Error.h"

#include <string>

namespace helper {

// A rule of the system's authority, beside the stored definition of a right, by which administrators change settings
// without a password. It grants while it is there. One call at a time.
class AuthorityRules {
public:
    virtual ~AuthorityRules() = default;

    virtual std::string path() const = 0; // of its file
    virtual bool isWritten() const = 0;
    // On disk when it returns success.
    virtual platform::Result<void> write() const = 0;
    // An errno value's error when it is there and stays.
    virtual platform::Result<void> remove() const = 0;
};

} // namespace helper
