#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"
#include "tests/messaging/Logging.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>

using platform::Array;
using platform::Dictionary;
using platform::Error;

namespace {

constexpr const char* updater = "com.zerkolin.updater";
constexpr const char* package = "com.zerkolin.installer-package";
constexpr const char* spawner = "com.zerkolin.spawner";
constexpr const char* messager = "com.zerkolin.messager";
constexpr const char* authorization = "com.zerkolin.authorization";
constexpr const char* product = "com.zerkolin.brevane";

struct Row {
    const char* name;
    const char* domain;
    std::int64_t code;
    Dictionary userInfo;
    std::string expected;
};

void checkEveryRow(std::initializer_list<Row> rows)
{
    for (const auto& row : rows) {
        SUBCASE(row.name)
        {
            CHECK(ZRKError::localizedDescriptionForError({row.domain, row.code, row.userInfo, nullptr})
                  == row.expected);
        }
    }
}

Error wrap(Error outer, Error inner)
{
    outer.underlying = std::make_shared<const Error>(std::move(inner));
    return outer;
}

Array list(std::initializer_list<const char*> texts)
{
    return Array(texts.begin(), texts.end());
}

} // namespace

TEST_CASE("every updater error has its text")
{
    checkEveryRow({
        {"up to date", updater, 0, {}, "You are already running the latest version."},
        {"fetch info", updater, 1, {}, "Could not fetch update information."},
        {"fetch info with a status code",
         updater,
         1,
         {{"status-code", 404}},
         "Could not fetch update information. not found (404)."},
        {"fetch info with a status code as text",
         updater,
         1,
         {{"status-code", "404"}},
         "Could not fetch update information. not found (404)."},
        {"read data", updater, 2, {}, "Could not read update data."},
        {"invalid info", updater, 3, {{"info", "scrambled"}}, "Invalid update information: scrambled."},
        {"invalid info that is a number", updater, 3, {{"info", 12}}, "Invalid update information: 12."},
        {"invalid info without info", updater, 3, {}, "Invalid update information: (null)."},
        {"download", updater, 4, {}, "Could not download update."},
        {"download with a status code",
         updater,
         4,
         {{"status-code", 404}},
         "Could not download update. not found (404)."},
        {"download with another status code",
         updater,
         4,
         {{"status-code", 503}},
         "Could not download update. service unavailable (503)."},
        {"move package", updater, 5, {}, "Could not move update package."},
        {"validate", updater, 6, {}, "Could not validate update."},
        {"install", updater, 7, {}, "Could not install update."},
        {"cannot update now", updater, 8, {}, "Update cannot be performed now."},
        {"phased deferral", updater, 9, {}, "Update has been deferred due to phased update."},
        {"untrusted server",
         updater,
         10,
         {},
         "The update server could not be trusted, you may be victim of SSL/TLS decryption."},
        {"too many requests",
         updater,
         11,
         {},
         "You have made too many requests to the update server. Please try again later."},
        {"a status code is no matter to the other codes",
         updater,
         5,
         {{"status-code", 404}},
         "Could not move update package."},
    });
}

TEST_CASE("every installer-package error has its text")
{
    checkEveryRow({
        {"read", package, 0, {{"path", "/tmp/a.pkg"}}, "Could not read installer package at path '/tmp/a.pkg'."},
        {"read without path", package, 0, {}, "Could not read installer package at path '(null)'."},
        {"not signed", package, 1, {}, "Installer package is not signed."},
        {"invalid signature", package, 2, {}, "Installer package signature is invalid."},
    });
}

TEST_CASE("every spawner error has its text")
{
    checkEveryRow({
        {"spawn",
         spawner,
         0,
         {{"tool", "/usr/sbin/installer"}, {"errno", 2}},
         "Could not spawn '/usr/sbin/installer'. No such file or directory (2)."},
        {"spawn without errno",
         spawner,
         0,
         {{"tool", "/usr/sbin/installer"}},
         "Could not spawn '/usr/sbin/installer'. Success (0)."},
        {"spawn without tool", spawner, 0, {{"errno", 13}}, "Could not spawn '(null)'. Permission denied (13)."},
        {"spawn with an unknown errno",
         spawner,
         0,
         {{"tool", "a"}, {"errno", -7}},
         "Could not spawn 'a'. Unknown error -7 (-7)."},
        {"exit status", spawner, 1, {{"tool", "installer"}, {"exit-status", 3}}, "installer exited with status 3."},
        {"exit status without status", spawner, 1, {{"tool", "installer"}}, "installer exited with status (null)."},
        {"exit status without tool", spawner, 1, {{"exit-status", 3}}, "(null) exited with status 3."},
        {"signal", spawner, 2, {{"tool", "installer"}, {"signal", 9}}, "installer received signal 9 (Killed)."},
        {"signal without signal",
         spawner,
         2,
         {{"tool", "installer"}},
         "installer received signal 0 (Unknown signal 0)."},
        {"signal without tool", spawner, 2, {{"signal", 11}}, "(null) received signal 11 (Segmentation fault)."},
    });
}

