#pragma once

#include "platform/Calendar.h"
#include "platform/ui/RuleEditor.h"
#include "tests/platform/ui/User.h"

#include <memory>
#include <string_view>

namespace platform::ui {
class RuleRow;
}

// A person at the rows of the main window's rule editor, who scrolls to a row that is out of sight. Rows count from 0.
// Throws std::logic_error for what is not there to be used.
class RowsUser {
public:
    int count() const;
    int weekday(int row) const; // the pop-up's index
    platform::TimeOfDay time(int row) const;

    void chooseWeekday(int row, int index);
    void pickTime(int row, platform::TimeOfDay time);
    void setTime(int row, platform::TimeOfDay time); // at once, without the keys on the way
    void add(int row);                               // below it
    void remove(int row);
    bool canRemove(int row) const;

    std::shared_ptr<platform::ui::RuleEditor> ruleEditor() const;
    std::shared_ptr<platform::ui::View> control(int row, std::string_view identifier) const;
};
