#include "platform/macos/interface/InterfaceDescription.h"

#include "platform/macos/interface/Metrics.h"

#include <algorithm>

namespace platform::macos {

namespace {

using namespace metrics;
using enum ElementKind;

Element checkBox(const char* identifier, const char* title)
{
    return {.kind = CheckBox, .identifier = identifier, .title = title};
}

InterfaceDescription mainWindow()
{
    return {
        .name = "MainWindow",
        .window = {.identifier = "mainWindow", .title = "Brevane"},
        .root = {.kind = Column,
                 .identifier = "contentView",
                 .children = {{.kind = Stack, .identifier = "stackView", .width = mainWidth},
                              {.kind = Row,
                               .children = {{.kind = Button,
                                             .identifier = "advancedSettingsButton",
                                             .title = "Show Ad&vanced Settings",
                                             .width = advancedButtonWidth},
                                            {.kind = Space},
                                            {.kind = Button,
                                             .identifier = "applyButton",
                                             .title = "&Apply",
                                             .isDefault = true}},
                               .spacing = buttonSpacing}},
                 .spacing = sectionSpacing},
        .detached =
            {{.kind = StackRow,
              .identifier = "modeStackView",
              .children = {checkBox("backupsCheckBox", "&Back up automatically:"),
                           {.kind = PopUpButton,
                            .identifier = "operationModePopUp",
                            .accessibleName = "When to back up",
                            .items = {"When Inactive", "Interval", "Times of Day"}}}},
             {.kind = StackRow,
              .identifier = "suspendStackView",
              .children =
                  {checkBox("suspendCheckBox", "&Suspend backups from"),
                   {.kind = TimePicker, .identifier = "suspendFromPicker", .accessibleName = "Suspend backups from"},
                   {.kind = Label, .identifier = "suspendToLabel", .title = "to"},
                   {.kind = TimePicker, .identifier = "suspendToPicker", .accessibleName = "Suspend backups until"}}},
             checkBox("allowBatteryCheckBox", "Back up on battery &power"),
             checkBox("dontRunWhenPassiveCheckBox", "Don't back up while the computer is pass&ive"),
             checkBox("dontRunWithSleepPreventersCheckBox", "Don't back up while something prevents s&leep"),
             checkBox("dontRunWhenNotNetworkWiredCheckBox", "Don't back up without a &wired network"),
             checkBox("snapshotsCheckBox", "Make local s&napshots")},
    };
}

InterfaceDescription whenInactiveView()
{
    return {
        .name = "BRVWhenInactiveViewController",
        .root = {.kind = Row,
                 .identifier = "whenInactiveView",
                 .children = {{.kind = Explanation,
                               .identifier = "whenInactiveLabel",
                               .title = "Backups are made whenever the computer is inactive, so that they stay out of "
                                        "your way while you work.",
                               .width = explanationWidth}},
                 .indentation = checkBoxIndentation},
    };
}

InterfaceDescription intervalView()
{
    return {
        .name = "BRVIntervalViewController",
        .root = {.kind = Row,
                 .identifier = "intervalView",
                 .children = {{.kind = Label, .identifier = "intervalLabel", .title = "Back up every-minutes"},
                              {.kind = TextField,
                               .identifier = "intervalField",
                               .accessibleName = "Interval",
                               .width = intervalFieldWidth},
                              {.kind = Stepper,
                               .identifier = "intervalStepper",
                               .accessibleName = "Interval, step by step"},
                              {.kind = PopUpButton,
                               .identifier = "intervalUnitsPopUp",
                               .accessibleName = "Interval unit",
                               .items = {"minutes", "hours", "days", "weeks"}}},
                 .spacing = labelSpacing,
                 .indentation = checkBoxIndentation},
    };
}

InterfaceDescription calendarIntervalsView()
{
    return {
        .name = "BRVCalendarIntervalViewController",
        .root = {.kind = Column,
                 .identifier = "calendarIntervalsView",
                 .children = {{.kind = RuleEditor, .identifier = "ruleEditor", .accessibleName = "Times of Day"},
                              {.kind = Explanation,
                               .identifier = "tooManyTimesLabel",
                               .title = "A schedule can hold 10,000 times of day. Further ones are left out when you "
                                        "apply.",
                               .width = explanationWidth,
                               .isHidden = true},
                              checkBox("asapCheckBox", "Ba&ck up as soon as possible after a missed time")},
                 .indentation = checkBoxIndentation},
    };
}

InterfaceDescription preferencesWindow()
{
    return {
        .name = "BRVPreferencesController",
        .window = {.identifier = "preferencesWindow", .title = "Preferences"},
        .root = {.kind = Column,
                 .identifier = "preferencesContentView",
                 .children = {checkBox("autoUpdatesCheckBox", "&Install updates automatically"),
                              checkBox("requirePasswordCheckBox", "&Require a password to change the schedule")}},
    };
}

InterfaceDescription consoleWindow()
{
    return {
        .name = "BRVConsole",
        .window = {.identifier = "consoleWindow", .title = "Console", .isResizable = true},
        .root =
            {.kind = Column,
             .identifier = "consoleContentView",
             .children =
                 {{.kind = TextView,
                   .identifier = "consoleTextView",
                   .accessibleName = "Log",
                   .width = consoleWidth,
                   .height = consoleHeight},
                  {.kind = Row,
                   .children =
                       {{.kind = Spinner, .identifier = "consoleSpinner", .accessibleName = "The log is being fetched"},
                        {.kind = Space},
                        {.kind = Button, .identifier = "consoleExportButton", .title = "&Export…"},
                        {.kind = Button, .identifier = "consoleRefreshButton", .title = "&Refresh", .isDefault = true}},
                   .spacing = buttonSpacing}},
             .spacing = sectionSpacing},
    };
}

InterfaceDescription localSnapshotsWindow()
{
    return {
        .name = "BRVLocalSnapshotsController",
        .window = {.identifier = "localSnapshotsWindow", .title = "Local Snapshots", .isResizable = true},
        .root =
            {.kind = Column,
             .identifier = "localSnapshotsContentView",
             .children = {{.kind = Row,
                           .children = {{.kind = Label, .identifier = "disksLabel", .title = "&Volume:"},
                                        {.kind = PopUpButton, .identifier = "disksPopUp", .accessibleName = "Volume"}}},
                          {.kind = TableView,
                           .identifier = "snapshotsTable",
                           .accessibleName = "Local snapshots of the volume",
                           .items = {"Date", "Name", "Size"},
                           .width = snapshotsWidth,
                           .height = snapshotsHeight},
                          {.kind = Row,
                           .children = {{.kind = Explanation,
                                         .identifier = "fullDiskAccessTextField",
                                         .title = "The system does not let Brevane see the snapshots of this volume, "
                                                  "because Brevane has no Full Disk Access.",
                                         .width = explanationWidth,
                                         .isHidden = true},
                                        {.kind = Space},
                                        {.kind = Button,
                                         .identifier = "fullDiskAccessButton",
                                         .title = "About &Full Disk Access…",
                                         .isHidden = true}},
                           .spacing = buttonSpacing}},
             .spacing = buttonSpacing},
    };
}

Element activityState()
{
    return {.kind = Row,
            .children = {{.kind = Explanation,
                          .identifier = "activityStateLabel",
                          .title = "Asking the background scheduler…",
                          .width = explanationWidth},
                         {.kind = Space},
                         {.kind = Spinner,
                          .identifier = "activitySpinner",
                          .accessibleName = "The background scheduler is being asked"},
                         {.kind = Button, .identifier = "backUpNowButton", .title = "&Back Up Now"}},
            .spacing = buttonSpacing};
}

// An explanation whose text comes with the helper's answers.
Element activityExplanation(const char* identifier, const char* title)
{
    return {.kind = Explanation, .identifier = identifier, .title = title, .width = activityWidth, .isHidden = true};
}

InterfaceDescription activityWindow()
{
    return {
        .name = "BRVActivityController",
        .window = {.identifier = "activityWindow", .title = "Activity", .isResizable = true},
        .root = {.kind = Column,
                 .identifier = "activityContentView",
                 .children = {activityState(),
                              activityExplanation("activityLastBackupLabel", "No backup yet."),
                              activityExplanation("activityNotesLabel", "No backup program is chosen."),
                              {.kind = Row,
                               .children = {{.kind = Label, .identifier = "momentsLabel", .title = "&Next backups:"},
                                            {.kind = PopUpButton,
                                             .identifier = "activitySchedulePopUp",
                                             .accessibleName = "Schedule of the next backups",
                                             .items = {"with the applied settings", "with the edited settings"},
                                             .isHidden = true}}},
                              activityExplanation("activityEditsLabel", "The edited settings are not applied yet."),
                              {.kind = TableView,
                               .identifier = "momentsTable",
                               .accessibleName = "Next backups",
                               .items = {"When", "Note"},
                               .width = activityWidth,
                               .height = momentsHeight},
                              {.kind = Label, .identifier = "journalLabel", .title = "Journal:"},
                              {.kind = TextView,
                               .identifier = "journalTextView",
                               .accessibleName = "Journal",
                               .width = activityWidth,
                               .height = journalHeight}}},
    };
}

} // namespace

const std::vector<InterfaceDescription>& interfaceDescriptions()
{
    static const std::vector<InterfaceDescription> all{
        mainWindow(),        whenInactiveView(), intervalView(),         calendarIntervalsView(),
        preferencesWindow(), consoleWindow(),    localSnapshotsWindow(), activityWindow(),
    };
    return all;
}

const InterfaceDescription* findInterfaceDescription(std::string_view name)
{
    const auto& all = interfaceDescriptions();
    const auto found = std::ranges::find(all, name, [](const auto& each) { return std::string_view(each.name); });
    return found == all.end() ? nullptr : &*found;
}

} // namespace platform::macos