TEST_CASE("every messager error has its text")
{
    const char* service = "com.zerkolin.brevane.scheduler";
    checkEveryRow({
        {"authorize", messager, 0, {{"message", 2}}, "Could not authorize message (2)."},
        {"authorize without message", messager, 0, {}, "Could not authorize message (0)."},
        {"missing authorization", messager, 1, {{"message", 21}}, "Authorization data is missing for message (21)."},
        {"missing authorization without message", messager, 1, {}, "Authorization data is missing for message (0)."},
        {"serialize message",
         messager,
         2,
         {{"message", 2}, {"payload", "a b"}},
         "Could not serialize message (2), payload: a b."},
        {"serialize message without payload",
         messager,
         2,
         {{"message", 2}},
         "Could not serialize message (2), payload: (null)."},
        {"serialize message without message",
         messager,
         2,
         {{"payload", 7}},
         "Could not serialize message (0), payload: 7."},
        {"deserialize message", messager, 3, {{"message", 6}}, "Could not deserialize message (6)."},
        {"deserialize message without message", messager, 3, {}, "Could not deserialize message (0)."},
        {"serialize reply",
         messager,
         4,
         {{"message", 1}, {"reply", "it"}},
         "Could not serialize reply for message (1), reply: it."},
        {"serialize reply without reply",
         messager,
         4,
         {{"message", 1}},
         "Could not serialize reply for message (1), reply: (null)."},
        {"serialize reply without message",
         messager,
         4,
         {{"reply", "it"}},
         "Could not serialize reply for message (0), reply: it."},
        {"deserialize reply", messager, 5, {{"message", 18}}, "Could not deserialize reply for message (18)."},
        {"deserialize reply without message", messager, 5, {}, "Could not deserialize reply for message (0)."},
        {"unarchive reply error", messager, 6, {{"message", 27}}, "Could not unarchive reply error for message (27)."},
        {"unarchive reply error without message", messager, 6, {}, "Could not unarchive reply error for message (0)."},
        {"service unavailable",
         messager,
         7,
         {{"message", 1}, {"service", service}},
         "Could not send message (1), the service is not available (com.zerkolin.brevane.scheduler)."},
        {"service unavailable without message",
         messager,
         7,
         {{"service", service}},
         "The service is not available (com.zerkolin.brevane.scheduler)."},
        {"service unavailable without service",
         messager,
         7,
         {{"message", 1}},
         "Could not send message (1), the service is not available ((null))."},
        {"service unavailable without anything", messager, 7, {}, "The service is not available ((null))."},
        {"service disappeared",
         messager,
         8,
         {{"message", 2}, {"service", service}},
         "Could not send message (2), the service disappeared (crash?) (com.zerkolin.brevane.scheduler)."},
        {"service disappeared without message",
         messager,
         8,
         {{"service", service}},
         "The service disappeared (com.zerkolin.brevane.scheduler)."},
        {"service disappeared without service",
         messager,
         8,
         {{"message", 2}},
         "Could not send message (2), the service disappeared (crash?) ((null))."},
        {"service disappeared without anything", messager, 8, {}, "The service disappeared ((null))."},
        {"message 0 is present",
         messager,
         7,
         {{"message", 0}, {"service", "s"}},
         "Could not send message (0), the service is not available (s)."},
        {"a message number is unsigned",
         messager,
         0,
         {{"message", -1}},
         "Could not authorize message (18446744073709551615)."},
        {"a message number given as text", messager, 0, {{"message", " 12th"}}, "Could not authorize message (12)."},
        {"a message number with its sign", messager, 0, {{"message", "\t+12"}}, "Could not authorize message (12)."},
        {"a message number with another sign", messager, 0, {{"message", ",12"}}, "Could not authorize message (0)."},
        {"a message number after two signs", messager, 0, {{"message", "++12"}}, "Could not authorize message (0)."},
        {"a message number that is none", messager, 0, {{"message", "none"}}, "Could not authorize message (0)."},
        {"a message number that is a list", messager, 0, {{"message", Array()}}, "Could not authorize message (0)."},
        {"a message number that is a real", messager, 0, {{"message", 2.75}}, "Could not authorize message (2)."},
        {"a message number that is true", messager, 0, {{"message", true}}, "Could not authorize message (1)."},
    });
}

