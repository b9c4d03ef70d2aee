#include "helper/HelperOptions.h"

#include "platform/Root.h"

#include <optional>
#include <string_view>

namespace helper {

namespace {

constexpr const char* systemRules = "/etc/polkit-1/rules.d";

} // namespace

const char* const HelperOptions::usage =
    "usage: com.zerkolin.brevane.scheduler [--root PATH] [--updates FILE] [--rules FOLDER]\n"
    "       com.zerkolin.brevane.scheduler --snapshot VOLUME|--remove-snapshot PATH\n"
    "       com.zerkolin.brevane.scheduler --simulate FILE\n"
    "       com.zerkolin.brevane.scheduler --self-check|--take-back [--root PATH] ...\n"
    "Stores the backup schedule and serves it on the system bus; or makes one snapshot, or simulates, and ends.\n"
    "  --root PATH         the folder below which the product's files stand (/opt/brevane)\n"
    "  --updates FILE      a property list that names the feed of updates and their public key\n"
    "  --rules FOLDER      polkit's folder of rules (/etc/polkit-1/rules.d; with another root: none)\n"
    "  --snapshot VOLUME   a local snapshot of the btrfs volume at this folder; prints its path\n"
    "  --remove-snapshot PATH\n"
    "                      removes such a snapshot\n"
    "  --simulate FILE     prints when backups would start by the property list FILE; touches nothing\n"
    "  --self-check        says whether this program could serve, with the options that follow; changes nothing\n"
    "  --take-back         puts the version before back in place of one that was never seen to serve\n";

std::expected<HelperOptions, std::string> HelperOptions::inArguments(int count, const char* const* arguments)
{
    std::string root = platform::installedRoot();
    std::optional<std::string> rules;
    auto updates = UpdateConfiguration::builtIn();
    for (int index = 1; index < count; index += 2) {
        const std::string_view name = arguments[index];
        const std::string value = index + 1 < count ? arguments[index + 1] : "";
        if (value.empty() || (name != "--root" && name != "--rules" && name != "--updates"))
            return std::unexpected("");
        if (name == "--root") {
            root = value;
        } else if (name == "--rules") {
            rules = value;
        } else {
            auto named = UpdateConfiguration::inFile(value);
            if (!named)
                return std::unexpected(std::move(named.error()));
            updates = std::move(*named);
        }
    }
    const bool isInstalled = root == platform::installedRoot();
    return HelperOptions{
        root, rules.value_or(isInstalled ? systemRules : ""), std::move(updates), {arguments + 1, arguments + count}};
}

} // namespace helper
