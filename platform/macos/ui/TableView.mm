#include "platform/ui/TableView.h"

#include "platform/macos/ui/Label.h"
#include "platform/macos/ui/TableViewNative.h"
#include "platform/ui/Selection.h"

using platform::ui::TableView;
using platform::ui::TableViewNative;

// Answers the table. It may outlive the view for which it asks.
@interface BRVTableDataSource : NSObject <NSTableViewDataSource, NSTableViewDelegate>
@property (assign) TableView* view; // null when it is gone
@end

namespace {

TableViewNative& tableNative(const TableView& view)
{
    return static_cast<TableViewNative&>(view.native());
}

// A cell with one line of text, which is cut in the middle where it is too long.
NSTableCellView* newCell(NSString* identifier)
{
    NSTableCellView* const cell = [[NSTableCellView alloc] initWithFrame:NSZeroRect];
    NSTextField* const text = platform::ui::newLabel(@"");
    [text.cell setLineBreakMode:NSLineBreakByTruncatingMiddle];
    text.translatesAutoresizingMaskIntoConstraints = NO;
    cell.identifier = identifier;
    [cell addSubview:text];
    cell.textField = text;
    NSDictionary* const views = NSDictionaryOfVariableBindings(text);
    for (NSString* const format in @[ @"H:|-2-[text]-2-|", @"V:|-(>=0)-[text]-(>=0)-|" ])
        [cell addConstraints:[NSLayoutConstraint constraintsWithVisualFormat:format options:0 metrics:nil views:views]];
    [cell addConstraint:[NSLayoutConstraint constraintWithItem:text
                                                     attribute:NSLayoutAttributeCenterY
                                                     relatedBy:NSLayoutRelationEqual
                                                        toItem:cell
                                                     attribute:NSLayoutAttributeCenterY
                                                    multiplier:1
                                                      constant:0]];
    return cell;
}

} // namespace

@implementation BRVTableDataSource

- (NSInteger)numberOfRowsInTableView:(NSTableView*)__unused table
{
    const auto source = self.view ? tableNative(*self.view).dataSource.lock() : nullptr;
    return source ? static_cast<NSInteger>(source->numberOfRowsInTableView(*self.view)) : 0;
}

- (NSView*)tableView:(NSTableView*)table viewForTableColumn:(NSTableColumn*)column row:(NSInteger)row
{
    const auto source = self.view ? tableNative(*self.view).dataSource.lock() : nullptr;
    if (!source)
        return nil;
    const std::string identifier = platform::foundation::string(column.identifier);
    const auto value = source->tableView(*self.view, identifier, static_cast<std::size_t>(row));
    NSString* const kind = platform::foundation::string(value.identifier);
    NSTableCellView* cell = [table makeViewWithIdentifier:kind owner:nil];
    if (!cell)
        cell = newCell(kind);
    cell.textField.stringValue = platform::foundation::string(value.stringValue);
    return cell;
}

@end

namespace platform::ui {

TableViewNative::TableViewNative(NSView* theView)
    : ControlNative(theView),
      listener([[BRVTableDataSource alloc] init]),
      placeholder(newLabel(@""))
{
    placeholder.textColor = NSColor.disabledControlTextColor;
    placeholder.translatesAutoresizingMaskIntoConstraints = NO;
    [theView addSubview:placeholder];
    for (const NSLayoutAttribute middle : {NSLayoutAttributeCenterX, NSLayoutAttributeCenterY})
        [theView addConstraint:[NSLayoutConstraint constraintWithItem:placeholder
                                                            attribute:middle
                                                            relatedBy:NSLayoutRelationEqual
                                                               toItem:theView
                                                            attribute:middle
                                                           multiplier:1
                                                             constant:0]];
}

TableViewNative::~TableViewNative()
{
    listener.view = nullptr;
    table().dataSource = nil;
    table().delegate = nil;
}

TableView::TableView(std::unique_ptr<Native> native) : Control(std::move(native))
{
    TableViewNative& parts = tableNative(*this);
    parts.listener.view = this;
    parts.table().dataSource = parts.listener;
    parts.table().delegate = parts.listener;
}

void TableView::setDataSource(std::weak_ptr<TableViewDataSource> dataSource)
{
    tableNative(*this).dataSource = std::move(dataSource);
}

void TableView::reloadData()
{
    const TableViewNative& parts = tableNative(*this);
    const NSInteger selected = parts.table().selectedRow;
    [parts.table() reloadData];
    const NSInteger rows = parts.table().numberOfRows;
    selectRow(selectionAfterReload(static_cast<int>(selected), static_cast<std::size_t>(rows)));
    parts.placeholder.hidden = rows > 0;
}

std::size_t TableView::numberOfRows() const
{
    return static_cast<std::size_t>(tableNative(*this).table().numberOfRows);
}

int TableView::selectedRow() const
{
    return static_cast<int>(tableNative(*this).table().selectedRow);
}

void TableView::selectRow(int row)
{
    NSTableView* const table = tableNative(*this).table();
    if (row >= 0 && row < table.numberOfRows)
        [table selectRowIndexes:[NSIndexSet indexSetWithIndex:static_cast<NSUInteger>(row)] byExtendingSelection:NO];
    else
        [table deselectAll:nil];
}

void TableView::scrollRowToVisible(std::size_t row)
{
    if (row < numberOfRows())
        [tableNative(*this).table() scrollRowToVisible:static_cast<NSInteger>(row)];
}

TableCellView TableView::makeView(const std::string& identifier) const
{
    return {identifier, {}};
}

std::vector<std::string> TableView::columnIdentifiers() const
{
    std::vector<std::string> identifiers;
    for (NSTableColumn* const column in tableNative(*this).table().tableColumns)
        identifiers.push_back(foundation::string(column.identifier));
    return identifiers;
}

void TableView::setPlaceholder(const std::string& text)
{
    tableNative(*this).placeholder.stringValue = foundation::string(text);
}

std::string TableView::placeholder() const
{
    return foundation::string(tableNative(*this).placeholder.stringValue);
}

} // namespace platform::ui
