#include "platform/PropertyListCoding.h"

#include "platform/linux/system/errors/CodingError.h"
#include "platform/linux/system/propertylists/BinaryFormat.h"
#include "platform/linux/system/propertylists/BinaryReader.h"
#include "platform/linux/system/propertylists/BinaryWriter.h"
#include "platform/linux/system/propertylists/OldStyleReader.h"
#include "platform/linux/system/propertylists/PropertyListReader.h"
#include "platform/linux/system/propertylists/TextEncoding.h"
#include "platform/linux/system/propertylists/XMLReader.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

Result<PropertyList> orCorrupt(std::optional<PropertyList> value)
{
    if (!value)
        return std::unexpected(corruptPropertyListError("The property list is damaged."));
    return std::move(*value);
}

} // namespace

std::optional<PropertyList> readPropertyList(std::span<const std::uint8_t> bytes)
{
    if (std::ranges::equal(bytes.first(std::min(bytes.size(), BinaryFormat::header.size())), BinaryFormat::header))
        return BinaryReader(bytes).read();
    const auto text = utf8OfText(bytes);
    if (!text)
        return std::nullopt;
    return XMLReader::looksLikeXML(*text) ? XMLReader(*text).read() : OldStyleReader(*text).read();
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

Result<PropertyList> binaryPropertyListWithData(std::span<const std::uint8_t> bytes, std::size_t maximumValues)
{
    return orCorrupt(BinaryReader(bytes, maximumValues).read());
}

Result<PropertyList> propertyListWithOldStyleText(std::string_view text)
{
    return orCorrupt(OldStyleReader(text).read());
}

} // namespace platform
