#include "platform/ErrorArchive.h"

#include "platform/macos/system/Foundation.h"

namespace platform {

namespace {

// NSCoderReadCorruptError, which systems before 10.11 have no name for.
constexpr std::int64_t coderReadCorrupt = 4864;

Error unreadableError(NSError* failure)
{
    if (failure)
        return foundation::error(failure);
    return {CocoaErrorDomain, coderReadCorrupt, {}, nullptr};
}

// The calls that newer ones have replaced; they throw where those report.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

NSData* archiveAsBefore(NSError* error)
{
    return [NSKeyedArchiver archivedDataWithRootObject:error];
}

id unarchiveAsBefore(NSData* bytes)
{
    @try {
        return [NSKeyedUnarchiver unarchiveObjectWithData:bytes];
    } @catch (NSException*) {
        return nil;
    }
}

id unarchiveSecurelyAsBefore(NSData* bytes)
{
    @try {
        NSKeyedUnarchiver* const reader = [[NSKeyedUnarchiver alloc] initForReadingWithData:bytes];
        reader.requiresSecureCoding = YES;
        return [reader decodeObjectOfClass:NSError.class forKey:NSKeyedArchiveRootObjectKey];
    } @catch (NSException*) {
        return nil;
    }
}

#pragma clang diagnostic pop

} // namespace

Data archivedError(const Error& error)
{
    @autoreleasepool {
        NSError* const object = foundation::error(error);
        if (@available(macOS 10.13, *)) {
            NSData* const archive = [NSKeyedArchiver archivedDataWithRootObject:object
                                                          requiringSecureCoding:YES
                                                                          error:nil];
            return foundation::data(archive);
        }
        return foundation::data(archiveAsBefore(object));
    }
}

Result<Error> unarchivedError(std::span<const std::uint8_t> bytes, bool secure)
{
    @autoreleasepool {
        NSData* const archive = foundation::data(bytes);
        NSError* failure = nil;
        id object = nil;
        if (!secure)
            object = unarchiveAsBefore(archive);
        else if (@available(macOS 10.13, *))
            object = [NSKeyedUnarchiver unarchivedObjectOfClass:NSError.class fromData:archive error:&failure];
        else
            object = unarchiveSecurelyAsBefore(archive);
        if (![object isKindOfClass:NSError.class])
            return std::unexpected(unreadableError(failure));
        return foundation::error(static_cast<NSError*>(object));
    }
}

} // namespace platform
