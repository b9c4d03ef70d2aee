#include "platform/PropertyListCoding.h"

#include "platform/macos/system/Foundation.h"

#include <algorithm>
#include <string_view>

namespace platform {

namespace {

// NSPropertyListWriteInvalidError, which systems before 10.10 have no name for.
constexpr std::int64_t writeInvalid = 3852;

Error corruptError()
{
    return {CocoaErrorDomain, NSPropertyListReadCorruptError, {}, nullptr};
}

Error unwritableError()
{
    return {CocoaErrorDomain, writeInvalid, {}, nullptr};
}

// What an input may unfold into, where objects are shared.
std::size_t valuesOfInput(NSData* bytes)
{
    return std::min<std::size_t>(bytes.length + 1000, 10'000'000);
}

// In one format alone when there is one.
Result<PropertyList> read(NSData* bytes, std::size_t maximumValues, NSPropertyListFormat only = {})
{
    NSPropertyListFormat format = NSPropertyListBinaryFormat_v1_0;
    NSError* failure = nil;
    const id object = [NSPropertyListSerialization propertyListWithData:bytes
                                                                options:NSPropertyListImmutable
                                                                 format:&format
                                                                  error:&failure];
    if (!object)
        return std::unexpected(failure ? foundation::error(failure) : corruptError());
    const bool isWanted = only == NSPropertyListFormat{} || format == only;
    auto value = isWanted ? foundation::propertyList(object, maximumValues) : std::nullopt;
    if (!value)
        return std::unexpected(corruptError());
    return std::move(*value);
}

} // namespace

Result<Data> binaryPropertyList(const PropertyList& value)
{
    @autoreleasepool {
        const id object = foundation::object(value);
        if (!object)
            return std::unexpected(unwritableError());
        NSError* failure = nil;
        NSData* const bytes = [NSPropertyListSerialization dataWithPropertyList:object
                                                                         format:NSPropertyListBinaryFormat_v1_0
                                                                        options:0
                                                                          error:&failure];
        if (!bytes)
            return std::unexpected(failure ? foundation::error(failure) : unwritableError());
        return foundation::data(bytes);
    }
}

Result<PropertyList> propertyListWithData(std::span<const std::uint8_t> bytes)
{
    @autoreleasepool {
        NSData* const data = foundation::data(bytes);
        return read(data, valuesOfInput(data));
    }
}

Result<PropertyList> binaryPropertyListWithData(std::span<const std::uint8_t> bytes, std::size_t maximumValues)
{
    // Looked at first, so that the readers of the other formats never see it.
    constexpr std::string_view header = "bplist00";
    if (!std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()).starts_with(header))
        return std::unexpected(corruptError());
    @autoreleasepool {
        NSData* const data = foundation::data(bytes);
        return read(data, std::min(maximumValues, valuesOfInput(data)), NSPropertyListBinaryFormat_v1_0);
    }
}

Result<PropertyList> propertyListWithOldStyleText(std::string_view text)
{
    @autoreleasepool {
        NSData* const data = [NSData dataWithBytes:text.data() length:text.size()];
        return read(data, valuesOfInput(data), NSPropertyListOpenStepFormat);
    }
}

} // namespace platform
