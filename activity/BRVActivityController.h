#pragma once

#include "activity/model/BackupStatus.h"
#include "activity/model/MomentText.h"
#include "platform/Clock.h"
#include "platform/DistributedNotifications.h"
#include "platform/Error.h"
#include "platform/ui/Button.h"
#include "platform/ui/CheckBox.h"
#include "platform/ui/Interface.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/ProgressIndicator.h"
#include "platform/ui/TableView.h"
#include "platform/ui/TextField.h"
#include "platform/ui/TextView.h"
#include "protocol/ScheduleSettings.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The window that tells how backups stand: what they wait for, the last one, the next moments, the journal. It asks the
// scheduler helper when it is shown and whenever the helper says that something has changed, and shows what edits that
// are not applied yet would lead to. Main thread only; the helper answers later, but an authentication blocks it.
class BRVActivityController : public platform::ui::TableViewDataSource,
                              public std::enable_shared_from_this<BRVActivityController> {
public:
    static constexpr const char* windowNibName = "BRVActivityController";

    // The schedule in force, as far as it is known, and the one that the controls of the main window hold.
    struct Schedules {
        std::optional<ScheduleSettings> applied;
        ScheduleSettings edited;
    };
    using ScheduleSource = std::function<Schedules()>;

    static std::shared_ptr<BRVActivityController> create(ScheduleSource schedules);

    // Loads the window the first time. Brings it to the front, and asks the helper.
    void showWindow();

    // What the source would give is another than before.
    void schedulesDidChange();
    void refresh();
    void backUpNow();
    void changeNotifies(); // of trouble with backups, without the application

    std::size_t numberOfRowsInTableView(const platform::ui::TableView& table) override;
    platform::ui::TableCellView tableView(const platform::ui::TableView& table, const std::string& columnIdentifier,
                                          std::size_t row) override;

private:
    struct Row {
        std::string when, note;
        bool operator==(const Row&) const = default;
    };

    explicit BRVActivityController(ScheduleSource schedules) : _schedules(std::move(schedules)) { }
    void loadWindow();
    bool isVisible() const;
    void ask();
    void finishAsking(platform::Result<platform::Dictionary> reply);
    void finishStarting(const platform::Result<platform::Dictionary>& reply);
    void presentFailureToStart(const platform::Error& error);

    void update();
    void updateStatus(MomentText& moments, const Schedules& schedules);
    void updateMoments(MomentText& moments, const Schedules& schedules);
    void updateJournal(MomentText& moments);
    void updateProgress();
    void showMoments(const std::vector<scheduling::Upcoming>& upcoming, MomentText& moments,
                     const std::string& placeholder);
    static void setOrHide(platform::ui::TextField& field, const std::string& text);

    ScheduleSource _schedules;
    std::unique_ptr<platform::ui::Interface> _interface;
    std::shared_ptr<platform::ui::TextField> _stateTextField;
    std::shared_ptr<platform::ui::TextField> _lastBackupTextField;
    std::shared_ptr<platform::ui::TextField> _notesTextField;
    std::shared_ptr<platform::ui::TextField> _editsTextField;
    std::shared_ptr<platform::ui::ProgressIndicator> _spinningIndicator;
    std::shared_ptr<platform::ui::Button> _backUpNowButton;
    std::shared_ptr<platform::ui::PopUpButton> _schedulePopup; // seen while there are edits: applied, edited
    std::shared_ptr<platform::ui::TableView> _tableView;
    std::shared_ptr<platform::ui::TextView> _journalTextView;
    std::shared_ptr<platform::ui::CheckBox> _notifiesCheckBox;

    std::optional<platform::Result<BackupStatus>> _status; // nullopt before the first answer
    std::vector<Row> _rows;
    bool _hasEdits = false;
    bool _isAsking = false;
    bool _asksAgain = false; // something has changed since it was asked
    bool _isStarting = false;
    std::optional<platform::DistributedNotificationObserver> _statusObserver;
    std::unique_ptr<platform::ClockTimer> _midnight; // the names of days are others then
    std::unique_ptr<platform::ClockWatch> _clock;    // the zone may change
};
