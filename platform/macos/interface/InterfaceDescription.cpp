#include "platform/macos/interface/InterfaceDescription.h"

#include "platform/macos/interface/Metrics.h"

#include <algorithm>
#include <utility>

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
                        {.kind = Button, .identifier = "consoleStopButton", .title = "&Stop", .isHidden = true},
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
                               .height = journalHeight},
                              // Nobody tells there.
                              {.kind = CheckBox,
                               .identifier = "notifiesCheckBox",
                               .title = "Tell me when backups &fail or are missed",
                               .isHidden = true}}},
    };
}

Element explanationRow(const char* row, const char* identifier, const char* title, double width = programWidth)
{
    return {
        .kind = Column,
        .identifier = row,
        .children = {{.kind = Explanation, .identifier = identifier, .title = title, .width = width}},
    };
}

Element textField(const char* identifier, const char* accessibleName, double width = 0)
{
    return {
        .kind = TextField, .identifier = identifier, .accessibleName = accessibleName, .width = width, .isText = true};
}

Element button(const char* identifier, const char* title, const char* accessibleName = "")
{
    return {.kind = Button, .identifier = identifier, .title = title, .accessibleName = accessibleName};
}

// Of the windows in which a backup program is set up.
Element folderRow(const char* row, Element label, Element field, Element browse)
{
    return {.kind = Row, .identifier = row, .children = {std::move(label), std::move(field), std::move(browse)}};
}

Element label(const char* identifier, const char* title)
{
    return {.kind = Label, .identifier = identifier, .title = title};
}

Element destinationRow(const char* row, const char* title, const char* field, const char* browse)
{
    return folderRow(row, label(title, "Backups go t&o:"), textField(field, "Folder that the backups go to"),
                     button(browse, "Browse…", "Browse for the folder that the backups go to"));
}

Element secretFileRow(const char* row, const char* title, const char* field, const char* browse)
{
    return folderRow(row, label(title, "Password &file:"), textField(field, "Password file"),
                     button(browse, "Browse…", "Browse for the password file"));
}

Element programRow(const char* row, const char* title, const char* popUp)
{
    return {.kind = Row,
            .identifier = row,
            .children = {label(title, "Back up &with:"),
                         {.kind = PopUpButton, .identifier = popUp, .accessibleName = "Backup program"}}};
}

Element installRow(const char* row, const char* command, const char* again)
{
    return {
        .kind = Row,
        .identifier = row,
        .children = {
            {.kind = Label, .identifier = command, .title = "Command that installs the program", .isSelectable = true},
            {.kind = Space},
            button(again, "Look A&gain")}};
}

Element programList(const char* identifier, const char* column, const char* accessibleName)
{
    return {.kind = TableView,
            .identifier = identifier,
            .accessibleName = accessibleName,
            .items = {column},
            .width = programListWidth,
            .height = programListHeight};
}

Element programLists()
{
    return {.kind = Row,
            .identifier = "listsRow",
            .children = {{.kind = Column,
                          .identifier = "foldersColumn",
                          .children = {{.kind = Label, .identifier = "foldersLabel", .title = "Folders to back &up:"},
                                       programList("foldersTable", "Folder", "Folders to back up"),
                                       {.kind = Row,
                                        .children = {button("addFolderButton", "Add…", "Add a folder"),
                                                     button("removeFolderButton", "Remove", "Remove the folder")}}}},
                         {.kind = Column,
                          .identifier = "patternsColumn",
                          .children = {{.kind = Label, .identifier = "patternsLabel", .title = "&Leave out:"},
                                       programList("patternsTable", "Pattern", "What is left out"),
                                       {.kind = Row,
                                        .children = {textField("patternField", "Pattern to leave out"),
                                                     button("addPatternButton", "Add", "Add the pattern"),
                                                     button("removePatternButton", "Remove", "Remove the pattern")}}}}},
            .spacing = sectionSpacing};
}

// The rows between the list of programs and what is said of the chosen one.
std::vector<Element> programFields()
{
    return {
        programLists(),
        destinationRow("destinationRow", "destinationLabel", "destinationField", "destinationButton"),
        secretFileRow("secretFileRow", "secretFileLabel", "secretFileField", "secretFileButton"),
        {.kind = Row,
         .identifier = "wordRow",
         .children = {{.kind = Label, .identifier = "wordLabel", .title = "&Interval of the program:"},
                      textField("wordField", "Interval of the program", nameFieldWidth)}},
        {.kind = Row,
         .identifier = "unitRow",
         .children = {{.kind = Label, .identifier = "unitLabel", .title = "&Name of the service:"},
                      textField("unitField", "Name of the service", nameFieldWidth)}},
        explanationRow("programFaultRow", "programFaultLabel", "Enter the folder that the backups go to."),
        checkBox("preventSleepCheckBox", "&Keep the computer awake while a backup runs"),
    };
}

