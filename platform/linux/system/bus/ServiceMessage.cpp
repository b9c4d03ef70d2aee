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

// Reads the values of one message one after another.
class Reader {
public:
    Reader(sd_bus_message* message, const std::vector<ServiceKey>& form) : _message(message), _form(form) { }

    int readEntries();
    ServiceReading reading;

private:
    static constexpr int MaximumValues = 500;

    int readEntry();
    int readInteger(const char* key);
    int readBytes(const char* key);
    int skipValue();
    const ServiceKey* keyNamed(const char* name) const;

    sd_bus_message* _message;
    const std::vector<ServiceKey>& _form;
    int _valueCount = 0;
};

const ServiceKey* Reader::keyNamed(const char* name) const
{
    const auto found = std::ranges::find(_form, name, &ServiceKey::name);
    return found == _form.end() ? nullptr : &*found;
}

int Reader::readInteger(const char* key)
{
    std::int64_t integer = 0;
    const int result = sd_bus_message_read_basic(_message, SD_BUS_TYPE_INT64, &integer);
    if (result >= 0)
        reading.dictionary.insert_or_assign(key, integer);
    return result;
}

int Reader::readBytes(const char* key)
{
    const void* bytes = nullptr;
    std::size_t size = 0;
    const int result = sd_bus_message_read_array(_message, SD_BUS_TYPE_BYTE, &bytes, &size);
    if (result < 0)
        return result;
    if (const auto* known = keyNamed(key); known && size > known->maximumSize) {
        reading.tooLong.emplace_back(key);
        return result;
    }
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    reading.dictionary.insert_or_assign(key, size > 0 ? Data(first, first + size) : Data());
    return result;
}

// Passes over the value that comes next; arrays of numbers in one step, since sd-bus would walk them one by one. 0 at
// the end of a container.
int Reader::skipValue()
{
    char type = 0;
    const char* contents = nullptr;
    int result = sd_bus_message_peek_type(_message, &type, &contents);
    if (result <= 0)
        return result;
    if (!_form.empty() && ++_valueCount > MaximumValues)
        return -EMSGSIZE;
    if (!contents) {
        const char basic[] = {type, 0};
        return sd_bus_message_skip(_message, basic);
    }
    if (type == SD_BUS_TYPE_ARRAY && std::strchr("ynqiuxtd", contents[0]) && contents[1] == 0) {
        const void* values = nullptr;
        std::size_t size = 0;
        result = sd_bus_message_read_array(_message, contents[0], &values, &size);
        return result < 0 ? result : 1;
    }
    result = sd_bus_message_enter_container(_message, type, contents);
    while (result > 0)
        result = skipValue();
    return result < 0 ? result : sd_bus_message_exit_container(_message);
}

// Reads the key and the variant that come next.
int Reader::readEntry()
{
    const char* key = nullptr;
    const char* contents = nullptr;
    int result = sd_bus_message_read_basic(_message, SD_BUS_TYPE_STRING, &key);
    if (result >= 0)
        result = sd_bus_message_peek_type(_message, nullptr, &contents);
    if (result < 0)
        return result;
    const bool isInteger = std::strcmp(contents, "x") == 0;
    const bool isWanted = _form.empty() || keyNamed(key);
    if (!isWanted || (!isInteger && std::strcmp(contents, "ay") != 0))
        return skipValue();
    result = sd_bus_message_enter_container(_message, SD_BUS_TYPE_VARIANT, contents);
    if (result >= 0)
        result = isInteger ? readInteger(key) : readBytes(key);
    return result < 0 ? result : sd_bus_message_exit_container(_message);
}

int Reader::readEntries()
{
    int result = sd_bus_message_enter_container(_message, SD_BUS_TYPE_ARRAY, "{sv}");
    while (result >= 0) {
        result = sd_bus_message_enter_container(_message, SD_BUS_TYPE_DICT_ENTRY, "sv");
        if (result == 0)
            return sd_bus_message_exit_container(_message);
        if (result > 0 && !_form.empty() && ++_valueCount > MaximumValues)
            return -EMSGSIZE;
        if (result > 0)
            result = readEntry();
        if (result >= 0)
            result = sd_bus_message_exit_container(_message);
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

std::size_t serviceDictionarySize(const ServiceDictionary& dictionary)
{
    constexpr std::size_t HeaderSize = 1024;
    constexpr std::size_t EntrySize = 64;
    std::size_t size = HeaderSize;
    for (const auto& [key, value] : dictionary) {
        size += key.size() + EntrySize;
        if (const auto* bytes = std::get_if<Data>(&value))
            size += bytes->size();
    }
    return size;
}

std::optional<ServiceReading> readServiceMessage(sd_bus_message* message, const std::vector<ServiceKey>& form)
{
    Reader reader(message, form);
    if (sd_bus_message_has_signature(message, ServiceSignature) <= 0 || reader.readEntries() < 0)
        return std::nullopt;
    return std::move(reader.reading);
}

std::optional<ServiceDictionary> readServiceDictionary(sd_bus_message* message)
{
    auto reading = readServiceMessage(message, {});
    return reading ? std::optional(std::move(reading->dictionary)) : std::nullopt;
}

} // namespace platform
