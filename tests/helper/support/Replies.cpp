#include "tests/helper/support/Replies.h"

#include "platform/Authorization.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"

#include <doctest/doctest.h>
#include <string_view>

using platform::Data;

namespace {

const Data* bytesIn(const platform::ServiceReply& reply, std::string_view key)
{
    REQUIRE(reply.has_value());
    CHECK(reply->size() == 1);
    const auto found = reply->find(key);
    return found == reply->end() ? nullptr : &std::get<Data>(found->second);
}

} // namespace

platform::PropertyList resultIn(const platform::ServiceReply& reply)
{
    if (bytesIn(reply, "error"))
        FAIL(platform::localizedDescription(errorIn(reply)));
    const auto* const bytes = bytesIn(reply, "payload");
    REQUIRE(bytes);
    auto value = platform::propertyListWithData(*bytes);
    REQUIRE(value.has_value());
    return *value;
}

platform::Dictionary recordIn(const platform::ServiceReply& reply)
{
    const auto value = resultIn(reply);
    REQUIRE(value.dictionary());
    return *value.dictionary();
}

platform::Error errorIn(const platform::ServiceReply& reply)
{
    const auto* const bytes = bytesIn(reply, "error");
    REQUIRE(bytes);
    auto error = platform::unarchivedError(*bytes, true);
    REQUIRE(error.has_value());
    return *error;
}

void checkError(const platform::ServiceReply& reply, const char* domain, std::int64_t code)
{
    const auto error = errorIn(reply);
    CHECK(error.domain == domain);
    CHECK(error.code == code);
}

Data ownToken()
{
    auto authorization = platform::Authorization::create();
    REQUIRE(authorization.has_value());
    auto form = (*authorization)->makeExternalForm();
    REQUIRE(form.has_value());
    return Data(form->begin(), form->end());
}

Data binaryData(const platform::PropertyList& value)
{
    auto bytes = platform::binaryPropertyList(value);
    REQUIRE(bytes.has_value());
    return *bytes;
}
