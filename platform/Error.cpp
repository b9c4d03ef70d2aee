#include "platform/Error.h"

namespace platform {

bool Error::operator==(const Error& other) const
{
    const Error* left = this;
    const Error* right = &other;
    while (left != right) {
        if (!left || !right || left->code != right->code || left->domain != right->domain
            || left->userInfo != right->userInfo)
            return false;
        left = left->underlying.get();
        right = right->underlying.get();
    }
    return true;
}

} // namespace platform
