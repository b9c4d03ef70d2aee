#pragma once

#include "layout/ZRKStackView.h"
#include "schedule/model/EditorRow.h"
#include "shell/MainWindowOutlets.h"

#include <memory>
#include <vector>

// The rows of the main window: which view each is, and the stacks that they and the controls of two of them stand in.
// Main thread only.
class MainWindowStacks {
public:
    explicit MainWindowStacks(const MainWindowOutlets& outlets);

    // Once, after the interface was loaded.
    void arrange();
    // From top to bottom. Without a view for a mode, its row is left out.
    void show(const std::vector<EditorRow>& rows, const std::shared_ptr<platform::ui::View>& modeEditor);

private:
    std::shared_ptr<platform::ui::View> viewForRow(EditorRow row) const;

    const MainWindowOutlets& _outlets;
    std::shared_ptr<ZRKStackView> _column;
    std::shared_ptr<ZRKStackView> _mode;
    std::shared_ptr<ZRKStackView> _suspend;
};
