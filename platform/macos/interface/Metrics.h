#pragma once

// Distances and sizes of the windows, in points, as the platform's conventions have them.
namespace platform::macos::metrics {

inline constexpr double windowMargin = 20;
inline constexpr double controlSpacing = 8; // between controls of a row, and between rows that belong together
inline constexpr double labelSpacing = 6;   // between a field, its label and its stepper
inline constexpr double sectionSpacing = 16;
inline constexpr double buttonSpacing = 12;
inline constexpr double checkBoxIndentation = 18; // what stands below a check box begins with its title

inline constexpr double mainWidth = 420;
inline constexpr double advancedButtonWidth = 180; // the wider one of its two titles
inline constexpr double intervalFieldWidth = 44;
inline constexpr double explanationWidth = 380;
inline constexpr double ruleRowHeight = 25;
inline constexpr int visibleRuleRows = 8; // more are scrolled

inline constexpr double consoleWidth = 720;
inline constexpr double consoleHeight = 420;
inline constexpr double snapshotsWidth = 560;
inline constexpr double snapshotsHeight = 320;
inline constexpr double activityWidth = 560;
inline constexpr double momentsHeight = 160;
inline constexpr double journalHeight = 200;
inline constexpr double programWidth = 640;
inline constexpr double firstStartWidth = 600;
inline constexpr double programListWidth = 280;
inline constexpr double programListHeight = 96;
inline constexpr double nameFieldWidth = 200;
inline constexpr double diskIconSize = 16;

} // namespace platform::macos::metrics
