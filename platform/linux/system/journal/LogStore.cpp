#include "platform/linux/system/journal/LogStore.h"

#include "platform/linux/system/formats/JSONRecordParser.h"
#include "platform/SystemInformation.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace platform {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Free {
    void operator()(char* text) const { std::free(text); }
};

} // namespace

std::string logTimestamp(const timespec& time)
{
    ::tzset();
    tm local{};
    ::localtime_r(&time.tv_sec, &local);
    char date[32];
    char zone[16];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S", &local);
    std::strftime(zone, sizeof zone, "%z", &local);
    char text[128];
    std::snprintf(text, sizeof text, "%s.%06ld%s", date, time.tv_nsec / 1000, zone);
    return text;
}

std::expected<void, int> readLogStore(const char* store, std::span<const std::string_view> keys,
                                      const JSONRecords::Visitor& visit)
{
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen((systemPath("/var/log") + "/" + store).c_str(), "re"));
    if (!file)
        return errno == ENOENT ? std::expected<void, int>() : std::unexpected(errno);
    JSONRecordParser parser;
    std::string record;
    char* line = nullptr;
    std::size_t capacity = 0;
    std::unique_ptr<char, Free> owner;
    for (;;) {
        static_cast<void>(owner.release());
        const auto length = ::getline(&line, &capacity, file.get());
        owner.reset(line);
        if (length < 0)
            return std::ferror(file.get()) ? std::unexpected(errno) : std::expected<void, int>();
        record.assign("[").append(line, static_cast<std::size_t>(length)).append("]");
        const auto size = record.size();
        record.append(JSONRecordParser::Padding, '\0');
        parser.parse(std::string_view(record).substr(0, size), keys, visit);
    }
}

} // namespace platform
