#include "platform/ui/Interface.h"

#include <cstdio>
#include <cstdlib>

namespace platform::ui {

std::shared_ptr<MenuItem> Interface::menuItem(std::string_view identifier) const
{
    const auto found = _contents.menuItems.find(identifier);
    if (found == _contents.menuItems.end())
        fail("Missing outlet", identifier);
    return found->second;
}

std::vector<std::string> Interface::identifiers() const
{
    std::vector<std::string> names;
    if (_contents.window)
        names.push_back(_contents.window->identifier());
    for (const auto& [name, view] : _contents.views)
        names.push_back(name);
    for (const auto& [name, item] : _contents.menuItems)
        names.push_back(name);
    return names;
}

void Interface::fail(const char* what, std::string_view name)
{
    std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(name.size()), name.data());
    std::abort();
}

std::shared_ptr<View> Interface::find(std::string_view identifier) const
{
    const auto found = _contents.views.find(identifier);
    return found == _contents.views.end() ? nullptr : found->second;
}

} // namespace platform::ui
