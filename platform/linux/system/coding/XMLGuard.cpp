#include "platform/linux/system/coding/XMLGuard.h"

#include "platform/linux/system/coding/CodingError.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace platform {

namespace {

constexpr std::string_view whiteSpace = " \t\r\n";
constexpr std::array<std::string_view, 3> containers{"plist", "array", "dict"};
constexpr std::array<std::string_view, 8> leaves{"string", "key", "integer", "real", "date", "data", "true", "false"};

template <std::size_t size>
bool holds(const std::array<std::string_view, size>& names, std::string_view name)
{
    return !name.empty() && std::find(names.begin(), names.end(), name) != names.end();
}

class Guard {
public:
    explicit Guard(std::string_view text) : _rest(text) { }

    bool isSound()
    {
        while (!_rest.empty()) {
            if (_rest.front() != '<') {
                if (!takeText())
                    return false;
            } else if (!takeMarkup()) {
                return false;
            }
        }
        return _rootEnded;
    }

private:
    // Skips up to and including the mark.
    bool skipPast(std::string_view mark)
    {
        const auto end = _rest.find(mark);
        if (end == std::string_view::npos)
            return false;
        _rest.remove_prefix(end + mark.size());
        return true;
    }

    bool takeText()
    {
        const std::string_view text = _rest.substr(0, _rest.find('<'));
        _rest.remove_prefix(text.size());
        const bool insideLeaf = !_open.empty() && holds(leaves, _open.back());
        return insideLeaf || text.find_first_not_of(whiteSpace) == std::string_view::npos;
    }

    bool takeMarkup()
    {
        if (_rest.starts_with("<?"))
            return skipPast("?>");
        if (_rest.starts_with("<!--"))
            return skipPast("-->");
        if (_rest.starts_with("<![CDATA["))
            return !_open.empty() && holds(leaves, _open.back()) && skipPast("]]>");
        if (_rest.starts_with("<!"))
            return takeDocumentType();
        return takeTag();
    }

    // Without a subset of its own, which is where entities would be declared.
    bool takeDocumentType()
    {
        const auto end = _rest.find('>');
        if (end == std::string_view::npos || !_open.empty() || _rest.substr(0, end).find('[') != std::string_view::npos)
            return false;
        _rest.remove_prefix(end + 1);
        return true;
    }

    bool takeTag()
    {
        const auto end = _rest.find('>');
        if (end == std::string_view::npos || _rootEnded)
            return false;
        std::string_view tag = _rest.substr(1, end - 1);
        _rest.remove_prefix(end + 1);
        if (tag.starts_with('/')) {
            tag.remove_prefix(1);
            return endElement(tag.substr(0, tag.find_first_of(whiteSpace)));
        }
        const bool isEmpty = tag.ends_with('/');
        if (isEmpty)
            tag.remove_suffix(1);
        return beginElement(tag.substr(0, tag.find_first_of(whiteSpace))) && (!isEmpty || endElement(_open.back()));
    }

    bool beginElement(std::string_view name)
    {
        const bool isRoot = _open.empty();
        if (isRoot != (name == "plist") || !(holds(containers, name) || holds(leaves, name)))
            return false;
        if (!isRoot && holds(leaves, _open.back()))
            return false;
        _open.push_back(name);
        return _open.size() <= maximumPropertyListDepth + 1; // the root element is no level of the value
    }

    bool endElement(std::string_view name)
    {
        if (_open.empty() || _open.back() != name)
            return false;
        _open.pop_back();
        _rootEnded = _open.empty();
        return true;
    }

    std::string_view _rest;
    std::vector<std::string_view> _open;
    bool _rootEnded = false;
};

} // namespace

bool isSoundXMLPropertyList(std::string_view text)
{
    return text.size() <= std::numeric_limits<std::uint32_t>::max() && text.find('\0') == std::string_view::npos
        && Guard(text).isSound();
}

} // namespace platform
