#include "platform/Localization.h"

#include "platform/linux/system/texts/StringTable.h"

#include <unicode/uchar.h>

namespace platform {

std::string localizedString(std::string_view key)
{
    return StringTable::shared().stringForKey(key);
}

bool isDecimalDigit(char32_t character)
{
    return u_charType(static_cast<UChar32>(character)) == U_DECIMAL_DIGIT_NUMBER;
}

int decimalDigitValue(char32_t character)
{
    return isDecimalDigit(character) ? u_charDigitValue(static_cast<UChar32>(character)) : -1;
}

} // namespace platform
