#include "platform/PropertyListCoding.h"

#include "platform/linux/system/coding/CodingError.h"
#include "platform/linux/system/coding/OldStyleReader.h"
#include "platform/linux/system/coding/PlistTree.h"

#include <algorithm>
#include <array>
#include <utility>

namespace platform {

namespace {

bool looksLikeXML(std::string_view text)
{
    constexpr std::array<std::string_view, 4> beginnings{"<?xml", "<!DOCTYPE", "<!--", "<plist"};
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](auto beginning) { return text.starts_with(beginning); });
}

} // namespace

Result<Data> binaryPropertyList(const PropertyList& value)
{
    auto tree = treeOfValue(value);
    if (!tree)
        return std::unexpected(std::move(tree.error()));
    Data bytes = writeBinaryTree(tree->get());
    if (bytes.empty())
        return std::unexpected(unwritablePropertyListError("The value cannot be written."));
    return bytes;
}

Result<PropertyList> propertyListWithData(std::span<const std::uint8_t> bytes)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const bool isBinary = text.starts_with("bplist");
    if (!isBinary && !looksLikeXML(text))
        return propertyListWithOldStyleText(text);
    auto tree = isBinary ? readBinaryTree(bytes) : readXMLTree(bytes);
    if (!tree)
        return std::unexpected(std::move(tree.error()));
    return valueOfTree(tree->get());
}

Result<PropertyList> propertyListWithOldStyleText(std::string_view text)
{
    auto value = OldStyleReader(text).read();
    if (!value)
        return std::unexpected(corruptPropertyListError("The property list is no text that can be read."));
    return std::move(*value);
}

} // namespace platform
