#pragma once

#include "backupprogram/BackupProgramOutlets.h"
#include "backupprogram/model/BackupTest.h"
#include "backupprogram/model/ProgramDraft.h"
#include "backupprogram/model/ProgramOffer.h"
#include "layout/ZRKStackView.h"
#include "platform/DistributedNotifications.h"
#include "platform/Error.h"
#include "platform/SuddenTermination.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The window in which the backup program is chosen, set up and tried. Edits live in it until they are sent, also while
// it is closed. Where the system has a backup program of its own it only says so. Main thread only.
class BRVBackupProgramController : public platform::ui::TableViewDataSource,
                                   public platform::ui::TextFieldDelegate,
                                   public std::enable_shared_from_this<BRVBackupProgramController> {
public:
    static std::shared_ptr<BRVBackupProgramController> create();

    std::string windowNibName() const;
    // Loads the window the first time, brings it to the front and asks what is there now.
    void showWindow();
    // Edits that were begun elsewhere, before the window was ever shown.
    void setEdits(ProgramDraft edits) { _begunEdits = std::move(edits); }
    // Keeps what was not sent for the next run of the application.
    void keepEdits() const;

    // Asks the scheduler helper what can be chosen and what is.
    void reloadPrograms();
    // Sends the edited choice.
    void choose();
    // Has a backup made by the choice in force, and follows it.
    void test();
    void undo();

    std::size_t numberOfRowsInTableView(const platform::ui::TableView& table) override;
    platform::ui::TableCellView tableView(const platform::ui::TableView& table, const std::string& columnIdentifier,
                                          std::size_t row) override;
    bool shouldChangeText(platform::ui::TextField& field, platform::ui::TextRange range,
                          std::string_view replacement) override;
    void controlTextDidChange(platform::ui::TextField& field) override;
    bool doCommand(platform::ui::TextField& field, platform::ui::TextCommand command) override;

private:
    // A field of one text, and the kind of field that it is for.
    struct Entry {
        const char* kind;
        std::shared_ptr<platform::ui::View> row;
        std::shared_ptr<platform::ui::TextField> field;
    };
    // A list of texts, likewise.
    struct List {
        const char* kind;
        std::shared_ptr<platform::ui::TableView> table;
        std::shared_ptr<platform::ui::Button> removeButton;
    };

    BRVBackupProgramController() = default;
    void loadWindow();
    void connectActions();
    std::vector<Entry> entries() const;
    std::vector<List> lists() const;

    void didReceive(const platform::Result<platform::Dictionary>& reply);
    void takeOffer(ProgramOffer offer);
    void takeKeptEdits();
    void didChoose(const platform::Dictionary& choice, const platform::Result<platform::Dictionary>& reply);

    const OfferedProgram* program() const; // the selected one; null for none
    std::string keyOfKind(std::string_view kind) const;
    bool hasEdits() const;
    void edit(ProgramDraft changed, const std::string& subject);
    void selectProgram();
    void changePreventSleep();
    void browse(const char* kind);
    void addFolder();
    void addPattern();
    void addText(const char* kind, const std::string& text);
    void removeText(const List& list);

    void followTest();
    void didReceiveStatus(const platform::Result<platform::Dictionary>& reply);
    void endTest(const std::string& result);

    // What the window shows of all this.
    void update();
    void updatePrograms();
    void updateState();
    void updateFields();
    void updateRestore();
    void updateButtons();
    void updateStackView();
    void appendFieldRows(ZRKStackView::Views& rows) const;

    std::unique_ptr<platform::ui::Interface> _interface;
    std::optional<BackupProgramOutlets> _outlets;
    std::shared_ptr<ZRKStackView> _stackView;
    std::optional<ProgramOffer> _offer; // nothing until the helper has answered
    DraftHistory _history;
    std::optional<ProgramDraft> _begunEdits; // until the helper has answered
    std::string _unavailable;                // why the helper does not answer
    std::string _fault;                      // what is wrong with the choice that was sent
    std::string _faultyKey;
    std::string _testResult;
    bool _isChoosing = false;
    std::optional<BackupTest> _test;                              // while it runs
    std::optional<platform::SuddenTerminationPause> _unkeptEdits; // while there are edits
    std::optional<platform::DistributedNotificationObserver> _statusObserver;
};