TEST_CASE("every authorization error has its text")
{
    checkEveryRow({
        {"user canceled", authorization, 0, {}, "User canceled authentication."},
        {"create", authorization, 1, {{"status", -60008}}, "Could not create authorization: -60008."},
        {"create without status", authorization, 1, {}, "Could not create authorization: (null)."},
        {"make external form", authorization, 2, {{"status", -60009}}, "Could not make external form: -60009."},
        {"make external form without status", authorization, 2, {}, "Could not make external form: (null)."},
        {"create from external form",
         authorization,
         3,
         {{"status", -60010}},
         "Could not create from external form: -60010."},
        {"create from external form without status",
         authorization,
         3,
         {},
         "Could not create from external form: (null)."},
        {"set rights",
         authorization,
         4,
         {{"status", -60005}, {"rights", list({"A", "B"})}},
         "Could not set rights (-60005): A, B."},
        {"set rights without status",
         authorization,
         4,
         {{"rights", list({"A (-60005)", "B (-60008)"})}},
         "Could not set rights: A (-60005), B (-60008)."},
        {"set rights without rights", authorization, 4, {{"status", -1}}, "Could not set rights (-1): (null)."},
        {"set rights without anything", authorization, 4, {}, "Could not set rights: (null)."},
        {"set rights with no right", authorization, 4, {{"rights", Array()}}, "Could not set rights: ."},
        {"set rights with a text for rights", authorization, 4, {{"rights", "A"}}, "Could not set rights: A."},
        {"validate rights",
         authorization,
         5,
         {{"rights", list({"modify-1 (-60005)", "modify-2 (-60007)"})}},
         "Could not validate rights: (\n    \"modify-1 (-60005)\",\n    \"modify-2 (-60007)\"\n)."},
        {"validate rights without rights", authorization, 5, {}, "Could not validate rights: (null)."},
        {"authorize rights",
         authorization,
         6,
         {{"rights", list({"com.zerkolin.brevane.settings.modify-1", "com.zerkolin.brevane.settings.modify-2"})}},
         "Could not authorize rights: (\n    \"com.zerkolin.brevane.settings.modify-1\",\n"
         "    \"com.zerkolin.brevane.settings.modify-2\"\n)."},
        {"authorize rights without rights", authorization, 6, {}, "Could not authorize rights: (null)."},
        {"authorize rights with no right",
         authorization,
         6,
         {{"rights", Array()}},
         "Could not authorize rights: (\n)."},
    });
}

TEST_CASE("every product error has its text")
{
    checkEveryRow({
        {"backup running", product, 0, {}, "A backup operation is currently running."},
        {"update running", product, 1, {}, "An update operation is currently running."},
        {"peers connected", product, 2, {}, "Peers are connected."},
        {"missing value", product, 3, {{"key", "Mode"}}, "Missing value for key: 'Mode'."},
        {"missing value without key", product, 3, {}, "Missing value for key: '(null)'."},
        {"wrong type",
         product,
         4,
         {{"key", "Minutes"}, {"expected", "number"}},
         "Wrong type for key: 'Minutes', expected: 'number'."},
        {"wrong type without expected",
         product,
         4,
         {{"key", "Minutes"}},
         "Wrong type for key: 'Minutes', expected: '(null)'."},
        {"wrong type without key",
         product,
         4,
         {{"expected", "number"}},
         "Wrong type for key: '(null)', expected: 'number'."},
        {"unknown key", product, 5, {{"key", "Colour"}}, "Unknown key: 'Colour'."},
        {"unknown key without key", product, 5, {}, "Unknown key: '(null)'."},
    });
}

