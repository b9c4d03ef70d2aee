#pragma once

#include "platform/Error.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace helper {

// What an installation consists of. It stands in the product's folder, as the property list "installation.plist" with
// "Version", "HumanVersion", "Files", "Links" and, once installed, "Folders", or "Package".
struct InstallationManifest {
    std::string version;
    std::string humanVersion;
    std::vector<std::string> files;                         // below the product's folder; this list is not among them
    std::vector<std::pair<std::string, std::string>> links; // a path below the root, and what it leads to
    std::vector<std::string> folders;                       // below the root, made by the installation; "." is the root
    std::string package = {}; // of the package manager that owns the files; empty when none does

    static constexpr const char* fileName = "installation.plist";
    static constexpr const char* productFolder = "Library/Brevane"; // below the root
    // Beside it, from the begin of an update until the new version has proved itself.
    static constexpr const char* stagingFolder = "Library/.com.zerkolin.brevane.update";

    // What the link at a path below the root leads to: the same for every version, so that no link changes with one.
    // The file has the same path below the product's folder, but for its first name: "usr/bin/log" leads to "bin/log"
    // there.
    static std::string targetOfLink(const std::string& path);
    static std::string fileOfLink(const std::string& path); // below the product's folder

    // nullopt when there is none, or one that names files outside the product's folder, or a link that leads elsewhere
    // or stands in other places than links do.
    static std::optional<InstallationManifest> inFolder(const std::string& folder);

    // On disk when it returns success.
    platform::Result<void> writeToFolder(const std::string& folder) const;

    // The folders below the product's that hold its files, inner ones first.
    std::vector<std::string> innerFolders() const;
};

} // namespace helper
