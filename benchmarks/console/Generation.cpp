#include "benchmarks/console/Generation.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <random>

namespace {

constexpr std::array types = {"Default", "Default", "Default", "Info", "Debug", "Error"};
constexpr std::array words = {"backup ",    "snapshot ",           "copied ",         "volume ",   "of 12 GB ",
                              "caf\u00e9 ", "/Users/Shared/file ", "\\\"quoted\\\" ", "finished ", "interval ",
                              "scheduler "};

std::string messageOf(std::mt19937& random)
{
    std::string message;
    const auto length = 350 + random() % 400;
    while (message.size() < length)
        message += words[random() % words.size()];
    return message;
}

} // namespace

void generateRecords(std::size_t count, const std::string& path)
{
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "w"));
    std::mt19937 random(5);
    std::time_t second = 1795164982;
    for (std::size_t number = 0; number < count; ++number) {
        second += static_cast<std::time_t>(random() % 3);
        char date[32];
        tm parts{};
        ::gmtime_r(&second, &parts);
        std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &parts);
        const bool product = random() % 3 == 0;
        std::fprintf(
            file.get(),
            "%s{\"timestamp\":\"%s.%06u+0000\",\"messageType\":\"%s\",\"eventType\":\"logEvent\",\"source\":null,"
            "\"formatString\":\"%%{public}@ of %%d\",\"userID\":501,\"activityIdentifier\":%u,\"subsystem\":\"%s\","
            "\"category\":\"General\",\"threadID\":%u,\"senderImageUUID\":\"9A1B7C3D-0F2E-4A5B-8C6D-7E8F90A1B2C3\","
            "\"backtrace\":{\"frames\":[{\"imageOffset\":%u,\"imageUUID\":\"9A1B7C3D-0F2E-4A5B-8C6D-7E8F90A1B2C3\"}]},"
            "\"processImagePath\":\"%s\",\"processID\":%u,\"eventMessage\":\"%s\"}",
            number == 0 ? "[" : ",", date, static_cast<unsigned>(random() % 1000000), types[random() % types.size()],
            static_cast<unsigned>(random() % 100000), product ? "com.zerkolin.brevane" : "com.apple.TimeMachine",
            static_cast<unsigned>(random()), static_cast<unsigned>(random() % 1000000),
            product ? "/Library/Brevane/com.zerkolin.brevane.scheduler"
                    : "/System/Library/CoreServices/backupd.bundle/Contents/Resources/backupd",
            static_cast<unsigned>(random() % 99999), messageOf(random).c_str());
    }
    std::fputs("]\n", file.get());
}