TEST_CASE("a code outside its domain's table, and a foreign domain, are described in the platform's own words")
{
    const std::pair<const char*, std::int64_t> outside[] = {{updater, 12},
                                                            {updater, -1},
                                                            {package, 3},
                                                            {package, -1},
                                                            {spawner, 3},
                                                            {spawner, -1},
                                                            {messager, 9},
                                                            {messager, -1},
                                                            {authorization, 7},
                                                            {product, 6},
                                                            {product, -1},
                                                            {authorization, -1},
                                                            {"NSPOSIXErrorDomain", 2},
                                                            {"com.example", 0},
                                                            {product, std::numeric_limits<std::int64_t>::max()},
                                                            {messager, std::numeric_limits<std::int64_t>::min()}};
    for (const auto& [domain, code] : outside) {
        CAPTURE(domain);
        CAPTURE(code);
        const Error plain{domain, code, {}, nullptr};
        CHECK(ZRKError::localizedDescriptionForError(plain) == platform::localizedDescription(plain));
        const Error told{domain, code, {{"NSLocalizedDescription", "It went %@ wrong."}}, nullptr};
        CHECK(ZRKError::localizedDescriptionForError(told) == "It went %@ wrong.");
    }
}

TEST_CASE("a ready description does not replace the text of an error of the tables")
{
    CHECK(ZRKError::localizedDescriptionForError({product, 2, {{"NSLocalizedDescription", "Other."}}, nullptr})
          == "Peers are connected.");
}

TEST_CASE("domains are compared exactly, with their case")
{
    const Error error{"com.zerkolin.Brevane", 2, {{"NSLocalizedDescription", "Foreign."}}, nullptr};
    CHECK(ZRKError::localizedDescriptionForError(error) == "Foreign.");
    CHECK(ZRKError::logLevelForError(error) == 16);
}

TEST_CASE("an error without an underlying error reads exactly as its own description")
{
    CHECK(ZRKError::localizedDescriptionForError({updater, 2, {}, nullptr}) == "Could not read update data.");
}

TEST_CASE("a chain of three errors reads as three descriptions with single spaces between them, outermost first")
{
    const auto chain =
        wrap({updater, 7, {}, nullptr},
             wrap({spawner, 1, {{"tool", "installer"}, {"exit-status", 1}}, nullptr}, {package, 1, {}, nullptr}));
    CHECK(ZRKError::localizedDescriptionForError(chain)
          == "Could not install update. installer exited with status 1. Installer package is not signed.");
}

TEST_CASE("an error's text is not taken for a format when it holds percent signs")
{
    CHECK(ZRKError::localizedDescriptionForError({product, 5, {{"key", "100%@ %n %lu"}}, nullptr})
          == "Unknown key: '100%@ %n %lu'.");
}

TEST_CASE("a very long chain is described without exhausting the stack")
{
    Error chain{product, 2, {}, nullptr};
    for (int depth = 1; depth < 1000; ++depth)
        chain = wrap({product, 2, {}, nullptr}, std::move(chain));
    CHECK(ZRKError::localizedDescriptionForError(chain).size() == 1000 * 20 + 999);
    CHECK_FALSE(userCanceledAuthentication(chain));
}

TEST_CASE("the log level of an error is default for expected outcomes, info for a cancel and error otherwise")
{
    const auto check = [](const char* domain, std::initializer_list<std::pair<std::int64_t, int>> levels) {
        for (const auto& [code, level] : levels) {
            CAPTURE(domain);
            CAPTURE(code);
            CHECK(int(ZRKError::logLevelForError({domain, code, {}, nullptr})) == level);
        }
    };
    check(updater,
          {{0, 0},
           {1, 16},
           {2, 16},
           {3, 16},
           {4, 16},
           {5, 16},
           {6, 16},
           {7, 16},
           {8, 0},
           {9, 0},
           {10, 16},
           {11, 16},
           {12, 16},
           {64, 16},
           {-1, 16},
           {-64, 16}});
    check(messager, {{0, 16}, {1, 16}, {2, 16}, {3, 16}, {4, 16}, {5, 16}, {6, 16}, {7, 0}, {8, 0}, {9, 16}, {-1, 16}});
    check(authorization, {{0, 1}, {1, 16}, {2, 16}, {3, 16}, {4, 16}, {5, 16}, {6, 16}, {7, 16}, {-1, 16}});
    check(product, {{0, 0}, {1, 0}, {2, 0}, {3, 16}, {4, 16}, {5, 16}, {6, 16}, {-1, 16}});
    check(package, {{0, 16}, {1, 16}, {2, 16}});
    check(spawner, {{0, 16}, {1, 16}, {2, 16}});
    check("NSPOSIXErrorDomain", {{0, 16}, {2, 16}});
    check("", {{0, 16}});
}

