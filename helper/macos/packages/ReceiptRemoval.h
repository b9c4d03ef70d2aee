#pragma once

#include "helper/macos/packages/PackageReceipt.h"
#include "platform/Error.h"

#include <string_view>

namespace helper {

// Whether a folder of the receipt is the product's own, or in such a one: the others were there before it.
bool isOwnFolder(std::string_view path);

// Removes the files and links that the receipt names, and then those of its folders that are the product's own and
// empty by then. What is gone already is removed; what somebody has put in the place of a folder, if only a link, is
// theirs, and so is what it leads to. Paths that end with one of the names in `last` go last. Stops at nothing, and
// fails with the first that stays.
platform::Result<void> removeFilesOfReceipt(const PackageReceipt& receipt, const std::vector<std::string>& last);

} // namespace helper
