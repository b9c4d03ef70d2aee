#include "platform/macos/system/XPCDictionary.h"

namespace platform {

void setEntries(xpc_object_t message, const ServiceDictionary& dictionary)
{
    for (const auto& [key, value] : dictionary) {
        if (const auto* const number = std::get_if<std::int64_t>(&value))
            xpc_dictionary_set_int64(message, key.c_str(), *number);
        else if (const auto* const bytes = std::get_if<Data>(&value))
            xpc_dictionary_set_data(message, key.c_str(), bytes->data(), bytes->size());
    }
}

xpc_object_t xpcDictionary(const ServiceDictionary& dictionary)
{
    const xpc_object_t made = xpc_dictionary_create(nullptr, nullptr, 0);
    setEntries(made, dictionary);
    return made;
}

ServiceDictionary serviceDictionary(xpc_object_t dictionary)
{
    ServiceDictionary read;
    ServiceDictionary* const entries = &read;
    xpc_dictionary_apply(dictionary, ^bool(const char* key, xpc_object_t value) {
        if (xpc_get_type(value) == XPC_TYPE_INT64) {
            entries->emplace(key, xpc_int64_get_value(value));
        } else if (xpc_get_type(value) == XPC_TYPE_DATA) {
            const auto* const bytes = static_cast<const std::uint8_t*>(xpc_data_get_bytes_ptr(value));
            entries->emplace(key, Data(bytes, bytes + xpc_data_get_length(value)));
        }
        return true;
    });
    return read;
}

} // namespace platform
