#include "platform/ErrorArchive.h"
#include "platform/linux/system/errors/KeyedArchive.h"
#include "platform/linux/system/propertylists/BinaryWriter.h"
#include "platform/linux/system/propertylists/Limits.h"
#include "platform/Unicode.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
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
        const Index root = queue(error);
        // Errors wait for their turn, since a chain of them is longer than a recursion may be deep.
        for (; !_waiting.empty(); _waiting.pop_front())
            addError(_waiting.front());
        const auto top = dictionary({{"root", uid(root)}});
        return _plist.finish(dictionary({{"$version", _plist.addInteger(KeyedArchive::version)},
                                         {"$archiver", _plist.addString(KeyedArchive::archiver)},
                                         {"$top", top},
                                         {"$objects", _plist.addArray(_objects)}}));
    }

private:
    using Object = BinaryWriter::Object;

    struct Waiting {
        const Error& error;
        Index index;
    };

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

    Object uid(Index index) { return _plist.addUID(UID{index}); }

    Object references(const std::vector<Index>& indexes)
    {
        std::vector<Object> objects;
        objects.reserve(indexes.size());
        for (const Index index : indexes)
            objects.push_back(uid(index));
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
        return uid(found->second);
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
        const std::string written = writableText(text);
        if (written.size() > PropertyListLimits::sharedText)
            return append(_plist.addString(written));
        const auto [found, isNew] = _texts.try_emplace(written, 0);
        if (isNew)
            found->second = append(_plist.addString(written));
        return found->second;
    }

    // Nullopt for a value that no reader would take: nested too deeply, or what an archive means something else by.
    std::optional<Index> addValue(const PropertyList& value, int depth)
    {
        if (depth > KeyedArchive::maximumDepth || value.uid())
            return std::nullopt;
        if (const std::string* text = value.string())
            return addText(*text);
        if (const Array* array = value.array())
            return addArray(*array, depth);
        if (const Dictionary* entries = value.dictionary())
            return addDictionary(*entries, depth);
        if (const Date* date = value.date())
            return addDate(*date);
        const auto object = _plist.addValue(value);
        return object ? std::optional(append(*object)) : std::nullopt;
    }

    Index addDate(Date date)
    {
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
        finishArray(index, elements);
        return index;
    }

    void finishArray(Index index, const std::vector<Index>& elements)
    {
        const Object list = references(elements);
        _objects[index] = dictionary({{"NS.objects", list}, {"$class", classReference("NSArray")}});
    }

    Index addDictionary(const Dictionary& entries, int depth)
    {
        const Index index = reserve();
        std::vector<Index> keys;
        std::vector<Index> values;
        addEntries(entries, keys, values, depth);
        finishDictionary(index, keys, values);
        return index;
    }

    void addEntries(const Dictionary& entries, std::vector<Index>& keys, std::vector<Index>& values, int depth)
    {
        for (const Dictionary::Entry& entry : entries) {
            if (const auto added = addValue(entry.value, depth + 1)) {
                keys.push_back(addText(entry.key));
                values.push_back(*added);
            }
        }
    }

    void finishDictionary(Index index, const std::vector<Index>& keys, const std::vector<Index>& values)
    {
        const Object keyList = references(keys);
        const Object valueList = references(values);
        _objects[index] =
            dictionary({{"NS.keys", keyList}, {"NS.objects", valueList}, {"$class", classReference("NSDictionary")}});
    }

    bool hasRoom() const { return _errorCount < KeyedArchive::maximumErrors; }

    Index queue(const Error& error)
    {
        ++_errorCount;
        const Index index = reserve();
        _waiting.push_back({error, index});
        return index;
    }

    // What no reader would take of a long chain is left out.
    Index addUserInfo(const Error& error)
    {
        const Index index = reserve();
        std::vector<Index> keys;
        std::vector<Index> values;
        addEntries(error.userInfo, keys, values, 0);
        if (error.underlying && hasRoom()) {
            keys.push_back(addText(UnderlyingErrorKey));
            values.push_back(queue(*error.underlying));
        }
        if (!error.multipleUnderlying.empty() && hasRoom()) {
            keys.push_back(addText(MultipleUnderlyingErrorsKey));
            values.push_back(reserve());
            std::vector<Index> errors;
            for (const auto& each : error.multipleUnderlying) {
                if (hasRoom())
                    errors.push_back(queue(*each));
            }
            finishArray(values.back(), errors);
        }
        finishDictionary(index, keys, values);
        return index;
    }

    void addError(const Waiting& waiting)
    {
        const Object code = _plist.addInteger(waiting.error.code);
        const Object domain = uid(addText(waiting.error.domain));
        const Object userInfo = uid(addUserInfo(waiting.error));
        _objects[waiting.index] = dictionary(
            {{"NSCode", code}, {"NSDomain", domain}, {"NSUserInfo", userInfo}, {"$class", classReference("NSError")}});
    }

    BinaryWriter _plist;
    std::vector<Object> _objects;
    std::deque<Waiting> _waiting;
    std::size_t _errorCount = 0;
    std::map<std::string, Index> _texts;
    std::map<std::string, Index> _classes;
};

} // namespace

Data archivedError(const Error& error)
{
    return Writer().write(error);
}

} // namespace platform
