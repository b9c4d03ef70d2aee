#include "platform/macos/interface/PlainTitle.h"

namespace platform::macos {

std::string plainTitle(std::string_view marked)
{
    std::string plain;
    while (!marked.empty()) {
        // Scripts without letters name the key behind the title.
        if (marked.size() >= 4 && marked.starts_with("(&") && marked[3] == ')') {
            marked.remove_prefix(4);
            continue;
        }
        if (marked.front() == '&')
            marked.remove_prefix(1);
        plain.append(marked.substr(0, 1));
        marked.remove_prefix(marked.empty() ? 0 : 1);
    }
    return plain;
}

} // namespace platform::macos
