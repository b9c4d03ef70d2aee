#include "platform/linux/system/bus/ServiceMessage.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace platform {

namespace {

int appendValue(sd_bus_message* message, const std::variant<std::int64_t, Data>& value)
{
    if (const auto* integer = std::get_if<std::int64_t>(&value))
        return sd_bus_message_append(message, "v", "x", *integer);
    const Data& data = std::get<Data>(value);
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, "ay");
    if (result >= 0)
        result = sd_bus_message_append_array(message, SD_BUS_TYPE_BYTE, data.data(), data.size());
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int readData(sd_bus_message* message, Data& data)
{
    const void* bytes = nullptr;
    std::size_t size = 0;
    const int result = sd_bus_message_read_array(message, SD_BUS_TYPE_BYTE, &bytes, &size);
    if (result >= 0 && size > 0)
        data.assign(static_cast<const std::uint8_t*>(bytes), static_cast<const std::uint8_t*>(bytes) + size);
    return result;
}

// Reads the variant that comes next.
int readValue(sd_bus_message* message, const char* key, ServiceDictionary& dictionary)
{
    const char* contents = nullptr;
    int result = sd_bus_message_peek_type(message, nullptr, &contents);
    if (result < 0)
        return result;
    if (std::strcmp(contents, "x") != 0 && std::strcmp(contents, "ay") != 0)
        return sd_bus_message_skip(message, "v");
    const bool isInteger = contents[0] == 'x';
    result = sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, isInteger ? "x" : "ay");
    if (result < 0)
        return result;
    std::int64_t integer = 0;
    Data data;
    result = isInteger ? sd_bus_message_read_basic(message, SD_BUS_TYPE_INT64, &integer) : readData(message, data);
    if (result < 0)
        return result;
    if (isInteger)
        dictionary.insert_or_assign(key, integer);
    else
        dictionary.insert_or_assign(key, std::move(data));
    return sd_bus_message_exit_container(message);
}

int readEntries(sd_bus_message* message, ServiceDictionary& dictionary)
{
    int result = sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    while (result >= 0) {
        result = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
        if (result == 0)
            return sd_bus_message_exit_container(message);
        const char* key = nullptr;
        if (result > 0)
            result = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &key);
        if (result >= 0)
            result = readValue(message, key, dictionary);
        if (result >= 0)
            result = sd_bus_message_exit_container(message);
    }
    return result;
}

} // namespace

std::string servicePath(const std::string& serviceName)
{
    std::string path = "/" + serviceName;
    std::replace(path.begin(), path.end(), '.', '/');
    return path;
}

int appendServiceDictionary(sd_bus_message* message, const ServiceDictionary& dictionary)
{
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    for (const auto& [key, value] : dictionary) {
        if (result >= 0)
            result = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
        if (result >= 0)
            result = sd_bus_message_append_basic(message, SD_BUS_TYPE_STRING, key.c_str());
        if (result >= 0)
            result = appendValue(message, value);
        if (result >= 0)
            result = sd_bus_message_close_container(message);
        if (result < 0)
            return result;
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

std::optional<ServiceDictionary> readServiceDictionary(sd_bus_message* message)
{
    ServiceDictionary dictionary;
    if (sd_bus_message_has_signature(message, ServiceSignature) <= 0 || readEntries(message, dictionary) < 0)
        return std::nullopt;
    return dictionary;
}

} // namespace platform
