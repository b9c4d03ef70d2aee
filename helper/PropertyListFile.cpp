#include "helper/PropertyListFile.h"

#include "diagnostics/log/ZRKLog.h"
#include "messaging/ZRKError.h"
#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace helper {

using platform::Dictionary;
using platform::Result;

namespace {

std::string systemText(int failure)
{
    return std::generic_category().message(failure);
}

} // namespace

PropertyListFile::PropertyListFile(std::string path, Acceptable acceptable)
    : _path(std::move(path)),
      _acceptable(std::move(acceptable))
{
}

std::optional<Dictionary> PropertyListFile::open()
{
    platform::removeInterruptedReplacements(_path);
    if (auto content = read())
        return content;
    if (platform::fileExists(_path))
        keepDamagedFile();
    return std::nullopt;
}

std::optional<Dictionary> PropertyListFile::read() const
{
    auto bytes = platform::readFile(_path);
    if (!bytes)
        return std::nullopt;
    auto value = platform::propertyListWithData(*bytes);
    if (!value || !value->dictionary() || !_acceptable(*value->dictionary()))
        return std::nullopt;
    return std::move(*value->dictionary());
}

Result<void> PropertyListFile::write(const Dictionary& content)
{
    auto bytes = platform::binaryPropertyList(content);
    if (!bytes)
        return std::unexpected(std::move(bytes.error()));
    if (auto written = platform::replaceFile(_path, *bytes); !written) {
        auto text = "The settings could not be saved. " + systemText(written.error()) + ".";
        return std::unexpected(ZRKError::errorWithDomain(platform::POSIXErrorDomain, written.error(),
                                                         {{platform::LocalizedDescriptionKey, text}}));
    }
    return {};
}

void PropertyListFile::keepDamagedFile() const
{
    auto kept = _path + ".damaged";
    for (int count = 2; platform::fileExists(kept) && count < 100; ++count)
        kept = _path + ".damaged-" + std::to_string(count);
    if (std::rename(_path.c_str(), kept.c_str()) == 0)
        ZRKLogMessage(LogLevelError, "The file '%@' is damaged. It is kept as '%@'.", {_path, kept});
    else
        ZRKLogMessage(LogLevelError, "The file '%@' is damaged and could not be moved: %@.",
                      {_path, systemText(errno)});
}

} // namespace helper
