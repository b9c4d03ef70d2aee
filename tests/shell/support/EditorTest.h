#pragma once

#include "platform/SystemInformation.h"
#include "shell/BREditorController.h"
#include "tests/shell/support/MainWindowUser.h"
#include "tests/shell/support/PlayedScheduler.h"

#include <memory>
#include <optional>
#include <string_view>

// The machine that a test runs on, installed as the product's package leaves it.
struct Machine {
    platform::OperatingSystemVersion system{14, 0, 0};
    std::optional<bool> battery = true;
};

// Starts a test: a fresh scripted platform with this machine, and no authorization held.
void setUp(const Machine& machine);

// The application as it is launched, with real controls, beside a scheduler helper that holds this record.
class EditorTest {
public:
    explicit EditorTest(ScheduleSettings record, const Machine& machine = {});
    ~EditorTest();
    EditorTest(const EditorTest&) = delete;
    EditorTest& operator=(const EditorTest&) = delete;

    // Presses Apply and gives back the record that was sent for it, if one was. Leaves the alert open.
    std::optional<ScheduleSettings> apply();
    // The same, and dismisses the alert, which there must be.
    std::optional<ScheduleSettings> applyAndDismiss();

    PlayedScheduler scheduler;
    MainWindowUser user;
    std::shared_ptr<BREditorController> controller;
};

// A record with every key: backups on, every 90 minutes, suspended from 22:15 to 6:45, nothing advanced.
ScheduleSettings completeRecord();
ScheduleSettings completeRecordWith(std::string_view key, platform::PropertyList value);
