#include "platform/Error.h"

#include <algorithm>

namespace platform {

bool Error::operator==(const Error& other) const
{
    const auto same = [](const auto& one, const auto& another) { return *one == *another; };
    const Error* left = this;
    const Error* right = &other;
    while (left != right) {
        if (!left || !right || left->code != right->code || left->domain != right->domain
            || left->userInfo != right->userInfo
            || !std::ranges::equal(left->multipleUnderlying, right->multipleUnderlying, same))
            return false;
        left = left->underlying.get();
        right = right->underlying.get();
    }
    return true;
}

} // namespace platform
