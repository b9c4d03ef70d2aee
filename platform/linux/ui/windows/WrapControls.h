#pragma once

#include "platform/ui/DatePicker.h"
#include "platform/ui/PopUpButton.h"
#include "platform/ui/RuleEditor.h"
#include "platform/ui/TableView.h"

#include <memory>

class QComboBox;
class QTimeEdit;

namespace platform::ui {

class DataTable;
class RuleEditorBox;

// Views for widgets of an interface file whose controls keep more than the widget.
std::shared_ptr<PopUpButton> wrapPopUpButton(QComboBox& box);
std::shared_ptr<DatePicker> wrapDatePicker(QTimeEdit& edit);
std::shared_ptr<RuleEditor> wrapRuleEditor(RuleEditorBox& box);
std::shared_ptr<TableView> wrapTableView(DataTable& table);

} // namespace platform::ui
