#pragma once

#include "platform/Format.h"

#include <initializer_list>
#include <string>

// The format with its arguments; empty for a translation whose placeholders are wrong.
inline std::string filled(const std::string& format, std::initializer_list<platform::FormatArgument> arguments)
{
    return platform::formatString(format, arguments).value_or(std::string());
}
