#include "platform/JSONRecords.h"

#include "platform/JSONBeginning.h"
#include "platform/macos/system/Foundation.h"

#include <string>
#include <utility>
#include <vector>

namespace platform {

struct JSONRecords::Native {
    std::vector<std::string_view> keys;
    Visitor visit;
    NSMutableData* text = [NSMutableData data];
    JSONBeginning beginning = JSONBeginning::Blank;
};

namespace {

Error noArrayError()
{
    return {CocoaErrorDomain, NSPropertyListReadCorruptError, {}, nullptr};
}

// Keeps the text that the field shows.
JSONField field(id object, std::string_view key, std::string& text)
{
    const id value = [object isKindOfClass:NSDictionary.class] ? object[foundation::string(key)] : nil;
    if (!value)
        return {};
    const bool isString = [value isKindOfClass:NSString.class];
    text = foundation::string(isString ? static_cast<NSString*>(value) : [value description]);
    return {isString ? JSONField::Kind::String : JSONField::Kind::Other, text};
}

} // namespace

JSONRecords::JSONRecords(std::span<const std::string_view> keys, Visitor visit)
    : _native(new Native{.keys = {keys.begin(), keys.end()}, .visit = std::move(visit)})
{
}

JSONRecords::~JSONRecords() = default;

void JSONRecords::append(std::string_view piece)
{
    if (_native->beginning == JSONBeginning::Blank)
        _native->beginning = jsonBeginning(piece);
    if (_native->beginning == JSONBeginning::Bracket)
        [_native->text appendBytes:piece.data() length:piece.size()];
}

bool JSONRecords::isEmpty() const
{
    return _native->beginning == JSONBeginning::Blank;
}

Result<void> JSONRecords::finish()
{
    const auto& keys = _native->keys;
    @autoreleasepool {
        NSError* failure = nil;
        const id array = [NSJSONSerialization JSONObjectWithData:_native->text options:0 error:&failure];
        _native->text = [NSMutableData data];
        if (![array isKindOfClass:NSArray.class])
            return std::unexpected(failure ? foundation::error(failure) : noArrayError());
        std::vector<std::string> texts(keys.size());
        std::vector<JSONField> fields(keys.size());
        for (const id object in array) {
            @autoreleasepool {
                for (std::size_t i = 0; i < keys.size(); ++i)
                    fields[i] = field(object, keys[i], texts[i]);
                _native->visit(fields);
            }
        }
        return {};
    }
}

} // namespace platform
