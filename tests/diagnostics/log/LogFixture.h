#pragma once

#include "diagnostics/log/ZRKLog.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/support/TemporaryDirectory.h"

#include <string>
#include <string_view>
#include <vector>

// A machine of the test's own with an empty home, on which the log is not open yet.
class LogFixture {
public:
    static constexpr std::uint64_t Threshold = 10'000'000;

    LogFixture();

    void open() { ZRKLogInit("com.zerkolin.brevane", "application"); }

    std::string folder() const { return _home.path() + "/Library/Logs/Brevane"; }
    std::string path(const std::string& suffix = ".log") const { return folder() + "/application" + suffix; }

    // Makes the file with so many bytes, which begin with the given text.
    void makeFile(const std::string& suffix, std::uint64_t size, std::string_view beginning = "") const;
    bool exists(const std::string& suffix) const;
    std::uint64_t size(const std::string& suffix = ".log") const;
    std::string content(const std::string& suffix = ".log") const;
    std::vector<std::string> files() const; // the names in the folder, sorted

    const TemporaryDirectory& home() const { return _home; }

private:
    TemporaryDirectory _home;
};

// The lines of a text, without their newlines. A last line without one is not whole and fails the test.
std::vector<std::string> linesOf(const std::string& text);
// What a line says, after the date, the category and the process.
std::string messageOf(const std::string& line);
