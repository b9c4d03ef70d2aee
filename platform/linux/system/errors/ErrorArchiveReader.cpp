#include "platform/ErrorArchive.h"
#include "platform/linux/system/errors/CodingError.h"
#include "platform/linux/system/errors/KeyedArchive.h"
#include "platform/linux/system/propertylists/PlistTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

namespace {

// Shared objects count as often as they are referred to.
constexpr std::size_t maximumValues = 100'000;
constexpr std::size_t maximumBytes = 64U << 20;

// No object of a class that is read here has more.
constexpr std::uint32_t maximumKeys = 64;

// An object as a value: absent (the archiver's null), a property-list value, or an error.
using Object = std::variant<std::monostate, PropertyList, std::shared_ptr<const Error>>;

struct Damaged { };

// Unwinds to the one place that turns it into an error value.
template <class T>
T required(std::optional<T> value)
{
    if (!value)
        throw Damaged();
    return std::move(*value);
}

std::optional<std::uint64_t> referenceOf(plist_t node)
{
    if (!node || plist_get_node_type(node) != PLIST_UID)
        return std::nullopt;
    std::uint64_t index = 0;
    plist_get_uid_val(node, &index);
    return index;
}

bool isNode(plist_t node, plist_type type)
{
    return node && plist_get_node_type(node) == type;
}

// Looking a key up takes time in the number of keys.
bool isSmallDictionary(plist_t node)
{
    return isNode(node, PLIST_DICT) && plist_dict_get_size(node) <= maximumKeys;
}

class Reader {
public:
    Reader(plist_t archive, bool secure) : _secure(secure)
    {
        const Object archiver = leaf(plist_dict_get_item(archive, "$archiver"));
        const Object version = leaf(plist_dict_get_item(archive, "$version"));
        if (archiver != Object(PropertyList(KeyedArchive::archiver))
            || version != Object(PropertyList(KeyedArchive::version)))
            throw Damaged();
        plist_t objects = plist_dict_get_item(archive, "$objects");
        if (!isNode(objects, PLIST_ARRAY))
            throw Damaged();
        forEachElement(objects, [&](plist_t object) {
            _objects.push_back(object);
            return true;
        });
    }

    Error readRoot(plist_t archive)
    {
        plist_t top = plist_dict_get_item(archive, "$top");
        if (!isSmallDictionary(top))
            throw Damaged();
        const Object root = objectAt(required(referenceOf(plist_dict_get_item(top, "root"))), 1);
        const auto* error = std::get_if<std::shared_ptr<const Error>>(&root);
        if (!error)
            throw Damaged();
        return **error;
    }

private:
    Object objectAt(std::uint64_t index, int depth)
    {
        if (index >= _objects.size() || depth > KeyedArchive::maximumDepth || ++_values > maximumValues)
            throw Damaged();
        if (index == 0)
            return {};
        plist_t node = _objects[index];
        switch (plist_get_node_type(node)) {
        case PLIST_DICT:
            if (!isSmallDictionary(node))
                throw Damaged();
            return instance(node, depth);
        case PLIST_BOOLEAN:
        case PLIST_UINT:
        case PLIST_REAL:
        case PLIST_STRING:
        case PLIST_DATE:
        case PLIST_DATA:
            return leaf(node);
        default:
            throw Damaged();
        }
    }

    Object leaf(plist_t node)
    {
        auto value = required(node ? valueOfTree(node) : std::nullopt);
        spend(value.string() ? value.string()->size() : value.data() ? value.data()->size() : 0);
        return value;
    }

    void spend(std::size_t bytes)
    {
        _bytes += bytes;
        if (_bytes > maximumBytes)
            throw Damaged();
    }

    std::string classOf(plist_t node)
    {
        const std::uint64_t index = required(referenceOf(plist_dict_get_item(node, "$class")));
        plist_t description = index < _objects.size() ? _objects[index] : nullptr;
        plist_t name = isSmallDictionary(description) ? plist_dict_get_item(description, "$classname") : nullptr;
        std::string text = required(name ? textOfTree(name) : std::nullopt);
        spend(text.size());
        return text;
    }

    Object instance(plist_t node, int depth)
    {
        using Read = Object (Reader::*)(plist_t, int);
        constexpr std::array<std::pair<std::string_view, Read>, 10> kinds{{
            {"NSError", &Reader::error},
            {"NSDictionary", &Reader::dictionary},
            {"NSMutableDictionary", &Reader::dictionary},
            {"NSArray", &Reader::array},
            {"NSMutableArray", &Reader::array},
            {"NSString", &Reader::string},
            {"NSMutableString", &Reader::string},
            {"NSData", &Reader::data},
            {"NSMutableData", &Reader::data},
            {"NSDate", &Reader::date},
        }};
        const std::string name = classOf(node);
        const auto kind = std::ranges::find(kinds, name, &std::pair<std::string_view, Read>::first);
        if (kind != kinds.end())
            return (this->*kind->second)(node, depth);
        if (_secure)
            throw Damaged();
        return {};
    }

