#pragma once

#include "diagnostics/log/ZRKLog.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedSystemInformation.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/support/TemporaryDirectory.h"

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// A fresh scripted platform of a given system version, with the log open on a file in a private home.
class Logging {
public:
    explicit Logging(platform::OperatingSystemVersion version = {14, 0, 0})
    {
        scripted::reset();
        scripted::system::setHomeDirectory(_home.path());
        scripted::system::setOperatingSystemVersion(version);
        ZRKLogInit("com.zerkolin.brevane", "application");
    }

    // The texts in the log file, without their dates, categories and process identifiers.
    std::vector<std::string> fileTexts() const
    {
        std::vector<std::string> texts;
        std::ifstream file(_home.file("Library/Logs/Brevane/application.log"));
        const std::string head = " application[812] ";
        for (std::string line; std::getline(file, line);) {
            const auto place = line.find(head);
            texts.push_back(place == std::string::npos ? line : line.substr(place + head.size()));
        }
        return texts;
    }

    // Type and text of each message to the unified log.
    static std::vector<std::pair<int, std::string>> unified()
    {
        std::vector<std::pair<int, std::string>> found;
        for (const auto& message : scripted::log::messages()) {
            if (message.sink == scripted::log::Sink::Unified)
                found.emplace_back(message.type, message.text);
        }
        return found;
    }

    // "Level" and text of each message to the legacy log.
    static std::vector<std::pair<std::string, std::string>> legacy()
    {
        std::vector<std::pair<std::string, std::string>> found;
        for (const auto& message : scripted::log::messages()) {
            if (message.sink == scripted::log::Sink::Legacy)
                found.emplace_back(message.level, message.text);
        }
        return found;
    }

private:
    TemporaryDirectory _home;
};

using UnifiedMessages = std::vector<std::pair<int, std::string>>;
using LegacyMessages = std::vector<std::pair<std::string, std::string>>;
using Texts = std::vector<std::string>;