std::vector<Element> programRows()
{
    std::vector<Element> rows{
        programRow("programRow", "programLabel", "programPopUp"),
        explanationRow("programStateRow", "programStateLabel",
                       "No backups are made while no backup program is chosen."),
        installRow("installRow", "installCommandLabel", "lookAgainButton"),
    };
    for (auto& row : programFields())
        rows.push_back(std::move(row));
    rows.push_back({.kind = Column,
                    .identifier = "restoreColumn",
                    .children = {{.kind = Explanation,
                                  .identifier = "backupPlaceLabel",
                                  .title = "Where the backups are is known to the service. The command shows what the "
                                           "service does.",
                                  .width = programWidth},
                                 {.kind = Explanation,
                                  .identifier = "restoreCommandLabel",
                                  .title = "Commands that bring files back",
                                  .width = programWidth,
                                  .isSelectable = true}}});
    rows.push_back(explanationRow("testResultRow", "testResultLabel", "The test succeeded: a backup was made."));
    return rows;
}

InterfaceDescription backupProgramWindow()
{
    return {
        .name = "BRVBackupProgramController",
        .window = {.identifier = "backupProgramWindow", .title = "Backup Program"},
        .root = {.kind = Column,
                 .identifier = "backupProgramContentView",
                 .children = {{.kind = Stack, .identifier = "backupProgramStackView", .width = programWidth},
                              {.kind = Row,
                               .children = {button("testProgramButton", "&Test"),
                                            {.kind = Spinner,
                                             .identifier = "testProgramSpinner",
                                             .accessibleName = "A backup is being made"},
                                            {.kind = Space},
                                            button("undoProgramButton", "Undo Edit"),
                                            {.kind = Button,
                                             .identifier = "chooseProgramButton",
                                             .title = "Choo&se",
                                             .isDefault = true}},
                               .spacing = buttonSpacing}},
                 .spacing = sectionSpacing},
        .detached = programRows(),
    };
}

std::vector<Element> firstStartRows()
{
    return {
        explanationRow("introductionRow", "introductionLabel",
                       "This page leads to your first backup. Nothing changes before you press the last button.",
                       firstStartWidth),
        folderRow("folderRow", label("folderLabel", "What to back &up:"), textField("folderField", "Folder to back up"),
                  button("folderButton", "Browse…", "Browse for the folder to back up")),
        programRow("firstProgramRow", "firstProgramLabel", "firstProgramPopUp"),
        explanationRow("stateRow", "stateLabel", "No backups are made while no backup program is chosen.",
                       firstStartWidth),
        installRow("firstInstallRow", "firstInstallCommandLabel", "firstLookAgainButton"),
        destinationRow("firstDestinationRow", "firstDestinationLabel", "firstDestinationField",
                       "firstDestinationButton"),
        explanationRow("destinationNoteRow", "destinationNoteLabel",
                       "Best is a folder on another disk, which is still there when this computer's disk fails.",
                       firstStartWidth),
        secretFileRow("firstSecretFileRow", "firstSecretFileLabel", "firstSecretFileField", "firstSecretFileButton"),
        {.kind = Row,
         .identifier = "whenRow",
         .children = {label("whenLabel", "W&hen to back up:"),
                      {.kind = PopUpButton,
                       .identifier = "whenPopUp",
                       .accessibleName = "When to back up",
                       .items = {"When Inactive", "Every Day"}},
                      label("timeLabel", "at"),
                      {.kind = TimePicker, .identifier = "timePicker", .accessibleName = "Time of the backup"}}},
        explanationRow(
            "whenNoteRow", "whenNoteLabel",
            "Backups are made whenever the computer is inactive, so that they stay out of your way while you "
            "work.",
            firstStartWidth),
        explanationRow("faultRow", "faultLabel", "Enter the folder that the backups go to.", firstStartWidth),
    };
}

InterfaceDescription firstStartWindow()
{
    return {
        .name = "BRVFirstStartController",
        .window = {.identifier = "firstStartWindow", .title = "Welcome to Brevane"},
        .root =
            {.kind = Column,
             .identifier = "firstStartContentView",
             .children =
                 {{.kind = Stack, .identifier = "firstStartStackView", .width = firstStartWidth},
                  {.kind = Row,
                   .children =
                       {button("allSettingsButton", "All &Settings…"),
                        {.kind = Space},
                        {.kind = Button, .identifier = "notNowButton", .title = "&Not Now", .isCancel = true},
                        {.kind = Button, .identifier = "startButton", .title = "Start &Backups", .isDefault = true}},
                   .spacing = buttonSpacing}},
             .spacing = sectionSpacing},
        .detached = firstStartRows(),
    };
}

} // namespace

const std::vector<InterfaceDescription>& interfaceDescriptions()
{
    static const std::vector<InterfaceDescription> all{
        mainWindow(),    whenInactiveView(),     intervalView(),   calendarIntervalsView(), preferencesWindow(),
        consoleWindow(), localSnapshotsWindow(), activityWindow(), backupProgramWindow(),   firstStartWindow(),
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