    Object referredTo(plist_t node, const char* key, int depth)
    {
        return objectAt(required(referenceOf(plist_dict_get_item(node, key))), depth + 1);
    }

    std::vector<std::uint64_t> references(plist_t node, const char* key) const
    {
        plist_t list = plist_dict_get_item(node, key);
        if (!isNode(list, PLIST_ARRAY))
            throw Damaged();
        std::vector<std::uint64_t> indexes;
        forEachElement(list, [&](plist_t element) {
            indexes.push_back(required(referenceOf(element)));
            return true;
        });
        return indexes;
    }

    Object error(plist_t node, int depth)
    {
        plist_t code = plist_dict_get_item(node, "NSCode");
        const Object domain = referredTo(node, "NSDomain", depth);
        const auto* domainValue = std::get_if<PropertyList>(&domain);
        if (!isNode(code, PLIST_UINT) || !domainValue || !domainValue->string())
            throw Damaged();
        Error error{*domainValue->string(), std::get<PropertyList>(leaf(code)).integerValue(), {}, nullptr};
        if (const auto userInfo = referenceOf(plist_dict_get_item(node, "NSUserInfo")); userInfo.value_or(0) != 0)
            readUserInfo(error, *userInfo, depth + 1);
        return std::make_shared<const Error>(std::move(error));
    }

    void readUserInfo(Error& error, std::uint64_t index, int depth)
    {
        if (index >= _objects.size() || !isSmallDictionary(_objects[index]) || depth > KeyedArchive::maximumDepth)
            throw Damaged();
        const std::string name = classOf(_objects[index]);
        if (name != "NSDictionary" && name != "NSMutableDictionary")
            throw Damaged();
        forEachPair(_objects[index], depth, [&](const std::string& key, Object& value) {
            if (auto* underlying = std::get_if<std::shared_ptr<const Error>>(&value)) {
                // Errors under other keys have no place in a value; the chain follows the one key.
                if (key == UnderlyingErrorKey)
                    error.underlying = *underlying;
            } else if (auto* plain = std::get_if<PropertyList>(&value)) {
                error.userInfo.set(key, std::move(*plain));
            }
        });
    }

    template <class Function>
    void forEachPair(plist_t node, int depth, const Function& function)
    {
        const auto keys = references(node, "NS.keys");
        const auto values = references(node, "NS.objects");
        if (keys.size() != values.size())
            throw Damaged();
        for (std::size_t i = 0; i < keys.size(); ++i) {
            const Object key = objectAt(keys[i], depth + 1);
            const auto* text = std::get_if<PropertyList>(&key);
            if (!text || !text->string())
                throw Damaged();
            Object value = objectAt(values[i], depth + 1);
            function(*text->string(), value);
        }
    }

    Object dictionary(plist_t node, int depth)
    {
        Dictionary dictionary;
        forEachPair(node, depth, [&](const std::string& key, Object& value) {
            if (auto* plain = std::get_if<PropertyList>(&value))
                dictionary.set(key, std::move(*plain));
        });
        return PropertyList(std::move(dictionary));
    }

    Object array(plist_t node, int depth)
    {
        Array array;
        for (const std::uint64_t index : references(node, "NS.objects")) {
            Object element = objectAt(index, depth + 1);
            if (auto* plain = std::get_if<PropertyList>(&element))
                array.push_back(std::move(*plain));
        }
        return PropertyList(std::move(array));
    }

    // The mutable kinds keep their content under a key, inline.
    Object content(plist_t node, const char* key, plist_type type)
    {
        plist_t value = plist_dict_get_item(node, key);
        if (!isNode(value, type))
            throw Damaged();
        return leaf(value);
    }

    Object string(plist_t node, int) { return content(node, "NS.string", PLIST_STRING); }
    Object data(plist_t node, int) { return content(node, "NS.data", PLIST_DATA); }
    Object date(plist_t node, int)
    {
        const Object time = content(node, "NS.time", PLIST_REAL);
        const double seconds = std::get<PropertyList>(time).realValue();
        if (!std::isfinite(seconds))
            throw Damaged();
        return PropertyList(Date{seconds});
    }

    std::vector<plist_t> _objects;
    std::size_t _values = 0;
    std::size_t _bytes = 0;
    bool _secure;
};

} // namespace

Result<Error> unarchivedError(std::span<const std::uint8_t> bytes, bool secure)
{
    const PlistTree archive = readBinaryTree(bytes);
    try {
        if (!isSmallDictionary(archive.get()))
            throw Damaged();
        return Reader(archive.get(), secure).readRoot(archive.get());
    } catch (const Damaged&) {
        return std::unexpected(corruptPropertyListError("The archived error is damaged."));
    }
}

} // namespace platform
