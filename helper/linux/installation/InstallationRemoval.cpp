#include "helper/linux/installation/Installation.h"
#include "helper/linux/installation/OpenFolder.h"
#include "helper/linux/installation/RemovalPlan.h"
#include "helper/linux/installation/WrittenFiles.h"
#include "helper/SystemError.h"
#include "platform/Folder.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <string_view>

namespace helper {

using platform::Result;

namespace {

// 0 when every part of the path below the folder is a folder of its own, on the same device and mount.
int obstacleOnWay(const std::string& product, const std::string& path)
{
    auto at = OpenFolder::at(product);
    for (std::size_t start = 0; at && start < path.size();) {
        const auto slash = std::min(path.find('/', start), path.size());
        at = at->folder(path.substr(start, slash - start));
        start = slash + 1;
    }
    return at ? 0 : at.error();
}

// The files of the list, but for those that are said to come later, and their folders. What somebody has put in the
// place of a folder, if only a link, is theirs, and so is what it leads to. A mount is in the way.
Result<RemovalPlan> planOfProduct(const std::string& product, const InstallationManifest& installed,
                                  std::string_view later)
{
    RemovalPlan plan;
    std::set<std::string> folders{""};
    for (const auto& folder : installed.innerFolders()) {
        const auto obstacle = obstacleOnWay(product, folder);
        if (obstacle == EXDEV)
            return std::unexpected(systemError(EBUSY, "'" + product + "/" + folder + "' could not be removed."));
        if (obstacle == 0) {
            folders.insert(folder);
            plan.addFolder(product + "/" + folder);
        }
    }
    for (const auto& file : installed.files) {
        if (file != later && folders.contains(platform::parentOf(file)))
            plan.addFile(product + "/" + file);
    }
    return plan;
}

} // namespace

// What can be tried again comes first, then the settings, and last this program and the list, which the next try needs.
Result<void> Installation::remove(const std::string& rulesFile, const std::function<Result<void>()>& removeRules) const
{
    settle();
    const auto installed = manifest();
    if (!installed)
        return std::unexpected(systemError(ENOENT, "There is no installation below '" + _root + "'."));
    auto files = planOfProduct(product(), *installed, programName);
    if (!files)
        return std::unexpected(std::move(files.error()));
    for (const auto& [link, target] : installed->links)
        files->addLink(path(link), target);
    RemovalPlan settings;
    for (const auto& file : writtenFiles())
        settings.addFile(file);
    RemovalPlan last;
    last.addFile(program());
    last.addFile(product() + "/" + InstallationManifest::fileName);
    last.addFolder(product());
    auto folders = installed->folders;
    std::ranges::sort(folders, std::greater<>());
    for (const auto& folder : folders)
        last.addFolder(folder == "." ? _root : path(folder));

    RemovalPlan rules;
    if (!rulesFile.empty())
        rules.addFile(rulesFile);
    for (const auto* plan : {&*files, &settings, &rules, &last}) {
        if (auto checked = plan->check(); !checked)
            return checked;
    }
    if (platform::fileExists(stagingFolder()))
        return std::unexpected(systemError(ENOTEMPTY, "'" + stagingFolder() + "' could not be removed."));
    if (auto removed = files->carryOut(); !removed)
        return removed;
    if (auto removed = removeRules(); !removed)
        return removed;
    if (auto removed = settings.carryOut(); !removed)
        return removed;
    return last.carryOut();
}

} // namespace helper
