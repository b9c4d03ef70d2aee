#include "platform/macos/system/Foundation.h"

#include "platform/Unicode.h"

#include <memory>
#include <utility>

namespace platform::foundation {

namespace {

// Of text and data, in what a value unfolds into.
constexpr std::uint64_t maximumBytes = 256U << 20;

// Errors that lead to each other, all together.
constexpr std::size_t maximumErrors = 1000;

NSString* exactString(std::string_view text)
{
    return [[NSString alloc] initWithBytes:text.data() length:text.size() encoding:NSUTF8StringEncoding];
}

NSString* writableString(std::string_view text)
{
    return text.find('\0') == std::string_view::npos ? exactString(text) : nil;
}

// There is no public call that makes a UID or takes one apart, but one is what a dictionary of CF$UID is read as, and
// in the binary format it is a marker and its index, behind a header of eight bytes.
id makeUID(UID value)
{
    NSString* const text =
        [NSString stringWithFormat:@"<plist><dict><key>CF$UID</key><integer>%llu</integer></dict></plist>",
                                   static_cast<unsigned long long>(value.index)];
    return [NSPropertyListSerialization propertyListWithData:[text dataUsingEncoding:NSUTF8StringEncoding]
                                                     options:NSPropertyListImmutable
                                                      format:nil
                                                       error:nil];
}

std::optional<PropertyList> readUID(id object)
{
    if (![NSPropertyListSerialization propertyList:object isValidForFormat:NSPropertyListBinaryFormat_v1_0])
        return std::nullopt;
    NSData* const written = [NSPropertyListSerialization dataWithPropertyList:object
                                                                       format:NSPropertyListBinaryFormat_v1_0
                                                                      options:0
                                                                        error:nil];
    constexpr std::size_t markerAt = 8;
    const auto* const bytes = static_cast<const std::uint8_t*>(written.bytes);
    if (written.length <= markerAt || bytes[markerAt] >> 4 != 8)
        return std::nullopt;
    const std::size_t size = (bytes[markerAt] & 0xFU) + 1;
    if (size > 8 || written.length < markerAt + 1 + size)
        return std::nullopt;
    UID value;
    for (std::size_t i = 0; i < size; ++i)
        value.index = value.index << 8 | bytes[markerAt + 1 + i];
    return PropertyList(value);
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
    case PropertyList::Type::Unsigned:
        return @(*value.unsignedInteger());
    case PropertyList::Type::Real:
        return @(value.realValue());
    case PropertyList::Type::String:
        return writableString(*value.string());
    case PropertyList::Type::Date:
        return [NSDate dateWithTimeIntervalSinceReferenceDate:value.date()->secondsSinceReferenceDate];
    case PropertyList::Type::Data:
        return foundation::data(*value.data());
    case PropertyList::Type::UID:
        return makeUID(*value.uid());
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
    explicit Reader(std::size_t maximumValues) : _valuesLeft(maximumValues) { }

    std::optional<PropertyList> read(id object, int depth)
    {
        if (depth > maximumDepth || _valuesLeft == 0 || _bytes > maximumBytes)
            return std::nullopt;
        --_valuesLeft;
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
        return readUID(object);
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
        if ([number isEqualToNumber:@(number.longLongValue)])
            return PropertyList(number.longLongValue);
        if ([number isEqualToNumber:@(number.unsignedLongLongValue)])
            return PropertyList(number.unsignedLongLongValue);
        return std::nullopt;
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
        if (_valuesLeft < entries.count)
            return std::nullopt;
        _valuesLeft -= entries.count; // the keys
        for (const id key in entries) {
            const auto name = [key isKindOfClass:NSString.class] ? readString(key) : std::nullopt;
            auto value = name ? read(entries[key], depth) : std::nullopt;
            if (!value)
                return std::nullopt;
            dictionary.set(*name->string(), std::move(*value));
        }
        return PropertyList(std::move(dictionary));
    }

    std::size_t _valuesLeft;
    std::uint64_t _bytes = 0;
};

// `left` counts the errors that may still be made, so that a long chain does not run out of stack.
NSError* makeError(const Error& error, std::size_t& left)
{
    NSMutableDictionary* const userInfo = [NSMutableDictionary dictionaryWithCapacity:error.userInfo.size() + 2];
    for (const Dictionary::Entry& entry : error.userInfo) {
        if (const id value = object(entry.value))
            userInfo[string(entry.key)] = value;
    }
    if (error.underlying && left > 0)
        userInfo[NSUnderlyingErrorKey] = makeError(*error.underlying, --left);
    if (!error.multipleUnderlying.empty()) {
        NSMutableArray* const errors = [NSMutableArray array];
        for (const auto& each : error.multipleUnderlying) {
            if (left > 0)
                [errors addObject:makeError(*each, --left)];
        }
        userInfo[string(MultipleUnderlyingErrorsKey)] = errors;
    }
    return [NSError errorWithDomain:string(error.domain) code:error.code userInfo:userInfo];
}

// What has a place among an error's values: a URL as its absolute string, a set as an array. Nullopt for other objects
// that are no property list.
std::optional<PropertyList> userInfoValue(id value)
{
    if ([value isKindOfClass:NSURL.class])
        return PropertyList(string([static_cast<NSURL*>(value) absoluteString]));
    return propertyList([value isKindOfClass:NSSet.class] ? [static_cast<NSSet*>(value) allObjects] : value);
}

Error readError(NSError* error, std::size_t& left);

std::shared_ptr<const Error> sharedError(id value, std::size_t& left)
{
    if (left == 0 || ![value isKindOfClass:NSError.class])
        return nullptr;
    return std::make_shared<const Error>(readError(static_cast<NSError*>(value), --left));
}

Error readError(NSError* error, std::size_t& left)
{
    NSString* const multipleKey = string(MultipleUnderlyingErrorsKey);
    Error made{string(error.domain), error.code, {}, nullptr};
    for (NSString* const key in error.userInfo) {
        const id value = error.userInfo[key];
        if ([key isEqualToString:NSUnderlyingErrorKey] && [value isKindOfClass:NSError.class]) {
            made.underlying = sharedError(value, left);
        } else if ([key isEqualToString:multipleKey] && [value isKindOfClass:NSArray.class]) {
            for (const id each in static_cast<NSArray*>(value)) {
                if (auto shared = sharedError(each, left))
                    made.multipleUnderlying.push_back(std::move(shared));
            }
        } else if (auto read = userInfoValue(value)) {
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

std::optional<PropertyList> propertyList(id object, std::size_t maximumValues)
{
    return Reader(maximumValues).read(object, 0);
}

NSError* error(const Error& value)
{
    std::size_t left = maximumErrors - 1;
    return makeError(value, left);
}

Error error(NSError* value)
{
    std::size_t left = maximumErrors - 1;
    return readError(value, left);
}

} // namespace platform::foundation
