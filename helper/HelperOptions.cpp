#include "helper/HelperOptions.h"

#include "platform/Root.h"

#include <optional>
#include <string_view>

namespace helper {

std::expected<HelperOptions, std::string> HelperOptions::inArguments(int count, const char* const* arguments)
{
    std::string root = platform::installedRoot();
    std::optional<std::string> rules;
    auto updates = UpdateConfiguration::builtIn();
    for (int index = 1; index < count; index += 2) {
        const std::string_view name = arguments[index];
        const std::string value = index + 1 < count ? arguments[index + 1] : "";
        const bool isRules = systemRules && name == "--rules";
        if (value.empty() || (name != "--root" && !isRules && name != "--updates"))
            return std::unexpected("");
        if (name == "--root") {
            root = value;
        } else if (isRules) {
            rules = value;
        } else {
            auto named = UpdateConfiguration::inFile(value);
            if (!named)
                return std::unexpected(std::move(named.error()));
            updates = std::move(*named);
        }
    }
    const bool isInstalled = root == platform::installedRoot();
    return HelperOptions{root,
                         rules.value_or(isInstalled && systemRules ? systemRules : ""),
                         std::move(updates),
                         {arguments + 1, arguments + count}};
}

} // namespace helper
