#include "shell/MainWindowStacks.h"

#include "schedule/BRVDatePicker.h"

using platform::ui::View;

MainWindowStacks::MainWindowStacks(const MainWindowOutlets& outlets)
    : _outlets(outlets),
      _column(ZRKStackView::create(outlets.stackView)),
      _mode(ZRKStackView::create(outlets.modeStackView)),
      _suspend(ZRKStackView::create(outlets.suspendStackView))
{
}

void MainWindowStacks::arrange()
{
    BRVDatePicker::correctLayout(*_outlets.suspendFromPicker);
    BRVDatePicker::correctLayout(*_outlets.suspendToPicker);
    _column->setOrientation(ZRKStackView::Vertical);
    // The last view takes the room that the controls leave.
    _mode->setViews({_outlets.backupsCheckBox, _outlets.operationModePopUp, View::create()});
    _suspend->setViews({_outlets.suspendCheckBox, _outlets.suspendFromPicker, _outlets.suspendToLabel,
                        _outlets.suspendToPicker, View::create()});
}

void MainWindowStacks::show(const std::vector<EditorRow>& rows, const std::shared_ptr<View>& modeEditor)
{
    ZRKStackView::Views views;
    for (const EditorRow row : rows) {
        if (auto view = row == EditorRow::ModeEditor ? modeEditor : viewForRow(row))
            views.push_back(std::move(view));
    }
    _column->setViews(views);
}

std::shared_ptr<View> MainWindowStacks::viewForRow(EditorRow row) const
{
    switch (row) {
    case EditorRow::Mode:
        return _outlets.modeStackView;
    case EditorRow::Suspend:
        return _outlets.suspendStackView;
    case EditorRow::AllowBattery:
        return _outlets.allowBatteryCheckBox;
    case EditorRow::DontRunWhenPassive:
        return _outlets.dontRunWhenPassiveCheckBox;
    case EditorRow::DontRunWithSleepPreventers:
        return _outlets.dontRunWithSleepPreventersCheckBox;
    case EditorRow::DontRunWhenNotNetworkWired:
        return _outlets.dontRunWhenNotNetworkWiredCheckBox;
    case EditorRow::Snapshots:
        return _outlets.snapshotsCheckBox;
    case EditorRow::ModeEditor:
        break;
    }
    return nullptr;
}
