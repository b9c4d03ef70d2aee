#include "platform/PropertyListCoding.h"

#include "platform/macos/system/Foundation.h"

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

Result<PropertyList> read(NSData* bytes, bool oldStyleOnly)
{
    NSPropertyListFormat format = NSPropertyListBinaryFormat_v1_0;
    NSError* failure = nil;
    const id object = [NSPropertyListSerialization propertyListWithData:bytes
                                                                options:NSPropertyListImmutable
                                                                 format:&format
                                                                  error:&failure];
    if (!object)
        return std::unexpected(failure ? foundation::error(failure) : corruptError());
    auto value =
        oldStyleOnly && format != NSPropertyListOpenStepFormat ? std::nullopt : foundation::propertyList(object);
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
        return read(foundation::data(bytes), false);
    }
}

Result<PropertyList> propertyListWithOldStyleText(std::string_view text)
{
    @autoreleasepool {
        return read([NSData dataWithBytes:text.data() length:text.size()], true);
    }
}

} // namespace platform
