#pragma once

#include "platform/ui/PopUpButton.h"
#include "platform/ui/Stepper.h"
#include "platform/ui/TextField.h"
#include "schedule/BRVViewController.h"
#include "schedule/model/IntervalState.h"

#include <cstdint>
#include <memory>

// The editor of a fixed interval: a count from 1 to 999 and its unit.
class BRVIntervalViewController : public BRVViewController,
                                  public platform::ui::TextFieldDelegate,
                                  public std::enable_shared_from_this<BRVIntervalViewController> {
public:
    static std::shared_ptr<BRVIntervalViewController> create();

    platform::Dictionary settings() override;

    // The rest needs a loaded view.
    std::int64_t intervalValue() const;        // 1 to 999
    void setIntervalValue(std::int64_t value); // held in that range
    IntervalUnit intervalMode() const;
    void setIntervalMode(unsigned mode); // above 3 the selection stays

    void updateView() override;
    void updateLabelTextField();
    void updateStepper();
    void updateUnitsPopup();

    void changeUnitsPopup();
    void changeStepper();

    bool shouldChangeText(platform::ui::TextField& field, platform::ui::TextRange range,
                          std::string_view replacement) override;
    void controlTextDidChange(platform::ui::TextField& field) override;
    bool doCommand(platform::ui::TextField& field, platform::ui::TextCommand command) override;

protected:
    void connectOutlets(const platform::ui::Interface& interface) override;
    void awakeFromNib() override;

private:
    BRVIntervalViewController();
    IntervalState state() const;

    std::shared_ptr<platform::ui::TextField> _labelTextField;
    std::shared_ptr<platform::ui::TextField> _intervalTextField;
    std::shared_ptr<platform::ui::Stepper> _stepper;
    std::shared_ptr<platform::ui::PopUpButton> _unitsPopup;
};
