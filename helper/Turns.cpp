#include "helper/Turns.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace helper {

std::shared_ptr<Turns> Turns::create(Post post)
{
    return std::shared_ptr<Turns>(new Turns(std::move(post)));
}

bool Turns::hasRoom(const std::string& name, std::size_t size) const
{
    const auto found = _lines.find(name);
    return found == _lines.end() || found->second.size + size + requestOverhead <= maximumLineSize;
}

void Turns::add(const std::string& name, Entry entry, bool isOpen)
{
    const bool fits = hasRoom(name, entry.size);
    entry.size += requestOverhead;
    Line& line = _lines[name];
    line.isOpen = line.isOpen || isOpen;
    if (!fits) {
        entry.refuse();
        return;
    }
    append(line, std::move(entry));
    shorten();
    advance(name);
}

void Turns::append(Line& line, Entry entry)
{
    line.size += entry.size;
    _size += entry.size;
    line.entries.push_back(std::move(entry));
}

// The newest of the longest line give way.
void Turns::shorten()
{
    while (_size > maximumSize) {
        auto& longest =
            std::ranges::max_element(_lines, {}, [](const auto& entry) { return entry.second.size; })->second;
        if (longest.entries.empty())
            return;
        const Entry refused = std::move(longest.entries.back());
        longest.entries.pop_back();
        longest.size -= refused.size;
        _size -= refused.size;
        refused.refuse();
    }
}

void Turns::move(const std::string& from, const std::string& to)
{
    auto node = _lines.extract(from);
    if (node.empty())
        return;
    _size -= node.mapped().size;
    for (Entry& entry : node.mapped().entries) {
        entry.size -= requestOverhead; // it is counted again
        add(to, std::move(entry), true);
    }
}

void Turns::drop(const std::string& sender)
{
    std::vector<Entry> dropped; // after the loop: what they hold may call back
    for (auto& [name, line] : _lines) {
        for (Entry& entry : line.entries) {
            if (entry.sender == sender) {
                line.size -= entry.size;
                _size -= entry.size;
                dropped.push_back(std::move(entry));
                entry.start = nullptr;
            }
        }
        std::erase_if(line.entries, [](const Entry& entry) { return !entry.start; });
    }
    std::erase_if(_lines, [](const auto& line) { return line.second.entries.empty() && !line.second.isBusy; });
}

void Turns::dropAll()
{
    for (auto& [name, line] : _lines) {
        line.entries.clear();
        line.isOpen = false;
        line.size = 0;
    }
    _size = 0;
}

void Turns::advance(const std::string& name)
{
    const auto found = _lines.find(name);
    if (found == _lines.end())
        return;
    Line& line = found->second;
    if (line.isBusy || !line.isOpen)
        return;
    if (line.entries.empty()) {
        _lines.erase(found);
        return;
    }
    const Entry entry = std::move(line.entries.front());
    line.entries.pop_front();
    line.size -= entry.size;
    _size -= entry.size;
    line.isBusy = true;
    auto end = [post = _post, self = weak_from_this(), name](void*) {
        post([self, name] {
            if (const auto turns = self.lock())
                turns->end(name);
        });
    };
    // The pointer is no object, only not null, so that the copies are counted.
    entry.start(Turn(this, std::move(end)));
}

void Turns::end(const std::string& name)
{
    _lines[name].isBusy = false;
    advance(name);
}

} // namespace helper
