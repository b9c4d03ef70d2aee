#include "platform/macos/system/Foundation.h"

#include "platform/Unicode.h"

#include <cmath>
#include <limits>

namespace platform::foundation {

namespace {

// What a value may unfold into.
constexpr std::uint64_t maximumNodes = 4'000'000;
constexpr std::uint64_t maximumBytes = 256U << 20;

NSString* exactString(std::string_view text)
{
    return [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
}

NSString* writableString(std::string_view text)
{
    return text.find('\0') == std::string_view::npos ? exactString(text) : nil;
}

id makeObject(const PropertyList& value, int depth);

NSArray* makeArray(const Array& elements, int depth)
{
    if (depth > maximumDepth)
        return nil;
    NSMutableArray* const made = [NSMutableArray arrayWithCapacity:elements.size()];
    for (const PropertyList& element : elements) {
        const id converted = makeObject(element, depth);
        if (!converted)
            return nil;
        [made addObject:converted];
    }
    return made;
}

NSMutableDictionary* makeDictionary(const Dictionary& entries, int depth)
{
    if (depth > maximumDepth)
        return nil;
    NSMutableDictionary* const made = [NSMutableDictionary dictionaryWithCapacity:entries.size()];
    for (const Dictionary::Entry& entry : entries) {
        NSString* const key = writableString(entry.key);
        const id converted = makeObject(entry.value, depth);
        if (!key || !converted)
            return nil;
        made[key] = converted;
    }
    return made;
}

// `depth` counts the collections around the value.
id makeObject(const PropertyList& value, int depth)
{
    switch (value.type()) {
    case PropertyList::Type::Boolean:
        return @(value.boolValue());
    case PropertyList::Type::Integer:
        return @(value.integerValue());
    case PropertyList::Type::Real:
        return @(value.realValue());
    case PropertyList::Type::String:
        return writableString(*value.string());
    case PropertyList::Type::Date: {
        const double seconds = value.date()->secondsSinceReferenceDate;
        return std::isfinite(seconds) ? [NSDate dateWithTimeIntervalSinceReferenceDate:seconds] : nil;
    }
    case PropertyList::Type::Data:
        return foundation::data(*value.data());
    case PropertyList::Type::Array:
        return makeArray(*value.array(), depth + 1);
    case PropertyList::Type::Dictionary:
        return makeDictionary(*value.dictionary(), depth + 1);
    }
    return nil;
}

// Reads objects that others made, so it counts what it makes of them.
class Reader {
public:
    std::optional<PropertyList> read(id object, int depth)
    {
        if (depth > maximumDepth || ++_nodes > maximumNodes || _bytes > maximumBytes)
            return std::nullopt;
        if ([object isKindOfClass:NSString.class])
            return readString(object);
        if ([object isKindOfClass:NSNumber.class])
            return readNumber(object);
        if ([object isKindOfClass:NSDate.class])
            return PropertyList(Date{[object timeIntervalSinceReferenceDate]});
        if ([object isKindOfClass:NSData.class]) {
            _bytes += [object length];
            return PropertyList(data(static_cast<NSData*>(object)));
        }
        if ([object isKindOfClass:NSArray.class])
            return readArray(object, depth + 1);
        if ([object isKindOfClass:NSDictionary.class])
            return readDictionary(object, depth + 1);
        return std::nullopt;
    }

private:
    std::optional<PropertyList> readString(NSString* text)
    {
        std::string read = string(text);
        _bytes += read.size();
        if (read.find('\0') != std::string::npos)
            return std::nullopt;
        return PropertyList(std::move(read));
    }

    static std::optional<PropertyList> readNumber(NSNumber* number)
    {
        if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID())
            return PropertyList(static_cast<bool>(number.boolValue));
        if (CFNumberIsFloatType((__bridge CFNumberRef)number))
            return PropertyList(number.doubleValue);
        const std::int64_t value = number.longLongValue;
        if (![number isEqualToNumber:@(value)])
            return std::nullopt;
        return PropertyList(value);
    }

    std::optional<PropertyList> readArray(NSArray* elements, int depth)
    {
        Array array;
        for (const id element in elements) {
            auto value = read(element, depth);
            if (!value)
                return std::nullopt;
            array.push_back(std::move(*value));
        }
        return PropertyList(std::move(array));
    }

    std::optional<PropertyList> readDictionary(NSDictionary* entries, int depth)
    {
        Dictionary dictionary;
        for (const id key in entries) {
            const auto name = [key isKindOfClass:NSString.class] ? readString(key) : std::nullopt;
            auto value = name ? read(entries[key], depth) : std::nullopt;
            if (!value)
                return std::nullopt;
            dictionary.set(*name->string(), std::move(*value));
        }
        return PropertyList(std::move(dictionary));
    }

    std::uint64_t _nodes = 0;
    std::uint64_t _bytes = 0;
};

NSError* makeError(const Error& error, int depth)
{
    NSMutableDictionary* const userInfo = [NSMutableDictionary dictionaryWithCapacity:error.userInfo.size() + 1];
    for (const Dictionary::Entry& entry : error.userInfo) {
        if (const id value = object(entry.value))
            userInfo[string(entry.key)] = value;
    }
    if (error.underlying && depth < maximumDepth)
        userInfo[NSUnderlyingErrorKey] = makeError(*error.underlying, depth + 1);
    return [NSError errorWithDomain:string(error.domain) code:error.code userInfo:userInfo];
}

Error readError(NSError* error, int depth)
{
    Error made{string(error.domain), error.code, {}, nullptr};
    for (NSString* const key in error.userInfo) {
        const id value = error.userInfo[key];
        if ([key isEqualToString:NSUnderlyingErrorKey] && [value isKindOfClass:NSError.class]) {
            if (depth < maximumDepth)
                made.underlying = std::make_shared<const Error>(readError(static_cast<NSError*>(value), depth + 1));
        } else if (auto read = propertyList(value)) {
            made.userInfo.set(string(key), std::move(*read));
        }
    }
    return made;
}

} // namespace

NSString* string(std::string_view text)
{
    if (NSString* const exact = exactString(text))
        return exact;
    std::string mended;
    while (!text.empty())
        appendCharacter(mended, takeCharacter(text));
    return exactString(mended);
}

std::string string(NSString* text)
{
    NSData* const bytes = [text dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
    return {static_cast<const char*>(bytes.bytes), bytes.length};
}

NSData* data(std::span<const std::uint8_t> bytes)
{
    return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

Data data(NSData* bytes)
{
    const auto* const begin = static_cast<const std::uint8_t*>(bytes.bytes);
    return {begin, begin + bytes.length};
}

id object(const PropertyList& value)
{
    return makeObject(value, 0);
}

NSDictionary<NSString*, id>* dictionary(const Dictionary& value)
{
    return makeDictionary(value, 1);
}

std::optional<PropertyList> propertyList(id object)
{
    return Reader().read(object, 0);
}

NSError* error(const Error& value)
{
    return makeError(value, 1);
}

Error error(NSError* value)
{
    return readError(value, 1);
}

} // namespace platform::foundation
