#pragma once

#include "platform/macos/ui/ControlNative.h"
#include "platform/ui/TableView.h"

@class BRVTableDataSource;

namespace platform::ui {

struct TableViewNative : ControlNative {
    // A scroll view around an NSTableView.
    explicit TableViewNative(NSView* theView);
    ~TableViewNative() override;

    NSTableView* table() const { return static_cast<NSTableView*>(static_cast<NSScrollView*>(view).documentView); }

    std::weak_ptr<TableViewDataSource> dataSource;
    BRVTableDataSource* listener;
    NSTextField* placeholder;
};

} // namespace platform::ui
