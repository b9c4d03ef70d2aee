#pragma once

#include "helper/linux/installation/InstallationManifest.h"
#include "platform/FileDescriptor.h"

#include <chrono>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// The product's files below the root. All that a version consists of is in one folder, which another version replaces
// in one step; at every moment the folder is the old version or the new one, whole. Only one object may be at work.
class Installation {
public:
    enum class State {
        Settled,    // nothing is left of any replacement
        Unfinished, // something is left that settle() tidies
        OnTrial,    // a newer version is in place, and the old one is kept beside it
    };

    Installation();

    // nullopt when what stands there was not installed.
    std::optional<InstallationManifest> manifest() const;

    // The folder in which a new version is made ready, for this program alone, and the version in it.
    std::string stagingFolder() const;
    std::string stagedProduct() const { return stagingFolder() + "/Brevane"; }
    // The version that the one in place is exchanged for, while there is one.
    std::string otherProduct() const { return stagingFolder() + "/other"; }
    std::string program() const { return product() + "/" + programName; }
    std::string otherProgram() const { return otherProduct() + "/" + programName; }
    std::string stagedProgram() const { return stagedProduct() + "/" + programName; }

    // An empty staging folder.
    platform::Result<void> beginStaging() const;
    // Whether the staged folder holds exactly what its manifest says, and every link leads to a file of it. EBADMSG
    // when not.
    platform::Result<InstallationManifest> checkStaged() const;
    // Makes the staged version the other one: all that it is, is on disk.
    platform::Result<void> makeReady(InstallationManifest staged) const;
    // Puts the other version in place, and this one beside it. Success also means that it stays so after a power cut.
    platform::Result<void> exchange() const;

    State state() const;
    // The trial is over for better or worse, or was never begun: removes what is not in place, and moves over what
    // somebody else had put there. What has to stay is logged, and tried again by the next call.
    void settle() const;
    // Puts the old version back, if a newer one is on trial.
    platform::Result<void> takeBack() const;

    // Waits until nobody else has the staging folder. False when that takes longer than the limit.
    bool waitForTrial(std::chrono::milliseconds limit) const;
    // Only one process at a time has the staging folder. The failure is an errno value: ENOENT when there is none,
    // EWOULDBLOCK when another one has it.
    std::expected<platform::FileDescriptor, int> lock() const;

    // Removes what was installed and what this program has written since, and nothing else. Nothing is removed when
    // something is known to stay; that is the error. `removeRules` removes what the program has written elsewhere.
    platform::Result<void> remove(const std::string& rulesFile,
                                  const std::function<platform::Result<void>()>& removeRules) const;

private:
    static constexpr const char* programName = "com.zerkolin.brevane.scheduler";

    std::string path(const std::string& name) const { return _root + "/" + name; }
    std::string product() const { return path(InstallationManifest::productFolder); }
    std::vector<std::string> replacedFolders() const;
    void retireOther() const;
    void clearReplaced() const;
    void settleLinks(const InstallationManifest& current, const InstallationManifest& other) const;
    void makeLink(const std::string& link) const;
    std::vector<std::string> missingFolders(const InstallationManifest& staged) const;

    std::string _root;
};

} // namespace helper
