#pragma once

#include "platform/Error.h"

#include <cstddef>
#include <cstdint>
#import <Foundation/Foundation.h>
#include <optional>
#include <span>
#include <string>
#include <string_view>

// Values of ours as Foundation's objects, and back.
namespace platform::foundation {

// Bytes that are no UTF-8 become replacement characters.
NSString* string(std::string_view text);
std::string string(NSString* text); // nil is the empty text

NSData* data(std::span<const std::uint8_t> bytes);
Data data(NSData* bytes);

// Nil for a value that no property list can hold: text that is no UTF-8 or has a NUL, or collections nested too deeply.
id object(const PropertyList& value);
NSDictionary<NSString*, id>* dictionary(const Dictionary& value);

// Nullopt for an object that is no property list, an integer below -2^63 or above 2^64-1, collections nested too
// deeply, or shared objects that would unfold into more values, keys among them.
std::optional<PropertyList> propertyList(id object, std::size_t maximumValues = 4'000'000);

NSError* error(const Error& error);
Error error(NSError* error);

inline constexpr int maximumDepth = 512; // collections inside each other

} // namespace platform::foundation
