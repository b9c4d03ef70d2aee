#include "platform/macos/interface/MenuDescription.h"

namespace platform::macos {

namespace {

constexpr int showFindPanel = 1; // NSFindPanelActionShowFindPanel

MenuDescription applicationMenu()
{
    return {.title = "B&revane",
            .role = MenuRole::Application,
            .items = {
                {.title = "&About Brevane", .identifier = "aboutMenuItem"},
                {},
                {.title = "&Preferences…", .identifier = "preferencesMenuItem", .key = ","},
                {.title = "&Check for Updates…", .identifier = "checkUpdatesMenuItem"},
                {},
                {.title = "Services", .submenu = MenuRole::Services},
                {},
                {.title = "Hide Brevane", .selector = "hide:", .key = "h"},
                {.title = "Hide Others", .selector = "hideOtherApplications:", .key = "h", .modifiers = CommandOption},
                {.title = "Show All", .selector = "unhideAllApplications:"},
                {},
                {.title = "&Uninstall Brevane…", .identifier = "uninstallMenuItem"},
                {},
                {.title = "Quit Brevane", .identifier = "quitMenuItem", .key = "q"}}};
}

MenuDescription fileMenu()
{
    return {.title = "&File",
            .items = {{.title = "&Show Current Settings", .identifier = "showCurrentSettingsMenuItem", .key = "r"},
                      {},
                      {.title = "&Close", .selector = "performClose:", .key = "w"}}};
}

MenuDescription editMenu()
{
    return {.title = "&Edit",
            .items = {{.title = "&Undo", .selector = "undo:", .key = "z"},
                      {.title = "&Redo", .selector = "redo:", .key = "z", .modifiers = CommandShift},
                      {},
                      {.title = "Cu&t", .selector = "cut:", .key = "x"},
                      {.title = "&Copy", .selector = "copy:", .key = "c"},
                      {.title = "&Paste", .selector = "paste:", .key = "v"},
                      {},
                      {.title = "Select &All", .selector = "selectAll:", .key = "a"},
                      {},
                      {.title = "Find…", .selector = "performFindPanelAction:", .key = "f", .tag = showFindPanel}}};
}

MenuDescription windowMenu()
{
    return {.title = "Win&dow",
            .role = MenuRole::Window,
            .items = {{.title = "Mi&nimize", .selector = "performMiniaturize:", .key = "m"},
                      {.title = "Zoom", .selector = "performZoom:"},
                      {},
                      {.title = "&Main Window", .identifier = "mainWindowMenuItem", .key = "0"},
                      {.title = "&Local Snapshots", .identifier = "localSnapshotsMenuItem", .key = "1"},
                      {.title = "C&onsole", .identifier = "consoleMenuItem", .key = "2"},
                      {},
                      {.title = "&Bring All to Front", .selector = "arrangeInFront:"}}};
}

MenuDescription helpMenu()
{
    return {.title = "&Help",
            .role = MenuRole::Help,
            .items = {{.title = "Brevane &Help", .selector = "showHelp:", .key = "?"},
                      {},
                      {.title = "&Web Site", .identifier = "openWebSiteMenuItem"},
                      {.title = "&Ask for Support", .identifier = "contactByMailMenuItem"}}};
}

} // namespace

const std::vector<MenuDescription>& mainMenuDescription()
{
    static const std::vector<MenuDescription> menus{applicationMenu(), fileMenu(), editMenu(), windowMenu(),
                                                    helpMenu()};
    return menus;
}

} // namespace platform::macos
