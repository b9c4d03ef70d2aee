#include "platform/ErrorArchive.h"
#include "platform/linux/system/errors/KeyedArchive.h"
#include "platform/linux/system/propertylists/BinaryWriter.h"
#include "platform/Unicode.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform {

namespace {

// A text that a property list can hold, since an error must always reach its reader.
std::string writableText(std::string_view text)
{
    std::string written;
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        appendCharacter(written, character == 0 ? replacementCharacter : character);
    }
    return written;
}

class Writer {
public:
    // An index in the table of objects.
    using Index = std::uint32_t;

    Writer() { append(_plist.addString(KeyedArchive::nothing)); }

    Data write(const Error& error)
    {
        const Index root = addError(error, 1);
        const auto top = dictionary({{"root", _plist.addReference(root)}});
        return _plist.finish(dictionary({{"$version", _plist.addInteger(KeyedArchive::version)},
                                         {"$archiver", _plist.addString(KeyedArchive::archiver)},
                                         {"$top", top},
                                         {"$objects", _plist.addArray(_objects)}}));
    }

private:
    using Object = BinaryWriter::Object;

    Object dictionary(std::initializer_list<std::pair<std::string_view, Object>> entries)
    {
        std::vector<Object> keys;
        std::vector<Object> values;
        for (const auto& [key, value] : entries) {
            keys.push_back(_plist.addString(key));
            values.push_back(value);
        }
        return _plist.addDictionary(keys, values);
    }

    Object references(const std::vector<Index>& indexes)
    {
        std::vector<Object> objects;
        objects.reserve(indexes.size());
        for (const Index index : indexes)
            objects.push_back(_plist.addReference(index));
        return _plist.addArray(objects);
    }

    Object classReference(const std::string& name)
    {
        const auto [found, isNew] = _classes.try_emplace(name, 0);
        if (isNew) {
            const std::array ancestry{_plist.addString(name), _plist.addString("NSObject")};
            const Object classes = _plist.addArray(ancestry);
            found->second = append(dictionary({{"$classname", _plist.addString(name)}, {"$classes", classes}}));
        }
        return _plist.addReference(found->second);
    }

    Index append(Object object)
    {
        _objects.push_back(object);
        return static_cast<Index>(_objects.size() - 1);
    }

    // An object stands in the table before what it refers to, as the archiver has it.
    Index reserve() { return append(0); }

    Index addText(std::string_view text)
    {
        const auto [found, isNew] = _texts.try_emplace(writableText(text), 0);
        if (isNew)
            found->second = append(_plist.addString(found->first));
        return found->second;
    }

    // Nothing for a value that no reader would take: nested too deeply, or a date that is no number.
    std::optional<Index> addValue(const PropertyList& value, int depth)
    {
        if (depth > KeyedArchive::maximumDepth)
            return std::nullopt;
        if (const std::string* text = value.string())
            return addText(*text);
        if (const Array* array = value.array())
            return addArray(*array, depth);
        if (const Dictionary* entries = value.dictionary())
            return addDictionary(*entries, nullptr, depth);
        if (const Date* date = value.date())
            return addDate(*date);
        const auto object = _plist.addValue(value);
        return object ? std::optional(append(*object)) : std::nullopt;
    }

    std::optional<Index> addDate(Date date)
    {
        if (!std::isfinite(date.secondsSinceReferenceDate))
            return std::nullopt;
        const Index index = reserve();
        _objects[index] = dictionary(
            {{"NS.time", _plist.addReal(date.secondsSinceReferenceDate)}, {"$class", classReference("NSDate")}});
        return index;
    }

    Index addArray(const Array& array, int depth)
    {
        const Index index = reserve();
        std::vector<Index> elements;
        for (const PropertyList& element : array) {
            if (const auto added = addValue(element, depth + 1))
                elements.push_back(*added);
        }
        const Object list = references(elements);
        _objects[index] = dictionary({{"NS.objects", list}, {"$class", classReference("NSArray")}});
        return index;
    }

    Index addDictionary(const Dictionary& entries, const Error* underlying, int depth)
    {
        const Index index = reserve();
        std::vector<Index> keys;
        std::vector<Index> values;
        for (const Dictionary::Entry& entry : entries) {
            if (const auto added = addValue(entry.value, depth + 1)) {
                keys.push_back(addText(entry.key));
                values.push_back(*added);
            }
        }
        // An error has its domain and its user info inside it.
        if (underlying && depth + 2 <= KeyedArchive::maximumDepth) {
            keys.push_back(addText(UnderlyingErrorKey));
            values.push_back(addError(*underlying, depth + 1));
        }
        const Object keyList = references(keys);
        const Object valueList = references(values);
        _objects[index] =
            dictionary({{"NS.keys", keyList}, {"NS.objects", valueList}, {"$class", classReference("NSDictionary")}});
        return index;
    }

    Index addError(const Error& error, int depth)
    {
        const Index index = reserve();
        const Object code = _plist.addInteger(error.code);
        const Object domain = _plist.addReference(addText(error.domain));
        const Object userInfo = _plist.addReference(addDictionary(error.userInfo, error.underlying.get(), depth + 1));
        _objects[index] = dictionary(
            {{"NSCode", code}, {"NSDomain", domain}, {"NSUserInfo", userInfo}, {"$class", classReference("NSError")}});
        return index;
    }

    BinaryWriter _plist;
    std::vector<Object> _objects;
    std::map<std::string, Index> _texts;
    std::map<std::string, Index> _classes;
};

} // namespace

Data archivedError(const Error& error)
{
    return Writer().write(error);
}

} // namespace platform
