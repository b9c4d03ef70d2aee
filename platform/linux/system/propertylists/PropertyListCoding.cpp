#include "platform/PropertyListCoding.h"

#include "platform/linux/system/errors/CodingError.h"
#include "platform/linux/system/propertylists/BinaryFormat.h"
#include "platform/linux/system/propertylists/BinaryWriter.h"
#include "platform/linux/system/propertylists/OldStyleReader.h"
#include "platform/linux/system/propertylists/PlistTree.h"
#include "platform/linux/system/propertylists/PropertyListReader.h"
#include "platform/linux/system/propertylists/XMLReader.h"

#include <utility>

namespace platform {

namespace {

std::optional<PropertyList> readBinary(std::span<const std::uint8_t> bytes)
{
    const PlistTree tree = readBinaryTree(bytes);
    return tree ? valueOfTree(tree.get()) : std::nullopt;
}

Result<PropertyList> orCorrupt(std::optional<PropertyList> value)
{
    if (!value)
        return std::unexpected(corruptPropertyListError("The property list is damaged."));
    return std::move(*value);
}

} // namespace

std::optional<PropertyList> readPropertyList(std::span<const std::uint8_t> bytes)
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with(BinaryFormat::header))
        return readBinary(bytes);
    return XMLReader::looksLikeXML(text) ? XMLReader(text).read() : OldStyleReader(text).read();
}

Result<Data> binaryPropertyList(const PropertyList& value)
{
    BinaryWriter writer;
    const auto root = writer.addValue(value);
    if (!root)
        return std::unexpected(unwritablePropertyListError("The value cannot be written as a property list."));
    return writer.finish(*root);
}

Result<PropertyList> propertyListWithData(std::span<const std::uint8_t> bytes)
{
    return orCorrupt(readPropertyList(bytes));
}

Result<PropertyList> propertyListWithOldStyleText(std::string_view text)
{
    return orCorrupt(OldStyleReader(text).read());
}

} // namespace platform
