#include "diagnostics/console/LogLineWriter.h"
#include "tests/console/ConsoleFixture.h"

#include <doctest/doctest.h>

using namespace platform;

namespace {

std::string linesOf(const std::string& elements)
{
    setToolOutput("[" + elements + "]");
    return fetchedLog().string();
}

std::string element(const std::string& members)
{
    return R"({"timestamp":"2026-11-20 09:56:22.123456+0000","messageType":"Default")" + members + "}";
}

const std::string theDate = "11/20/26, 9:56:22\u202FAM";

} // namespace

TEST_CASE("the last component of a path is what the platform takes for it")
{
    CHECK(lastPathComponent("/usr/bin/log") == "log");
    CHECK(lastPathComponent("/usr/bin/") == "bin");
    CHECK(lastPathComponent("log") == "log");
    CHECK(lastPathComponent("a//") == "a");
    CHECK(lastPathComponent("/") == "/");
    CHECK(lastPathComponent("//") == "/");
    CHECK(lastPathComponent("").empty());
}

TEST_CASE("thermal pressure messages of the backup daemon are left out in any letter case, those of the product not")
{
    ConsoleFixture fixture;
    for (const char* const message : {"Thermal Pressure Level", "thermal pressure level",
                                      "now THERMAL PRESSURE LEVEL 2", "a v and a thermal pressure leVel"})
        CHECK(linesOf(record("com.apple.TimeMachine", "Default", message)).empty());
    for (const char* const message : {"thermal pressure leve", "hermal pressure level", "thermal  pressure level",
                                      "level thermal pressure", "thermal pressure le", "v"})
        CHECK_FALSE(linesOf(record("com.apple.TimeMachine", "Default", message)).empty());
    CHECK(linesOf(record("com.zerkolin.brevane", "Default", "Thermal Pressure Level"))
          == theDate + " brevane Thermal Pressure Level\n");
    CHECK(linesOf(element(R"(,"eventMessage":"thermal pressure level")")).empty());
}

TEST_CASE("the scheduler helper has a label of its own, with a space that does not break")
{
    ConsoleFixture fixture;
    CHECK(linesOf(record("com.zerkolin.brevane", "Default", "m", "/Library/Brevane/com.zerkolin.brevane.scheduler"))
          == theDate + " Brevane\u00A0Scheduler m\n");
    CHECK(linesOf(record("com.zerkolin.brevane", "Default", "m", "/x/com.zerkolin.brevane.schedulers"))
          == theDate + " com.zerkolin.brevane.schedulers m\n");
    // The backup daemon's lines do not look at the path.
    CHECK(linesOf(record("com.apple.TimeMachine", "Default", "m", "/x/com.zerkolin.brevane.scheduler"))
          == theDate + " Time Machine m\n");
}

TEST_CASE("missing keys, null and values of unknown types are met")
{
    ConsoleFixture fixture;
    CHECK(linesOf("{}") == "??? Time Machine (null)\n");
    CHECK(linesOf("null") == "??? Time Machine (null)\n");
    CHECK(linesOf(element("")) == theDate + " Time Machine (null)\n");
    CHECK(linesOf(element(R"(,"subsystem":null,"eventMessage":null)")) == theDate + " Time Machine <null>\n");
    CHECK(linesOf(element(R"(,"subsystem":7,"eventMessage":7)")) == theDate + " Time Machine 7\n");
    CHECK(linesOf(element(R"(,"eventMessage":true)")) == theDate + " Time Machine 1\n");
    CHECK(linesOf(element(R"(,"eventMessage":"")")) == theDate + " Time Machine \n");
    CHECK(linesOf(element(R"(,"subsystem":"com.zerkolin.brevane","eventMessage":"m")")) == theDate + "  m\n");
    CHECK(linesOf(element(R"(,"subsystem":"COM.ZERKOLIN.BREVANE","eventMessage":"m")"))
          == theDate + " Time Machine m\n");
}

