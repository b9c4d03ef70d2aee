#include "diagnostics/log/ZRKLog.h"
#include "helper/enforcement/SnapshotKeeper.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedSystemLog.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using Strings = std::vector<std::string>;

// Volumes whose snapshots are names in a map. The test looks only while nothing is being done.
class NamedSnapshots final : public helper::LocalSnapshots {
public:
    Strings volumesOf(const Strings& folders) const override { return folders; }
    std::expected<Made, std::string> make(const std::string& volume) override
    {
        ++attempts;
        if (isFailing)
            return std::unexpected("the volume is full");
        const auto path = volume + "@" + std::to_string(++count);
        there[path] = "id " + std::to_string(count);
        return Made{path, knowsIdentifiers ? std::optional(there[path]) : std::nullopt};
    }
    std::optional<std::string> identifierOf(const std::string& path) const override
    {
        const auto found = there.find(path);
        return found == there.end() ? std::nullopt : std::optional(found->second);
    }
    std::expected<void, std::string> remove(const std::string& path) override
    {
        if (isFailing)
            return std::unexpected("it is held");
        removed.push_back(path);
        there.erase(path);
        return {};
    }
    platform::Result<platform::PropertyList> list(const std::string&) const override { return platform::Dictionary(); }

    std::map<std::string, std::string> there; // identifiers by path
    Strings removed;
    int attempts = 0;
    int count = 0;
    bool isFailing = false;
    bool knowsIdentifiers = true;
};

struct Kept {
    Kept() { scripted::reset(); }
    ~Kept() { scripted::reset(); }

    // The helper begins, does what there is to do now, and ends.
    void keep(bool isEnabled = true)
    {
        helper::SnapshotKeeper keeper(folder.file("snapshots.plist"), [this] { return volumes; }, snapshots);
        keeper.setEnabled(isEnabled);
        REQUIRE(keeper.stop(std::chrono::seconds(20)));
    }

    TemporaryDirectory folder;
    Strings volumes{"/one", "/two"};
    std::shared_ptr<NamedSnapshots> snapshots = std::make_shared<NamedSnapshots>();
};

} // namespace

TEST_CASE("each volume has a snapshot at once and another one when an hour is over")
{
    Kept kept;
    kept.keep();
    CHECK(kept.snapshots->attempts == 2);
    kept.keep();
    CHECK(kept.snapshots->attempts == 2);
    scripted::clock::advance(std::chrono::hours(1));
    kept.keep();
    CHECK(kept.snapshots->attempts == 4);
}

TEST_CASE("what is older than a day is removed, but for each volume's newest one")
{
    Kept kept;
    kept.keep();
    scripted::clock::advance(std::chrono::hours(25));
    kept.keep(false);
    CHECK(kept.snapshots->removed.empty());
    kept.keep();
    kept.keep();
    CHECK(kept.snapshots->removed == Strings{"/one@1", "/two@2"});
    CHECK(kept.snapshots->there.size() == 2);
}

TEST_CASE("another snapshot in the place of one that was made is left alone and forgotten")
{
    Kept kept;
    kept.volumes = {"/one"};
    kept.keep();
    kept.snapshots->there["/one@1"] = "somebody's";
    scripted::clock::advance(std::chrono::hours(25));
    kept.keep();
    kept.keep();
    CHECK(kept.snapshots->removed.empty());
    CHECK(kept.snapshots->there["/one@1"] == "somebody's");
}

TEST_CASE("a snapshot that nothing tells from others is never removed")
{
    Kept kept;
    kept.volumes = {"/one"};
    kept.snapshots->knowsIdentifiers = false;
    kept.keep();
    scripted::clock::advance(std::chrono::hours(30));
    kept.keep();
    scripted::clock::advance(std::chrono::hours(30));
    kept.keep();
    CHECK(kept.snapshots->removed.empty());
    CHECK(kept.snapshots->there.size() == 3);
}

TEST_CASE("a volume whose snapshot failed is not tried again at once")
{
    Kept kept;
    kept.volumes = {"/one"};
    kept.snapshots->isFailing = true;
    helper::SnapshotKeeper keeper(kept.folder.file("snapshots.plist"), [&] { return kept.volumes; }, kept.snapshots);
    keeper.setEnabled(true);
    keeper.look();
    keeper.look();
    REQUIRE(keeper.stop(std::chrono::seconds(20)));
    CHECK(kept.snapshots->attempts == 1);
}

TEST_CASE("what becomes of snapshots is told in the log, failures as errors")
{
    Kept kept;
    kept.volumes = {"/one"};
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    const auto keepAndTell = [&] {
        scripted::log::reset();
        kept.keep();
        Strings texts;
        for (const auto& message : scripted::log::messages()) {
            if (message.sink == scripted::log::Sink::Unified)
                texts.push_back((message.type == LogLevelError ? "error: " : "") + message.text);
        }
        return texts;
    };
    CHECK(keepAndTell() == Strings{"Made the local snapshot '/one@1'."});
    kept.snapshots->isFailing = true;
    scripted::clock::advance(std::chrono::hours(1));
    CHECK(keepAndTell() == Strings{"error: No local snapshot of '/one' was made: the volume is full."});
    kept.snapshots->isFailing = false;
    scripted::clock::advance(std::chrono::hours(1));
    CHECK(keepAndTell() == Strings{"Made the local snapshot '/one@2'."});
    scripted::clock::advance(std::chrono::hours(24));
    // It has looked at what is old before it was enabled.
    CHECK(keepAndTell() == Strings{"Removed the old local snapshot '/one@1'.", "Made the local snapshot '/one@3'."});
    scripted::clock::advance(std::chrono::hours(25));
    kept.snapshots->isFailing = true;
    CHECK(keepAndTell()
          == Strings{"error: The old local snapshot '/one@2' could not be removed: it is held.",
                     "error: No local snapshot of '/one' was made: the volume is full."});
}
