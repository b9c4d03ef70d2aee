#include "platform/linux/system/errors/URLReference.h"

#include <algorithm>
#include <optional>

namespace platform {

namespace {

struct Components {
    std::optional<std::string_view> scheme;
    std::optional<std::string_view> authority;
    std::string_view path;
    std::optional<std::string_view> query;
    std::optional<std::string_view> fragment;
};

// What stands behind the mark, which goes with it.
std::optional<std::string_view> takeFrom(std::string_view& text, char mark)
{
    const auto at = text.find(mark);
    if (at == std::string_view::npos)
        return std::nullopt;
    const auto taken = text.substr(at + 1);
    text = text.substr(0, at);
    return taken;
}

Components componentsOf(std::string_view text)
{
    Components components;
    components.fragment = takeFrom(text, '#');
    components.query = takeFrom(text, '?');
    const auto colon = text.find_first_of(":/");
    if (colon != std::string_view::npos && colon > 0 && text[colon] == ':') {
        components.scheme = text.substr(0, colon);
        text.remove_prefix(colon + 1);
    }
    if (text.starts_with("//")) {
        const auto end = std::min(text.find('/', 2), text.size());
        components.authority = text.substr(2, end - 2);
        text.remove_prefix(end);
    }
    components.path = text;
    return components;
}

std::string withoutDotSegments(std::string_view path)
{
    std::string made;
    while (!path.empty()) {
        const auto end = std::min(path.find('/', 1), path.size());
        const auto segment = path.substr(0, end);
        path.remove_prefix(end);
        const bool isLast = path.empty();
        if (segment == "/..") {
            made.resize(std::min(made.rfind('/'), made.size()));
            made += isLast ? "/" : "";
        } else if (segment == "/.") {
            made += isLast ? "/" : "";
        } else {
            made += segment;
        }
    }
    return made;
}

std::string mergedPath(const Components& base, std::string_view path)
{
    if (path.starts_with('/'))
        return withoutDotSegments(path);
    if (base.authority && base.path.empty())
        return withoutDotSegments("/" + std::string(path));
    const auto folder = base.path.rfind('/');
    return withoutDotSegments(std::string(base.path.substr(0, folder == std::string_view::npos ? 0 : folder + 1))
                              + std::string(path));
}

} // namespace

std::string absoluteURL(std::string_view reference, std::string_view base)
{
    const Components relative = componentsOf(reference);
    const Components from = componentsOf(base);
    if (relative.scheme || !from.scheme)
        return std::string(reference);
    std::string made(*from.scheme);
    made += ':';
    const auto authority = relative.authority ? relative.authority : from.authority;
    if (authority)
        made.append("//").append(*authority);
    const bool isWithinBase = !relative.authority && relative.path.empty();
    if (relative.authority)
        made += withoutDotSegments(relative.path);
    else
        made += isWithinBase ? std::string(from.path) : mergedPath(from, relative.path);
    const auto query = relative.query || !isWithinBase ? relative.query : from.query;
    if (query)
        made.append("?").append(*query);
    if (relative.fragment)
        made.append("#").append(*relative.fragment);
    return made;
}

} // namespace platform