TEST_CASE("a record with a number beyond 64 bits is shown, and so are all others")
{
    ConsoleFixture fixture;
    CHECK(linesOf(element(R"(,"eventMessage":"before")") + ","
                  + element(R"(,"traceID":340282366920938463463374607431768211456,"eventMessage":"beside")") + ","
                  + element(R"(,"eventMessage":18446744073709551616)"))
          == theDate + " Time Machine before\n" + theDate + " Time Machine beside\n" + theDate
              + " Time Machine 1.8446744073709552e+19\n");
}

TEST_CASE("messages of the types Info and Fault are plain, and the case of a type matters")
{
    ConsoleFixture fixture;
    for (const char* const type : {"Info", "Fault", "error", "DEFAULT", "debug", ""}) {
        CAPTURE(type);
        setToolOutput("[" + record("com.apple.TimeMachine", type, "m") + "]");
        CHECK(styled(fetchedLog()) == "p[" + theDate + " ]b[Time Machine]p[ m\n]");
    }
}

TEST_CASE("the application's own lines show the last component of its executable's path")
{
    ConsoleFixture fixture;
    CHECK(linesOf(record("com.zerkolin.brevane", "Default", "m", "/opt/brevane/Brevane")) == theDate + " Brevane m\n");
    CHECK(linesOf(record("com.zerkolin.brevane", "Default", "m", "/opt/brevane/")) == theDate + " brevane m\n");
}

TEST_CASE("dates show with the separators of the tool and of the format; what is no date shows as question marks")
{
    ConsoleFixture fixture;
    const auto dateOf = [](const std::string& timestamp) {
        const auto line = linesOf(R"({"eventMessage":"m","timestamp":)" + timestamp + "}");
        return line.substr(0, line.find(" Time Machine"));
    };
    CHECK(dateOf(R"("2026-11-20 09:56:22.123456+0000")") == theDate);
    CHECK(dateOf(R"("2026.11.20 09:56:22.123456+0000")") == theDate);
    CHECK(dateOf(R"("2026-11-20 10:56:22.123456+0100")") == theDate);
    CHECK(dateOf(R"("2026-11-20 09:56:22.999999+0000")") == theDate);
    for (const char* const timestamp :
         {R"("")", R"("yesterday")", "null", "1795164982", R"("2026-11-20 09:56:22")",
          R"("2026-13-20 09:56:22.123456+0000")", R"("2026/11/20 09:56:22.123456+0000")"}) {
        CAPTURE(timestamp);
        CHECK(dateOf(timestamp) == "???");
    }
}

TEST_CASE("records of the same second, of another and without a date follow each other with their own dates")
{
    ConsoleFixture fixture;
    const auto at = [](const char* timestamp) {
        return std::string(R"({"eventMessage":"m","timestamp":")") + timestamp + "\"}";
    };
    CHECK(linesOf(at("2026-11-20 09:56:22.123456+0000") + "," + at("2026-11-20 09:56:22.654321+0000") + "," + at("x")
                  + "," + at("2026-11-20 09:56:23.000000+0000") + "," + at("2026-11-20 09:56:22.123456+0100") + ","
                  + at("x"))
          == theDate + " Time Machine m\n" + theDate + " Time Machine m\n??? Time Machine m\n"
              + "11/20/26, 9:56:23\u202FAM Time Machine m\n11/20/26, 8:56:22\u202FAM Time Machine m\n??? Time Machine "
                "m\n");
}

TEST_CASE("the tool's dates are read as they are meant, and shown in the calendar of the user's locale")
{
    ConsoleFixture fixture;
    for (const auto& [locale, date] :
         {std::pair("th_TH.UTF-8", "20/11/69 09:56:22"), std::pair("fa_IR.UTF-8", "۱۴۰۵/۸/۲۹, ۹:۵۶:۲۲"),
          std::pair("ar_SA.UTF-8", "١٠\u200F/٦\u200F/١٤٤٨ هـ، ٩:٥٦:٢٢ ص"),
          std::pair("de_DE.UTF-8", "20.11.26, 09:56:22")}) {
        const EnvironmentVariable variable("LC_ALL", locale);
        CAPTURE(locale);
        CHECK(linesOf(record("com.apple.TimeMachine", "Default", "m")) == std::string(date) + " Time Machine m\n");
    }
}
