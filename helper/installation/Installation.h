#pragma once

#include "helper/installation/InstallationManifest.h"

#include <optional>
#include <string>

namespace helper {

// The product's files below the root. All that a version consists of is in one folder, which another version replaces
// in one step; at every moment the folder is the old version or the new one, whole. Only one object may be at work.
class Installation {
public:
    Installation();

    // nullopt when what stands there was not installed.
    std::optional<InstallationManifest> manifest() const;

    // The folder in which a new version is made ready, for this program alone, and the version in it.
    std::string stagingFolder() const;
    std::string stagedProduct() const { return stagingFolder() + "/Brevane"; }

    // An empty staging folder.
    platform::Result<void> beginStaging() const;
    // Whether the staged folder holds exactly what its manifest says. EBADMSG when not.
    platform::Result<InstallationManifest> checkStaged() const;
    // Puts the staged version in place. Success also means that it stays there after a power cut.
    platform::Result<void> replace(InstallationManifest staged) const;

    // Ends a replacement that failed or was interrupted: with the old version before the step, with the new one after
    // it. Nothing is left of the staging.
    void endReplacement() const;
    bool isInterrupted() const;

    // Removes what was installed and what this program has written since, and nothing else. What cannot be removed is
    // logged, and then the program and its list stay, so that it can be tried again.
    platform::Result<void> remove() const;

private:
    std::string path(const std::string& name) const { return _root + "/" + name; }
    std::string product() const { return path(InstallationManifest::productFolder); }
    platform::Result<void> makeLinks(InstallationManifest& staged) const;
    platform::Result<void> makeFolders(const std::string& link, InstallationManifest& staged) const;
    void removeLinks(const InstallationManifest& of, const InstallationManifest* but) const;

    std::string _root;
};

} // namespace helper
