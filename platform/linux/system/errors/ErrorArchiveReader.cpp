#include "platform/ErrorArchive.h"
#include "platform/linux/system/errors/CodingError.h"
#include "platform/linux/system/errors/KeyedArchive.h"
#include "platform/linux/system/errors/URLReference.h"
#include "platform/linux/system/propertylists/Limits.h"
#include "platform/linux/system/propertylists/PropertyListReader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

namespace {

struct Damaged { };

// What is known of a class. The values of other classes are left out, as the archiver's null is.
enum class Kind { Unknown, Error, Dictionary, Array, String, Data, Date, URL };

Kind kindOfClass(std::string_view name)
{
    constexpr std::array<std::pair<std::string_view, Kind>, 13> kinds{{
        {"NSError", Kind::Error},
        {"NSDictionary", Kind::Dictionary},
        {"NSMutableDictionary", Kind::Dictionary},
        {"NSArray", Kind::Array},
        {"NSMutableArray", Kind::Array},
        {"NSSet", Kind::Array},
        {"NSMutableSet", Kind::Array},
        {"NSString", Kind::String},
        {"NSMutableString", Kind::String},
        {"NSData", Kind::Data},
        {"NSMutableData", Kind::Data},
        {"NSDate", Kind::Date},
        {"NSURL", Kind::URL},
    }};
    const auto kind = std::ranges::find(kinds, name, &std::pair<std::string_view, Kind>::first);
    return kind == kinds.end() ? Kind::Unknown : kind->second;
}

const Dictionary& dictionaryIn(const Dictionary& object, std::string_view key)
{
    const Dictionary* dictionary = object.dictionaryForKey(key);
    return dictionary ? *dictionary : throw Damaged();
}

const Array& arrayIn(const Dictionary& object, std::string_view key)
{
    const Array* array = object.arrayForKey(key);
    return array ? *array : throw Damaged();
}

std::uint64_t indexOf(const PropertyList& reference)
{
    return reference.uid() ? reference.uid()->index : throw Damaged();
}

std::uint64_t indexIn(const Dictionary& object, std::string_view key)
{
    const PropertyList* reference = object.find(key);
    return reference ? indexOf(*reference) : throw Damaged();
}

// Unwinds out of damage by an exception, to the one place that turns it into an error value.
class Reader {
public:
    Reader(const Dictionary& archive, std::size_t inputSize)
        : _top(dictionaryIn(archive, "$top")),
          _objects(arrayIn(archive, "$objects")),
          _valuesLeft(PropertyListLimits::values(inputSize)),
          _contentLeft(PropertyListLimits::content(inputSize))
    {
        const PropertyList* version = archive.find("$version");
        const std::string* archiver = archive.stringForKey("$archiver");
        if (!archiver || *archiver != KeyedArchive::archiver || !version || *version != KeyedArchive::version)
            throw Damaged();
    }

    // One error after the other, since a chain of them is longer than a recursion may be deep; then each is put into
    // the one that led to it, the last one first.
    Error read()
    {
        find(indexIn(_top, "root"), 0, std::nullopt);
        for (std::size_t number = 0; number < _found.size(); ++number)
            readError(number);
        for (; _found.size() > 1; _found.pop_back()) {
            auto& [index, parent, place, error] = _found.back();
            auto made = std::make_shared<const Error>(std::move(error));
            Error& above = _found[parent].error;
            (place ? above.multipleUnderlying[*place] : above.underlying) = std::move(made);
        }
        return std::move(_found.front().error);
    }

private:
    // An error and where it belongs: among the several errors under another one, or as its one underlying error.
    struct Found {
        std::uint64_t index;
        std::size_t parent;
        std::optional<std::size_t> place;
        Error error;
    };

    void find(std::uint64_t index, std::size_t parent, std::optional<std::size_t> place)
    {
        if (_found.size() == KeyedArchive::maximumErrors)
            throw Damaged();
        _found.push_back({index, parent, place, {}});
    }

    // The object as one of a class.
    const Dictionary& instanceAt(std::uint64_t index) const
    {
        const Dictionary* object = index < _objects.size() ? _objects[index].dictionary() : nullptr;
        return object ? *object : throw Damaged();
    }

    bool isInstanceAt(std::uint64_t index) const { return index < _objects.size() && _objects[index].dictionary(); }

    Kind kindOf(const Dictionary& object) const
    {
        const std::string* name = instanceAt(indexIn(object, "$class")).stringForKey("$classname");
        return name ? kindOfClass(*name) : throw Damaged();
    }

    bool isErrorAt(std::uint64_t index) const
    {
        return isInstanceAt(index) && kindOf(instanceAt(index)) == Kind::Error;
    }

    void spendValue()
    {
        if (_valuesLeft-- == 0)
            throw Damaged();
    }

    void spendContent(std::size_t size)
    {
        if (size > _contentLeft)
            throw Damaged();
        _contentLeft -= size;
    }

    void readError(std::size_t number)
    {
        const Dictionary& object = instanceAt(_found[number].index);
        const PropertyList* code = object.find("NSCode");
        const auto domain = valueAt(indexIn(object, "NSDomain"), 1);
        if (kindOf(object) != Kind::Error || !code || code->type() != PropertyList::Type::Integer || !domain
            || !domain->string())
            throw Damaged();
        Error& error = _found[number].error;
        error.code = code->integerValue();
        error.domain = *domain->string();
        const PropertyList* userInfo = object.find("NSUserInfo");
        if (userInfo && userInfo->uid() && userInfo->uid()->index != 0)
            readUserInfo(number, instanceAt(userInfo->uid()->index));
    }

