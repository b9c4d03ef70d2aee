#include "platform/FileWriting.h"

#include "platform/macos/system/Foundation.h"

namespace platform {

Result<void> writeFileAtomically(const std::string& path, std::string_view bytes)
{
    @autoreleasepool {
        NSError* failure = nil;
        NSData* const data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
        NSString* const target = foundation::string(path).stringByResolvingSymlinksInPath;
        if (![data writeToFile:target options:NSDataWritingAtomic error:&failure])
            return std::unexpected(foundation::error(failure));
        return {};
    }
}

bool setTagNames(const std::string& path, const std::vector<std::string>& names)
{
    @autoreleasepool {
        NSMutableArray* const tags = [NSMutableArray array];
        for (const std::string& name : names)
            [tags addObject:foundation::string(name)];
        NSURL* const url = [NSURL fileURLWithPath:foundation::string(path)];
        return [url setResourceValue:tags forKey:NSURLTagNamesKey error:nil];
    }
}

} // namespace platform
