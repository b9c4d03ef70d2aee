#include "platform/linux/system/coding/PlistTree.h"

#include "platform/Format.h"
#include "platform/linux/system/coding/BinaryGuard.h"
#include "platform/linux/system/coding/CodingError.h"
#include "platform/linux/system/coding/XMLGuard.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace platform {

namespace {

using Reader = void (*)(const char*, std::uint32_t, plist_t*);

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

Result<PlistTree> readTree(Reader reader, std::span<const std::uint8_t> bytes)
{
    plist_t tree = nullptr;
    reader(reinterpret_cast<const char*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), &tree);
    if (!tree)
        return std::unexpected(corruptPropertyListError("The property list is damaged."));
    return PlistTree(tree);
}

PropertyList dateOfTree(plist_t tree)
{
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(tree, &seconds, &microseconds);
    const double fraction = microseconds / 1e6;
    return Date{seconds < 0 ? seconds - fraction : seconds + fraction};
}

PropertyList dataOfTree(plist_t tree)
{
    std::uint64_t length = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(plist_get_data_ptr(tree, &length));
    return bytes ? Data(bytes, bytes + length) : Data();
}

Result<PropertyList> arrayOfTree(plist_t tree)
{
    Array array;
    array.reserve(plist_array_get_size(tree));
    std::optional<Error> failure;
    forEachElement(tree, [&](plist_t element) {
        auto value = valueOfTree(element);
        if (value)
            array.push_back(std::move(*value));
        else
            failure = std::move(value.error());
        return !failure;
    });
    if (failure)
        return std::unexpected(std::move(*failure));
    return array;
}

Result<PropertyList> dictionaryOfTree(plist_t tree)
{
    Dictionary dictionary;
    std::optional<Error> failure;
    forEachEntry(tree, [&](const char* key, plist_t element) {
        auto value = valueOfTree(element);
        if (!value)
            failure = std::move(value.error());
        else if (!isValidUTF8(key))
            failure = corruptPropertyListError("The property list has a key that is no text.");
        else
            dictionary.set(key, std::move(*value));
        return !failure;
    });
    if (failure)
        return std::unexpected(std::move(*failure));
    return dictionary;
}

bool isWritableText(const std::string& text)
{
    return text.find('\0') == std::string::npos && isValidUTF8(text);
}

// Every node is owned by its parent from the moment it is made, so a failure frees what there is.
Result<PlistTree> treeAtDepth(const PropertyList& value, int depth);

Result<PlistTree> treeOfArray(const Array& array, int depth)
{
    PlistTree tree(plist_new_array());
    for (const PropertyList& element : array) {
        auto child = treeAtDepth(element, depth + 1);
        if (!child)
            return child;
        plist_array_append_item(tree.get(), child->release());
    }
    return tree;
}

Result<PlistTree> treeOfDictionary(const Dictionary& dictionary, int depth)
{
    PlistTree tree(plist_new_dict());
    for (const Dictionary::Entry& entry : dictionary) {
        if (!isWritableText(entry.key))
            return std::unexpected(unwritablePropertyListError("A key is no text that can be written."));
        auto child = treeAtDepth(entry.value, depth + 1);
        if (!child)
            return child;
        plist_dict_set_item(tree.get(), entry.key.c_str(), child->release());
    }
    return tree;
}

Result<PlistTree> treeOfDate(Date date)
{
    double whole = 0;
    const double fraction = std::modf(date.secondsSinceReferenceDate, &whole);
    if (!(std::abs(whole) <= std::numeric_limits<std::int32_t>::max()))
        return std::unexpected(unwritablePropertyListError("A date is too far away to be written."));
    return PlistTree(plist_new_date(static_cast<std::int32_t>(whole), static_cast<std::int32_t>(fraction * 1e6)));
}

Result<PlistTree> treeAtDepth(const PropertyList& value, int depth)
{
    if (depth > maximumPropertyListDepth)
        return std::unexpected(unwritablePropertyListError("The value is nested too deeply."));
    switch (value.type()) {
    case PropertyList::Type::Boolean:
        return PlistTree(plist_new_bool(value.boolValue() ? 1 : 0));
    case PropertyList::Type::Integer:
        return PlistTree(plist_new_uint(static_cast<std::uint64_t>(value.integerValue())));
    case PropertyList::Type::Real:
        return PlistTree(plist_new_real(value.realValue()));
    case PropertyList::Type::String:
        if (!isWritableText(*value.string()))
            return std::unexpected(unwritablePropertyListError("A string is no text that can be written."));
        return PlistTree(plist_new_string(value.string()->c_str()));
    case PropertyList::Type::Date:
        return treeOfDate(*value.date());
    case PropertyList::Type::Data: {
        const Data& data = *value.data();
        return PlistTree(plist_new_data(reinterpret_cast<const char*>(data.data()), data.size()));
    }
    case PropertyList::Type::Array:
        return treeOfArray(*value.array(), depth);
    case PropertyList::Type::Dictionary:
        return treeOfDictionary(*value.dictionary(), depth);
    }
    return std::unexpected(unwritablePropertyListError("The value has no type."));
}

} // namespace

Result<PlistTree> readBinaryTree(std::span<const std::uint8_t> bytes)
{
    if (!isSoundBinaryPropertyList(bytes))
        return std::unexpected(corruptPropertyListError("The binary property list is damaged."));
    return readTree(plist_from_bin, bytes);
}

Result<PlistTree> readXMLTree(std::span<const std::uint8_t> bytes)
{
    if (!isSoundXMLPropertyList({reinterpret_cast<const char*>(bytes.data()), bytes.size()}))
        return std::unexpected(corruptPropertyListError("The XML property list is damaged."));
    return readTree(plist_from_xml, bytes);
}

Data writeBinaryTree(plist_t tree)
{
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(tree, &bytes, &length);
    const std::unique_ptr<char, FreeMemory> owner(bytes);
    return bytes ? Data(bytes, bytes + length) : Data();
}

Result<std::string> textOfTree(plist_t tree)
{
    std::uint64_t length = 0;
    const char* text = plist_get_node_type(tree) == PLIST_STRING ? plist_get_string_ptr(tree, &length) : nullptr;
    if (!text || !isValidUTF8({text, length}))
        return std::unexpected(corruptPropertyListError("The property list has a string that is no text."));
    return std::string(text, length);
}

Result<PropertyList> valueOfTree(plist_t tree)
{
    switch (plist_get_node_type(tree)) {
    case PLIST_BOOLEAN: {
        std::uint8_t boolean = 0;
        plist_get_bool_val(tree, &boolean);
        return PropertyList(boolean != 0);
    }
    case PLIST_UINT: {
        std::uint64_t number = 0;
        plist_get_uint_val(tree, &number);
        return PropertyList(static_cast<std::int64_t>(number));
    }
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(tree, &real);
        return PropertyList(real);
    }
    case PLIST_STRING: {
        auto text = textOfTree(tree);
        if (!text)
            return std::unexpected(std::move(text.error()));
        return PropertyList(std::move(*text));
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
        return std::unexpected(corruptPropertyListError("The property list has an object of no known type."));
    }
}

Result<PlistTree> treeOfValue(const PropertyList& value)
{
    return treeAtDepth(value, 1);
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
