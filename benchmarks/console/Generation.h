#pragma once

#include <cstddef>
#include <string>

// Writes an array of so many log records, of about 1,000 bytes each, as the log tool prints them. The same every time.
void generateRecords(std::size_t count, const std::string& path);
