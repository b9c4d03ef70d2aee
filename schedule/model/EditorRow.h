#pragma once

// The rows of the main window, from top to bottom.
enum class EditorRow {
    Mode,       // the backups box and the mode pop-up
    ModeEditor, // the view of the selected mode
    Suspend,    // its box and the two times
    AllowBattery,
    DontRunWhenPassive,
    DontRunWithSleepPreventers,
    DontRunWhenNotNetworkWired,
    Snapshots,
};
