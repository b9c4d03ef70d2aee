#pragma once

#include "diagnostics/snapshots/BRVLocalSnapshotsController.h"
#include "tests/messaging/Logging.h"
#include "tests/platform/ScriptedSnapshots.h"
#include "tests/platform/ScriptedVolumes.h"
#include "tests/snapshots/support/RecordBuilder.h"

#include <memory>
#include <string>
#include <vector>

// The browser's window with real controls on a scripted machine, and what a person sees in it.
class BrowserTest {
public:
    explicit BrowserTest(platform::OperatingSystemVersion version = {14, 0, 0}) : logging(version) { }

    // After what is mounted at first was scripted.
    void open();

    std::vector<std::string> volumes() const;
    std::string selectedVolume() const; // empty for none
    void choose(int index);

    using Row = std::vector<std::string>; // the texts of the columns
    std::vector<Row> rows() const;
    std::vector<std::string> names() const;
    bool showsRefusal() const; // both the explanation and its button; fails when only one is there
    std::string placeholder() const;

    template <class T>
    T& control(const char* identifier) const;

    Logging logging;
    std::shared_ptr<BRVLocalSnapshotsController> controller = BRVLocalSnapshotsController::create();
};

// Snapshots of these names, one minute apart, without sizes.
scripted::snapshots::Snapshots snapshotsNamed(const std::vector<std::string>& names);
