#include "tests/shell/support/OfferedPrograms.h"

#include "platform/PropertyListCoding.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

using platform::Dictionary;

namespace {

Dictionary contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const platform::Data bytes(std::istreambuf_iterator<char>(file), {});
    const auto value = platform::propertyListWithData(bytes);
    if (!value || !value->dictionary())
        throw std::logic_error("No property list: " + path.string());
    return *value->dictionary();
}

Dictionary describe(const std::filesystem::path& path, bool isInstalled)
{
    const auto content = contentOf(path);
    Dictionary described{{"Program", path.stem().string()}, {"Installed", isInstalled}};
    for (const auto* const key : {"Name", "Package", "Place", "Restore"}) {
        if (const auto* const text = content.stringForKey(key))
            described.set(key, *text);
    }
    if (const auto* const package = content.stringForKey("Package"))
        described.set("Install", "sudo apt install " + *package);
    const auto* const fields = content.arrayForKey("Fields");
    described.set("FieldList", fields ? *fields : platform::Array());
    return described;
}

} // namespace

Dictionary offerOfPrograms(const std::vector<std::string>& installed, const Dictionary& choice)
{
    std::vector<std::filesystem::path> paths(std::filesystem::directory_iterator(BREVANE_PROGRAMS), {});
    std::ranges::sort(paths);
    std::ranges::stable_partition(paths, [](const auto& path) { return path.stem() == "borg"; });
    platform::Array programs;
    for (const auto& path : paths)
        programs.emplace_back(describe(path, std::ranges::find(installed, path.stem().string()) != installed.end()));
    auto reply = choice;
    reply.set("Programs", std::move(programs));
    return reply;
}

Dictionary offerWithoutSettings(const std::string& installed, const std::string& missing)
{
    const auto offer = offerOfPrograms({installed});
    platform::Array programs;
    for (const auto& each : *offer.arrayForKey("Programs")) {
        auto program = *each.dictionary();
        if (*program.stringForKey("Program") == installed)
            program.set("Missing", missing);
        programs.emplace_back(std::move(program));
    }
    return {{"Programs", std::move(programs)}};
}
