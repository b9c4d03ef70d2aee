#pragma once

#include "platform/ui/PopUpButton.h"
#include "platform/ui/RuleEditor.h"

#include <memory>
#include <string>

// What the four criteria of a calendar row stand for, in their order.
enum CriterionType : unsigned {
    CriterionTypeBackUp = 0,  // the text "Back up"
    CriterionTypeWeekday = 1, // a pop-up button: every day or a weekday
    CriterionTypeAt = 2,      // the text "at"
    CriterionTypeTime = 3,    // a time picker
};

// One link of a calendar row's chain. Main thread only.
class BRCriterion : public platform::ui::RuleCriterion {
public:
    explicit BRCriterion(unsigned type) : _type(type) { }

    unsigned type() const { return _type; }

    // The criterion that follows in the row, made when it is first asked for; none after the time.
    const std::shared_ptr<BRCriterion>& child();

    // A text in the user's language, or a control made anew by each call.
    platform::ui::RuleDisplayValue displayValue();

    // Class, address and type, for logs.
    std::string description() const;

private:
    std::shared_ptr<platform::ui::View> newWeekdayPopUp();

    std::shared_ptr<BRCriterion> _child;
    unsigned _type;
    platform::ui::PopUpButton::Items _weekdays; // made on first use; all pop-ups share them
};
