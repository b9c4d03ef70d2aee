#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

// The text for a key of the application's string table in the user's language, or the key itself. Any thread.
std::string localizedString(std::string_view key);

// The standard phrase for an HTTP status code, in lower case: 404 is "not found".
std::string localizedStringForStatusCode(std::int64_t code);

// Unicode general category Nd, and the digit's value (-1 for other characters).
bool isDecimalDigit(char32_t character);
int decimalDigitValue(char32_t character);

} // namespace platform
