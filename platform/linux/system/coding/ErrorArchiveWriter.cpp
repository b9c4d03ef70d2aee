#include "platform/ErrorArchive.h"
#include "platform/linux/system/coding/PlistTree.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr int archiveVersion = 100000;

// Lays values out as the archiver's table of objects, in which they refer to each other by index.
class Writer {
public:
    Writer() : _objects(plist_new_array()) { append(plist_new_string("$null")); }

    Data write(const Error& error)
    {
        const std::uint64_t root = addError(error);
        PlistTree archive(plist_new_dict());
        plist_dict_set_item(archive.get(), "$version", plist_new_uint(archiveVersion));
        plist_dict_set_item(archive.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_t top = plist_new_dict();
        plist_dict_set_item(top, "root", plist_new_uid(root));
        plist_dict_set_item(archive.get(), "$top", top);
        plist_dict_set_item(archive.get(), "$objects", _objects.release());
        return writeBinaryTree(archive.get());
    }

private:
    std::uint64_t append(plist_t object)
    {
        plist_array_append_item(_objects.get(), object);
        return _count++;
    }

    std::uint64_t addText(const std::string& text)
    {
        const auto [found, isNew] = _texts.try_emplace(text, 0);
        if (isNew)
            found->second = addLeaf(text);
        return found->second;
    }

    // Text that a property list cannot hold is left out, since an error must always reach its reader.
    std::uint64_t addLeaf(const PropertyList& value)
    {
        auto tree = treeOfValue(value);
        return append(tree ? tree->release() : plist_new_string(""));
    }

    std::uint64_t addClass(const std::string& name)
    {
        const auto [found, isNew] = _classes.try_emplace(name, 0);
        if (isNew) {
            plist_t ancestry = plist_new_array();
            plist_array_append_item(ancestry, plist_new_string(name.c_str()));
            plist_array_append_item(ancestry, plist_new_string("NSObject"));
            plist_t description = plist_new_dict();
            plist_dict_set_item(description, "$classname", plist_new_string(name.c_str()));
            plist_dict_set_item(description, "$classes", ancestry);
            found->second = append(description);
        }
        return found->second;
    }

    // An object stands in the table before what it refers to, as the archiver has it.
    std::pair<std::uint64_t, plist_t> beginObject()
    {
        plist_t object = plist_new_dict();
        return {append(object), object};
    }

    static void setReference(plist_t object, const char* key, std::uint64_t index)
    {
        plist_dict_set_item(object, key, plist_new_uid(index));
    }

    static void setReferences(plist_t object, const char* key, const std::vector<std::uint64_t>& indexes)
    {
        plist_t list = plist_new_array();
        for (const std::uint64_t index : indexes)
            plist_array_append_item(list, plist_new_uid(index));
        plist_dict_set_item(object, key, list);
    }

    std::uint64_t addValue(const PropertyList& value)
    {
        if (const std::string* text = value.string())
            return addText(*text);
        if (const Array* array = value.array())
            return addArray(*array);
        if (const Dictionary* dictionary = value.dictionary())
            return addDictionary(*dictionary, nullptr);
        if (const Date* date = value.date()) {
            const auto [index, object] = beginObject();
            plist_dict_set_item(object, "NS.time", plist_new_real(date->secondsSinceReferenceDate));
            setReference(object, "$class", addClass("NSDate"));
            return index;
        }
        return addLeaf(value);
    }

    std::uint64_t addArray(const Array& array)
    {
        const auto [index, object] = beginObject();
        std::vector<std::uint64_t> elements;
        for (const PropertyList& element : array)
            elements.push_back(addValue(element));
        setReferences(object, "NS.objects", elements);
        setReference(object, "$class", addClass("NSArray"));
        return index;
    }

    std::uint64_t addDictionary(const Dictionary& dictionary, const Error* underlying)
    {
        const auto [index, object] = beginObject();
        std::vector<std::uint64_t> keys;
        std::vector<std::uint64_t> values;
        for (const Dictionary::Entry& entry : dictionary) {
            keys.push_back(addText(entry.key));
            values.push_back(addValue(entry.value));
        }
        if (underlying) {
            keys.push_back(addText(UnderlyingErrorKey));
            values.push_back(addError(*underlying));
        }
        setReferences(object, "NS.keys", keys);
        setReferences(object, "NS.objects", values);
        setReference(object, "$class", addClass("NSDictionary"));
        return index;
    }

    std::uint64_t addError(const Error& error)
    {
        const auto [index, object] = beginObject();
        plist_dict_set_item(object, "NSCode", plist_new_uint(static_cast<std::uint64_t>(error.code)));
        setReference(object, "NSDomain", addText(error.domain));
        setReference(object, "NSUserInfo", addDictionary(error.userInfo, error.underlying.get()));
        setReference(object, "$class", addClass("NSError"));
        return index;
    }

    PlistTree _objects;
    std::uint64_t _count = 0;
    std::map<std::string, std::uint64_t> _texts;
    std::map<std::string, std::uint64_t> _classes;
};

} // namespace

Data archivedError(const Error& error)
{
    return Writer().write(error);
}

} // namespace platform
