#include "helper/RequestReader.h"
#include "platform/Authorization.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"

#include <doctest/doctest.h>
#include <limits>

using namespace helper;

using platform::Data;
using platform::Dictionary;
using platform::ServiceDictionary;

namespace {

platform::Error refusalOf(ServiceDictionary message)
{
    auto request = RequestReader::requestForMessage(std::move(message));
    REQUIRE_FALSE(request.has_value());
    return request.error();
}

void checkDamaged(const platform::Error& error, const Dictionary& userInfo)
{
    CHECK(error.domain == ZRKMessagerErrorDomain);
    CHECK(error.code == ZRKMessagerErrorDeserializeMessage);
    CHECK(error.userInfo == userInfo);
}

Data textData(std::string_view text)
{
    return Data(text.begin(), text.end());
}

} // namespace

TEST_CASE("a request is its number, its authorization and its payload as sent")
{
    Data auth(32, 7);
    auto request = RequestReader::requestForMessage({{"message", 2}, {"auth", auth}, {"payload", textData("{}")}});
    REQUIRE(request.has_value());
    CHECK(request->message == 2);
    CHECK(request->auth == auth);
    CHECK(request->payload == textData("{}"));
}

TEST_CASE("a request may be a number alone, whatever the number")
{
    for (auto number : {std::int64_t(1), std::int64_t(-1), std::numeric_limits<std::int64_t>::min(),
                        std::numeric_limits<std::int64_t>::max()}) {
        auto request = RequestReader::requestForMessage({{"message", number}});
        REQUIRE(request.has_value());
        CHECK(request->message == number);
        CHECK_FALSE(request->auth);
        CHECK_FALSE(request->payload);
    }
}

TEST_CASE("keys that are not in the protocol are passed over")
{
    CHECK(RequestReader::requestForMessage({{"message", 1}, {"error", textData("x")}, {"", 3}}).has_value());
}

TEST_CASE("a request without a number, or with one of another type, cannot be read")
{
    checkDamaged(refusalOf({}), {});
    checkDamaged(refusalOf({{"payload", textData("{}")}}), {});
    checkDamaged(refusalOf({{"message", textData("1")}}), {});
}

TEST_CASE("an authorization is exactly 32 bytes")
{
    for (std::size_t size : {0, 1, 31, 33, 64, 1'000'000}) {
        CAPTURE(size);
        auto error = refusalOf({{"message", 2}, {"auth", Data(size)}});
        CHECK(error.domain == ZRKAuthorizationErrorDomain);
        CHECK(error.code == ZRKAuthorizationErrorCreateFromExternalForm);
        CHECK(error.userInfo == Dictionary{{"status", platform::Authorization::InternalizeNotAllowed}});
    }
    CHECK(refusalOf({{"message", 2}, {"auth", 32}}).code == ZRKAuthorizationErrorCreateFromExternalForm);
}

TEST_CASE("a payload is bytes, and not too many")
{
    checkDamaged(refusalOf({{"message", 2}, {"payload", 5}}), {{"message", 2}});
    checkDamaged(refusalOf({{"message", 2}, {"payload", Data(RequestReader::maximumPayloadSize + 1)}}),
                 {{"message", 2}});
    CHECK(RequestReader::requestForMessage({{"message", 2}, {"payload", Data(RequestReader::maximumPayloadSize)}})
              .has_value());
}

TEST_CASE("a payload is read in the binary format and in no other")
{
    platform::PropertyList value(Dictionary{{"Enabled", "1"}});
    auto binary = platform::binaryPropertyList(value);
    REQUIRE(binary.has_value());
    auto payload = RequestReader::payloadOfRequest({21, {}, *binary});
    REQUIRE(payload.has_value());
    CHECK(*payload == value);
    for (const auto& bytes :
         {textData("{ Enabled = 1; }"), textData("bplist0"), Data(),
          textData("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Enabled</key><string>1</string></dict>"
                   "</plist>")})
        CHECK_FALSE(RequestReader::payloadOfRequest({21, {}, bytes}).has_value());
}

TEST_CASE("what the transport left out for its length is refused as what it would have been")
{
    auto request = RequestReader::requestForMessage({{"message", 2}}, {"payload"});
    REQUIRE_FALSE(request.has_value());
    checkDamaged(request.error(), {{"message", 2}});
    request = RequestReader::requestForMessage({{"message", 2}}, {"auth"});
    REQUIRE_FALSE(request.has_value());
    CHECK(request.error().code == ZRKAuthorizationErrorCreateFromExternalForm);
    request = RequestReader::requestForMessage({}, {"message"});
    REQUIRE_FALSE(request.has_value());
    checkDamaged(request.error(), {});
}

TEST_CASE("a request without a payload has none")
{
    auto payload = RequestReader::payloadOfRequest({1, {}, {}});
    REQUIRE(payload.has_value());
    CHECK_FALSE(payload->has_value());
}

TEST_CASE("a damaged payload is an error that says why")
{
    for (const auto& bytes : {textData("bplist00"), textData("<plist><dict>"), textData("{ a = "), Data(100, 0xff)}) {
        auto payload = RequestReader::payloadOfRequest({2, {}, bytes});
        REQUIRE_FALSE(payload.has_value());
        checkDamaged(payload.error(), {{"message", 2}});
        REQUIRE(payload.error().underlying);
        CHECK(payload.error().underlying->domain == platform::CocoaErrorDomain);
    }
}

TEST_CASE("a payload of more values than any record has is refused, and the longest record is not")
{
    const auto entry = Dictionary{{"Weekday", 1}, {"Hour", 2}, {"Minute", 3}, {"Day", 4}};
    const auto longest = platform::binaryPropertyList(platform::Array(10'000, entry));
    REQUIRE(longest.has_value());
    CHECK(RequestReader::payloadOfRequest({2, {}, *longest}).has_value());
    const auto vast = platform::binaryPropertyList(platform::Array(130'000, platform::PropertyList(1)));
    REQUIRE(vast.has_value());
    CHECK_FALSE(RequestReader::payloadOfRequest({2, {}, *vast}).has_value());
}
