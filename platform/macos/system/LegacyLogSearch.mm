#include "platform/LegacyLogSearch.h"

#include <asl.h>
#import <Foundation/Foundation.h>

// The log before the unified one; it is deprecated where that is there.
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

namespace platform {

namespace {

asl_object_t nextMessage(asl_object_t response)
{
    if (@available(macOS 10.10, *))
        return asl_next(response);
    return aslresponse_next(response);
}

void release(asl_object_t response)
{
    if (@available(macOS 10.10, *))
        asl_release(response);
    else
        aslresponse_free(response);
}

std::optional<std::string> value(asl_object_t message, const char* key)
{
    const char* const text = asl_get(message, key);
    return text ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace

std::vector<LegacyLogMessage> searchLegacyLog(const std::string& sender)
{
    std::vector<LegacyLogMessage> found;
    const asl_object_t query = asl_new(ASL_TYPE_QUERY);
    asl_set_query(query, ASL_KEY_SENDER, sender.c_str(), ASL_QUERY_OP_EQUAL);
    if (const asl_object_t response = asl_search(nullptr, query)) {
        while (const asl_object_t message = nextMessage(response))
            found.push_back({value(message, ASL_KEY_TIME), value(message, ASL_KEY_MSG)});
        release(response);
    }
    asl_free(query);
    return found;
}

} // namespace platform
