#include "helper/macos/packages/PackageReceipt.h"

#include <algorithm>

namespace helper {

namespace {

std::string_view takeLine(std::string_view& text)
{
    const auto end = std::min(text.find('\n'), text.size());
    const auto line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

std::optional<std::string> valueOf(std::string_view information, std::string_view name)
{
    while (!information.empty()) {
        auto line = takeLine(information);
        if (!line.starts_with(name))
            continue;
        line.remove_prefix(name.size());
        if (line.starts_with(": "))
            return std::string(line.substr(2));
        if (line == ":")
            return std::string();
    }
    return std::nullopt;
}

// Without one, every part of the path leads downwards.
bool leadsElsewhere(std::string_view path)
{
    if (path.empty() || path.starts_with('/') || path.find('\0') != std::string_view::npos)
        return true;
    while (true) {
        const auto slash = path.find('/');
        const auto part = path.substr(0, slash);
        if (part.empty() || part == "." || part == "..")
            return true;
        if (slash == std::string_view::npos)
            return false;
        path.remove_prefix(slash + 1);
    }
}

std::string joined(std::string folder, std::string_view below)
{
    while (folder.ends_with('/'))
        folder.pop_back();
    while (below.ends_with('/'))
        below.remove_suffix(1);
    while (below.starts_with('/'))
        below.remove_prefix(1);
    return below.empty() || below == "." ? folder : folder + "/" + std::string(below);
}

} // namespace

std::optional<PackageReceipt> PackageReceipt::inOutput(std::string_view information, std::string_view files)
{
    const auto version = valueOf(information, "version");
    const auto volume = valueOf(information, "volume");
    const auto location = valueOf(information, "location");
    if (!version || version->empty() || !volume || !volume->starts_with('/') || !location)
        return std::nullopt;
    const auto folder = joined(*volume, *location);
    if (folder.find("/..") != std::string::npos)
        return std::nullopt;
    PackageReceipt receipt{.version = *version, .folder = folder, .paths = {}};
    while (!files.empty()) {
        const auto line = takeLine(files);
        if (line.empty())
            continue;
        if (leadsElsewhere(line))
            return std::nullopt;
        receipt.paths.emplace_back(line);
    }
    std::ranges::sort(receipt.paths);
    return receipt;
}

} // namespace helper
