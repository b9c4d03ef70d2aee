#pragma once

#include "firststart/FirstStartOutlets.h"
#include "firststart/model/FirstStartDraft.h"
#include "layout/ZRKStackView.h"
#include "platform/Error.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The window of one page that leads to the first backup. Its last button writes everything; whatever else closes it
// writes nothing. Main thread only.
class BRVFirstStartController : public platform::ui::TextFieldDelegate,
                                public std::enable_shared_from_this<BRVFirstStartController> {
public:
    // How the page was left. Without either it was only closed.
    struct End {
        std::optional<ScheduleSettings> applied; // is in force now
        std::optional<ScheduleSettings> edits;   // the answers so far are to be edited on
        ProgramDraft program;                    // the same of the backup program
    };
    using EndHandler = std::function<void(const End&)>;

    // `current` is the fetched record. The handler runs while the window closes; when that was while the last button's
    // work was being done, once more after it.
    static std::shared_ptr<BRVFirstStartController>
    create(ScheduleSettings current, const EditorCapabilities& capabilities, ProgramOffer offer, EndHandler handler);

    std::string windowNibName() const;
    // Loads the window the first time, and brings it to the front.
    void showWindow();
    bool isVisible() const;

    // Asks again which programs there are.
    void lookAgain();
    // Chooses the program and applies the schedule.
    void start();
    // Leaves for the ordinary windows, which take the answers over.
    void showAllSettings();

    bool shouldChangeText(platform::ui::TextField& field, platform::ui::TextRange range,
                          std::string_view replacement) override;
    void controlTextDidChange(platform::ui::TextField& field) override;
    bool doCommand(platform::ui::TextField& field, platform::ui::TextCommand command) override;

private:
    // A field of the program's, its answer, and the button that looks for one.
    struct Entry {
        const char* kind;
        std::shared_ptr<platform::ui::View> row;
        std::shared_ptr<platform::ui::TextField> field;
        std::shared_ptr<platform::ui::Button> button;
    };

    BRVFirstStartController(ScheduleSettings current, const EditorCapabilities& capabilities, ProgramOffer offer,
                            EndHandler handler);
    void loadWindow();
    void connectActions();
    std::vector<Entry> entries() const;
    const OfferedProgram* program() const; // the selected one; null for none
    bool canStart() const;

    void takeAnswers(); // as the controls have them
    void edit();
    void selectProgram();
    void browse(const Entry& entry);
    void didReceive(const platform::Result<platform::Dictionary>& reply);
    void apply();
    void didApply(const ScheduleSettings& settings, const platform::Result<platform::PropertyList>& reply);
    void fail(const std::string& fault);
    void leave();
    void windowWillClose();

    void update();
    void updatePrograms();
    void updateState();
    void updateWhen();
    void updateRows();

    ScheduleSettings _current;
    EditorCapabilities _capabilities;
    ProgramOffer _offer;
    FirstStartDraft _draft;
    std::string _fault; // what is wrong with what was sent
    bool _isSending = false;
    End _end;
    EndHandler _handler; // until it has run for the last time

    std::unique_ptr<platform::ui::Interface> _interface;
    std::optional<FirstStartOutlets> _outlets;
    std::shared_ptr<ZRKStackView> _stackView;
};
