#include "platform/macos/ui/ButtonCell.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/Colors.h"

using platform::StyledText;
using platform::TextAttributes;
using TitleRect = platform::ui::Rect; // the system has a Rect of its own

@interface BRVButtonCell ()
- (NSRect)drawOwnTitle:(NSAttributedString*)title withFrame:(NSRect)frame inView:(NSView*)view;
@end

namespace {

// Draws the cell's title with its own attributes, and the colours of the portable one.
class CellCanvas final : public platform::ui::ButtonCell::Canvas {
public:
    CellCanvas(BRVButtonCell* cell, NSAttributedString* title, NSView* view) : _cell(cell), _title(title), _view(view)
    {
    }

    bool isHighlighted() const override { return _cell.highlighted; }

    TitleRect drawTitle(const StyledText& title, const TitleRect& frame) override
    {
        NSMutableAttributedString* const drawn = [_title mutableCopy];
        title.visitRuns(0, title.size(), [&](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
            if (!attributes.foreground)
                return;
            const auto start = title.lengthBefore(begin);
            [drawn addAttribute:NSForegroundColorAttributeName
                          value:platform::ui::nativeColor(*attributes.foreground)
                          range:NSMakeRange(start, title.lengthBefore(end) - start)];
        });
        const NSRect rect = [_cell drawOwnTitle:drawn
                                      withFrame:NSMakeRect(frame.x, frame.y, frame.width, frame.height)
                                         inView:_view];
        return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
    }

private:
    BRVButtonCell* _cell;
    NSAttributedString* _title;
    NSView* _view;
};

} // namespace

@implementation BRVButtonCell {
    std::shared_ptr<const platform::ui::ButtonCell> _titleCell;
}

- (instancetype)initWithCell:(std::shared_ptr<const platform::ui::ButtonCell>)cell
{
    self = [super initTextCell:@""];
    if (self) {
        _titleCell = std::move(cell);
        [self setButtonType:NSButtonTypeMomentaryChange];
        self.bordered = NO;
    }
    return self;
}

- (NSRect)drawTitle:(NSAttributedString*)title withFrame:(NSRect)frame inView:(NSView*)view
{
    StyledText text;
    text.appendString(platform::foundation::string(title.string), {});
    CellCanvas canvas(self, title, view);
    const TitleRect drawn =
        _titleCell->drawTitle(text, {frame.origin.x, frame.origin.y, frame.size.width, frame.size.height}, canvas);
    return NSMakeRect(drawn.x, drawn.y, drawn.width, drawn.height);
}

- (NSRect)drawOwnTitle:(NSAttributedString*)title withFrame:(NSRect)frame inView:(NSView*)view
{
    return [super drawTitle:title withFrame:frame inView:view];
}

@end