TEST_CASE("only the outermost error decides the log level")
{
    const Error canceled{authorization, 0, {}, nullptr};
    CHECK(ZRKError::logLevelForError(canceled) == 1);
    CHECK(ZRKError::logLevelForError(wrap({messager, 0, {}, nullptr}, canceled)) == 16);
}

TEST_CASE("the user canceled when any error of the chain says so")
{
    const Error canceled{authorization, 0, {}, nullptr};
    CHECK(userCanceledAuthentication(canceled));
    CHECK(userCanceledAuthentication(wrap({messager, 0, {}, nullptr}, canceled)));
    CHECK(userCanceledAuthentication(wrap({product, 1, {}, nullptr}, wrap({messager, 0, {}, nullptr}, canceled))));
    CHECK_FALSE(userCanceledAuthentication({authorization, 6, {}, nullptr}));
    CHECK_FALSE(userCanceledAuthentication({messager, 0, {}, nullptr}));
    CHECK_FALSE(userCanceledAuthentication(wrap({authorization, 6, {}, nullptr}, {authorization, 1, {}, nullptr})));
}

TEST_CASE("an error that is made holds what it was made of")
{
    const auto error =
        ZRKError::errorWithDomain(messager, 5, {{"message", 3}}, Error{"NSCocoaErrorDomain", 3840, {}, nullptr});
    CHECK(error.domain == messager);
    CHECK(error.code == 5);
    CHECK(error.userInfo == Dictionary{{"message", 3}});
    REQUIRE(error.underlying);
    CHECK(*error.underlying == Error{"NSCocoaErrorDomain", 3840, {}, nullptr});
    CHECK_FALSE(ZRKError::errorWithDomain(product, 2).underlying);
}

TEST_CASE("making an error logs its whole chain once at its level to the unified log and the file")
{
    const Logging log;
    const auto canceled = ZRKError::errorWithDomain(authorization, 0);
    CHECK(Logging::unified() == UnifiedMessages{{1, "User canceled authentication."}});
    ZRKError::errorWithDomain(messager, 0, {{"message", 2}}, canceled);
    ZRKError::errorWithDomain(product, 0);
    const Texts texts{"User canceled authentication.", "Could not authorize message (2). User canceled authentication.",
                      "A backup operation is currently running."};
    CHECK(Logging::unified() == UnifiedMessages{{1, texts[0]}, {16, texts[1]}, {0, texts[2]}});
    CHECK(Logging::legacy().empty());
    CHECK(log.fileTexts() == texts);
}

TEST_CASE("before 10.12 making an error logs it to the legacy log and the file")
{
    const Logging log({10, 11, 6});
    ZRKError::errorWithDomain(authorization, 0);
    ZRKError::errorWithDomain(product, 0);
    ZRKError::errorWithDomain(product, 5, {{"key", "k"}});
    const Texts texts{"User canceled authentication.", "A backup operation is currently running.", "Unknown key: 'k'."};
    CHECK(Logging::unified().empty());
    CHECK(Logging::legacy() == LegacyMessages{{"Warning", texts[0]}, {"Warning", texts[1]}, {"Error", texts[2]}});
    CHECK(log.fileTexts() == texts);
}

TEST_CASE("percent signs in an error's text reach the log as they are")
{
    const Logging log;
    ZRKError::errorWithDomain(product, 5, {{"key", "%@ %s %d %%"}});
    CHECK(Logging::unified() == UnifiedMessages{{16, "Unknown key: '%@ %s %d %%'."}});
    CHECK(log.fileTexts() == Texts{"Unknown key: '%@ %s %d %%'."});
}

TEST_CASE("describing and rating an error logs nothing")
{
    const Logging log;
    const Error error{product, 5, {{"key", "k"}}, nullptr};
    ZRKError::localizedDescriptionForError(error);
    ZRKError::logLevelForError(error);
    userCanceledAuthentication(error);
    CHECK(scripted::log::messages().empty());
    CHECK(log.fileTexts().empty());
}

TEST_CASE("a POSIX error that the system makes is logged as a failure in the system's words")
{
    const Logging log;
    const auto error = ZRKError::errorWithDomain(platform::POSIXErrorDomain, 2);
    CHECK(Logging::unified() == UnifiedMessages{{16, platform::localizedDescription(error)}});
}
