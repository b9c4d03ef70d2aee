#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <plist/plist.h>
#include <span>

namespace platform {

struct PlistFree {
    void operator()(void* tree) const { plist_free(tree); }
};

// A property list as the library holds it. It also has the references of a keyed archive, which values do not.
using PlistTree = std::unique_ptr<void, PlistFree>;

// Reads the binary format, or XML, after a look at what it would unfold into.
Result<PlistTree> readBinaryTree(std::span<const std::uint8_t> bytes);
Result<PlistTree> readXMLTree(std::span<const std::uint8_t> bytes);

Data writeBinaryTree(plist_t tree);

// From and to values. References have no value and fail.
Result<PropertyList> valueOfTree(plist_t tree);
Result<PlistTree> treeOfValue(const PropertyList& value);

// The text of a string node, when it is valid UTF-8 (null for other nodes).
Result<std::string> textOfTree(plist_t tree);

// Call the function for each element until it returns false. True when it never did.
bool forEachElement(plist_t array, const std::function<bool(plist_t)>& function);
bool forEachEntry(plist_t dictionary, const std::function<bool(const char* key, plist_t)>& function);

} // namespace platform
