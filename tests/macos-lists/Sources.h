#pragma once

#include <string>
#include <vector>

// The project's own files, as text.
namespace Sources {

std::string read(const std::string& path); // relative to the source folder; empty when there is none
// The paths of the files directly in the folder, relative to the source folder, in order.
std::vector<std::string> files(const std::string& folder, const std::string& extension);
// Those of all folders below it too.
std::vector<std::string> filesBelow(const std::string& folder, const std::string& extension);

// "platform/ui/View.h" is "View".
std::string nameOf(const std::string& path);

// The groups of every match of the expression, in order.
std::vector<std::vector<std::string>> matches(const std::string& text, const std::string& expression);

} // namespace Sources