    void readUserInfo(std::size_t number, const Dictionary& object)
    {
        const Kind kind = kindOf(object);
        if (kind != Kind::Dictionary && kind != Kind::Unknown)
            throw Damaged();
        if (kind == Kind::Unknown)
            return;
        std::optional<std::uint64_t> underlying;
        std::vector<std::uint64_t> multiple;
        forEachPair(object, 1, [&](const std::string& key, std::uint64_t index) {
            if (isErrorAt(index)) {
                // Under other keys it has no place: it is no property-list value.
                if (key == UnderlyingErrorKey)
                    underlying = index;
            } else if (key == MultipleUnderlyingErrorsKey && isInstanceAt(index)
                       && kindOf(instanceAt(index)) == Kind::Array) {
                multiple = errorsIn(instanceAt(index));
            } else if (auto value = valueAt(index, 1)) {
                _found[number].error.userInfo.set(key, std::move(*value));
            }
        });
        if (underlying)
            find(*underlying, number, std::nullopt);
        _found[number].error.multipleUnderlying.resize(multiple.size());
        for (std::size_t place = 0; place < multiple.size(); ++place)
            find(multiple[place], number, place);
    }

    std::vector<std::uint64_t> errorsIn(const Dictionary& array)
    {
        std::vector<std::uint64_t> errors;
        for (const PropertyList& reference : arrayIn(array, "NS.objects")) {
            spendValue();
            if (isErrorAt(indexOf(reference)))
                errors.push_back(indexOf(reference));
        }
        return errors;
    }

    // Pairs whose key is no string are left out.
    template <class Function>
    void forEachPair(const Dictionary& object, int depth, const Function& function)
    {
        const Array& keys = arrayIn(object, "NS.keys");
        const Array& values = arrayIn(object, "NS.objects");
        if (keys.size() != values.size())
            throw Damaged();
        for (std::size_t i = 0; i < keys.size(); ++i) {
            const auto key = valueAt(indexOf(keys[i]), depth);
            if (key && key->string())
                function(*key->string(), indexOf(values[i]));
        }
    }

    // Nullopt for what is left out. `depth` counts the values around this one, itself included.
    std::optional<PropertyList> valueAt(std::uint64_t index, int depth)
    {
        if (index >= _objects.size() || depth > KeyedArchive::maximumDepth)
            throw Damaged();
        spendValue();
        if (index == 0)
            return std::nullopt;
        const PropertyList& object = _objects[index];
        if (const Dictionary* instance = object.dictionary())
            return valueOf(*instance, depth);
        return leaf(object);
    }

    PropertyList leaf(const PropertyList& value)
    {
        if (value.array() || value.dictionary() || value.uid())
            throw Damaged();
        spendContent(value.string() ? value.string()->size() : value.data() ? value.data()->size() : 0);
        return value;
    }

    // The mutable kinds keep their content under a key, inline.
    PropertyList content(const Dictionary& object, std::string_view key, PropertyList::Type type)
    {
        const PropertyList* value = object.find(key);
        return value && value->type() == type ? leaf(*value) : throw Damaged();
    }

    std::optional<PropertyList> valueOf(const Dictionary& object, int depth)
    {
        switch (kindOf(object)) {
        case Kind::Dictionary:
            return dictionary(object, depth);
        case Kind::Array:
            return array(object, depth);
        case Kind::String:
            return content(object, "NS.string", PropertyList::Type::String);
        case Kind::Data:
            return content(object, "NS.data", PropertyList::Type::Data);
        case Kind::Date:
            return Date{content(object, "NS.time", PropertyList::Type::Real).realValue()};
        case Kind::URL:
            return url(object, depth);
        case Kind::Error:
        case Kind::Unknown:
            break;
        }
        return std::nullopt;
    }

    PropertyList dictionary(const Dictionary& object, int depth)
    {
        Dictionary dictionary;
        forEachPair(object, depth + 1, [&](const std::string& key, std::uint64_t index) {
            if (auto value = valueAt(index, depth + 1))
                dictionary.set(key, std::move(*value));
        });
        return dictionary;
    }

    PropertyList array(const Dictionary& object, int depth)
    {
        Array array;
        for (const PropertyList& reference : arrayIn(object, "NS.objects")) {
            if (auto value = valueAt(indexOf(reference), depth + 1))
                array.push_back(std::move(*value));
        }
        return array;
    }

    // Its absolute string; nullopt when it has none.
    std::optional<PropertyList> url(const Dictionary& object, int depth)
    {
        const auto relative = valueAt(indexIn(object, "NS.relative"), depth + 1);
        const auto base = valueAt(indexIn(object, "NS.base"), depth + 1);
        if (!relative || !relative->string())
            return std::nullopt;
        auto absolute = absoluteURL(*relative->string(), base && base->string() ? *base->string() : std::string());
        spendContent(absolute.size());
        return absolute;
    }

    const Dictionary& _top;
    const Array& _objects;
    std::vector<Found> _found;
    std::size_t _valuesLeft;
    std::size_t _contentLeft;
};

} // namespace

// Nothing but values is made of any class, so that checking them makes no difference.
Result<Error> unarchivedError(std::span<const std::uint8_t> bytes, bool /*secure*/)
{
    const auto archive = readPropertyList(bytes);
    try {
        if (!archive || !archive->dictionary())
            throw Damaged();
        return Reader(*archive->dictionary(), bytes.size()).read();
    } catch (const Damaged&) {
        return std::unexpected(corruptPropertyListError("The archived error is damaged."));
    }
}

} // namespace platform
