#pragma once

#include <string>

// Milliseconds that reading the tool's pipe as the console does and walking all of the JSON with simdjson alone take.
double floorMilliseconds(const std::string& toolPath);

// Milliseconds that reading and printing every record's date with ICU takes.
double dateMilliseconds(const std::string& jsonPath);
