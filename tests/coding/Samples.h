#pragma once

#include "platform/PropertyListCoding.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

inline std::span<const std::uint8_t> bytesOf(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline platform::Result<platform::PropertyList> read(std::string_view text)
{
    return platform::propertyListWithData(bytesOf(text));
}

inline bool isDamaged(std::span<const std::uint8_t> bytes)
{
    const auto value = platform::propertyListWithData(bytes);
    return !value && value.error().domain == platform::CocoaErrorDomain && value.error().code == 3840;
}

inline bool isDamaged(std::string_view text)
{
    return isDamaged(bytesOf(text));
}

// A value with every type in it.
platform::PropertyList everyType();

// A value inside so many arrays.
platform::PropertyList nested(int depth, platform::PropertyList innermost = platform::Array());

// A whole XML property list around the element.
std::string xml(std::string_view element);

// A binary property list of objects in their encoded form, with references of one byte.
platform::Data binary(const std::vector<std::string>& objects, std::uint8_t root = 0);

// The whole file.
platform::Data contents(const std::string& path);

// What python3 prints for a script that is given file names; nothing when this machine has no python3.
std::string python(const std::string& script, const std::vector<std::string>& files);
bool hasPython();
