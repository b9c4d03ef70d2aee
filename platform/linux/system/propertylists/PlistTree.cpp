#include "platform/linux/system/propertylists/PlistTree.h"

#include "platform/linux/system/propertylists/BinaryFormat.h"
#include "platform/linux/system/propertylists/BinaryGuard.h"
#include "platform/Unicode.h"

#include <bit>
#include <cstdlib>
#include <utility>

namespace platform {

namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

// The library tells a date only in 32-bit seconds and whole microseconds, but writes all of it: a header, a marker
// and the eight bytes of a real.
std::optional<PropertyList> dateOfTree(plist_t tree)
{
    constexpr std::size_t begin = BinaryFormat::header.size() + 1;
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(tree, &bytes, &length);
    const std::unique_ptr<char, FreeMemory> owner(bytes);
    if (!bytes || length < begin + 8)
        return std::nullopt;
    std::uint64_t bits = 0;
    for (std::size_t i = begin; i < begin + 8; ++i)
        bits = bits << 8 | static_cast<std::uint8_t>(bytes[i]);
    return Date{std::bit_cast<double>(bits)};
}

PropertyList dataOfTree(plist_t tree)
{
    std::uint64_t length = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(tree, &length));
    return bytes ? Data(bytes, bytes + length) : Data();
}

std::optional<PropertyList> arrayOfTree(plist_t tree)
{
    Array array;
    array.reserve(plist_array_get_size(tree));
    const bool complete = forEachElement(tree, [&](plist_t element) {
        auto value = valueOfTree(element);
        if (value)
            array.push_back(std::move(*value));
        return value.has_value();
    });
    return complete ? std::optional<PropertyList>(std::move(array)) : std::nullopt;
}

std::optional<PropertyList> dictionaryOfTree(plist_t tree)
{
    Dictionary dictionary;
    const bool complete = forEachEntry(tree, [&](const char* key, plist_t element) {
        auto value = valueOfTree(element);
        if (!value || !isValidUTF8(key))
            return false;
        dictionary.set(key, std::move(*value));
        return true;
    });
    return complete ? std::optional<PropertyList>(std::move(dictionary)) : std::nullopt;
}

} // namespace

PlistTree readBinaryTree(std::span<const std::uint8_t> bytes)
{
    plist_t tree = nullptr;
    if (isSoundBinaryPropertyList(bytes))
        plist_from_bin(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &tree);
    return PlistTree(tree);
}

std::optional<std::string> textOfTree(plist_t tree)
{
    std::uint64_t length = 0;
    const char* text = plist_get_node_type(tree) == PLIST_STRING ? plist_get_string_ptr(tree, &length) : nullptr;
    if (!text || !isValidUTF8({text, length}))
        return std::nullopt;
    return std::string(text, length);
}

std::optional<PropertyList> valueOfTree(plist_t tree)
{
    switch (plist_get_node_type(tree)) {
    case PLIST_BOOLEAN: {
        std::uint8_t boolean = 0;
        plist_get_bool_val(tree, &boolean);
        return boolean != 0;
    }
    case PLIST_UINT: {
        std::uint64_t number = 0;
        plist_get_uint_val(tree, &number);
        return static_cast<std::int64_t>(number);
    }
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(tree, &real);
        return real;
    }
    case PLIST_STRING: {
        auto text = textOfTree(tree);
        return text ? std::optional<PropertyList>(std::move(*text)) : std::nullopt;
    }
    case PLIST_DATE:
        return dateOfTree(tree);
    case PLIST_DATA:
        return dataOfTree(tree);
    case PLIST_ARRAY:
        return arrayOfTree(tree);
    case PLIST_DICT:
        return dictionaryOfTree(tree);
    default:
        return std::nullopt;
    }
}

bool forEachElement(plist_t array, const std::function<bool(plist_t)>& function)
{
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    const std::unique_ptr<void, FreeMemory> owner(iterator);
    for (plist_t element = nullptr;;) {
        plist_array_next_item(array, iterator, &element);
        if (!element)
            return true;
        if (!function(element))
            return false;
    }
}

bool forEachEntry(plist_t dictionary, const std::function<bool(const char* key, plist_t)>& function)
{
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    const std::unique_ptr<void, FreeMemory> owner(iterator);
    for (;;) {
        char* key = nullptr;
        plist_t element = nullptr;
        plist_dict_next_item(dictionary, iterator, &key, &element);
        const std::unique_ptr<char, FreeMemory> keyOwner(key);
        if (!element)
            return true;
        if (!function(key ? key : "", element))
            return false;
    }
}

} // namespace platform
