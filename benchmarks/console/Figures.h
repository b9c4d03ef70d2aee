#pragma once

#include <string>

// Milliseconds that reading the tool's pipe as the console does and walking all of the JSON with simdjson alone take.
double floorMilliseconds(const std::string& toolPath);

// Milliseconds that ICU takes to parse the date of every record and to format it, each by itself.
double dateMilliseconds(const std::string& jsonPath);
