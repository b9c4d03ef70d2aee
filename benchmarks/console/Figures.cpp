#include "benchmarks/console/Figures.h"

#include "platform/Process.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <simdjson.h>
#include <unicode/smpdtfmt.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Touches every value and returns how many there are.
std::size_t walk(simdjson::ondemand::value value)
{
    std::size_t count = 1;
    switch (value.type()) {
    case simdjson::ondemand::json_type::object:
        for (auto field : value.get_object())
            count += walk(field.value());
        break;
    case simdjson::ondemand::json_type::array:
        for (auto element : value.get_array())
            count += walk(element.value());
        break;
    case simdjson::ondemand::json_type::string:
        count += std::string_view(value.get_string()).size();
        break;
    case simdjson::ondemand::json_type::number:
        count += value.get_number().error() == simdjson::SUCCESS;
        break;
    case simdjson::ondemand::json_type::boolean:
        count += bool(value.get_bool());
        break;
    case simdjson::ondemand::json_type::null:
        break;
    }
    return count;
}

} // namespace

double floorMilliseconds(const std::string& toolPath)
{
    const auto start = Clock::now();
    const auto tool = platform::Process::start(toolPath, {});
    std::string json;
    std::array<char, 2048> chunk;
    while (const auto count = (*tool)->read(chunk))
        json.append(chunk.data(), count);
    (*tool)->waitUntilExit();
    json.reserve(json.size() + simdjson::SIMDJSON_PADDING);
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document = parser.iterate(json);
    std::size_t values = 0;
    for (auto element : document.get_array())
        values += walk(element.value());
    const auto time = millisecondsSince(start);
    if (values == 0)
        std::abort();
    return time;
}

double dateMilliseconds(const std::string& jsonPath)
{
    std::ifstream file(jsonPath, std::ios::binary);
    std::vector<std::string> dates;
    const std::string key = "\"timestamp\":\"";
    std::string json{std::istreambuf_iterator<char>(file), {}};
    for (auto at = json.find(key); at != std::string::npos; at = json.find(key, at + 1)) {
        auto date = json.substr(at + key.size(), 31);
        std::ranges::replace(date.begin(), date.begin() + 10, '-', '.');
        dates.push_back(std::move(date));
    }
    json.clear();
    UErrorCode status = U_ZERO_ERROR;
    const icu::SimpleDateFormat parser("yyyy.MM.dd HH:mm:ss.SSSSSSZZZ", icu::Locale::getUS(), status);
    const std::unique_ptr<icu::DateFormat> printer(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kShort, icu::DateFormat::kMedium, icu::Locale::getUS()));
    std::size_t length = 0;
    const auto start = Clock::now();
    for (const auto& date : dates) {
        icu::UnicodeString text;
        printer->format(parser.parse(icu::UnicodeString::fromUTF8(date), status), text);
        std::string bytes;
        text.toUTF8String(bytes);
        length += bytes.size();
    }
    const auto time = millisecondsSince(start);
    if (length == 0 || U_FAILURE(status))
        std::abort();
    return time;
}
