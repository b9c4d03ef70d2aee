#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <plist/plist.h>
#include <span>
#include <string>

namespace platform {

struct PlistFree {
    void operator()(void* tree) const { plist_free(tree); }
};

// A property list as the library holds it. It also has the references of a keyed archive, which values do not.
using PlistTree = std::unique_ptr<void, PlistFree>;

// Reads the binary format after a look at what it would unfold into. Null when it is damaged.
PlistTree readBinaryTree(std::span<const std::uint8_t> bytes);

// Nothing when there is a reference or a text that is not UTF-8.
std::optional<PropertyList> valueOfTree(plist_t tree);

// Nothing for other nodes than strings.
std::optional<std::string> textOfTree(plist_t tree);

// Call the function for each element until it returns false. True when it never did.
bool forEachElement(plist_t array, const std::function<bool(plist_t)>& function);
bool forEachEntry(plist_t dictionary, const std::function<bool(const char* key, plist_t)>& function);

} // namespace platform
