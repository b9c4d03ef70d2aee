#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

// The string tables of the source tree, as the product reads them and as they are written.
namespace tables {

using Texts = std::map<std::string, std::string>;

// Every language that the product speaks, English first.
const std::vector<std::string>& languages();

std::string path(std::string_view language);
std::string bytes(std::string_view language);
// With the product's own reader. Empty when the file does not parse.
Texts read(std::string_view language);
// The keys in the order in which they are written, repeated ones repeatedly.
std::vector<std::string> writtenKeys(std::string_view language);

// What the format's conversions take, by the argument's number from 1: "@", "s", "d", "lu", "ld".
std::map<int, std::string> placeholders(std::string_view format);

} // namespace tables
