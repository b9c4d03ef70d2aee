#include "platform/linux/ui/controls/TitleButton.h"

#include "platform/linux/ui/controls/Title.h"
#include "platform/linux/ui/textlayout/TextTheme.h"

#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QTextLayout>
#include <utility>

namespace platform::ui {

namespace {

constexpr int focusMargin = 4; // between the title and the focus frame

// Colours are chosen for what the button stands on.
QPalette paletteOnWindow(QPalette palette)
{
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    palette.setColor(QPalette::Text, palette.color(QPalette::WindowText));
    return palette;
}

QList<QTextLayout::FormatRange> formatsOf(const StyledText& title, const TextTheme& theme)
{
    QList<QTextLayout::FormatRange> formats;
    title.visitRuns(0, title.size(), [&](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
        const auto start = static_cast<int>(title.lengthBefore(begin));
        formats += {start, static_cast<int>(title.lengthBefore(end)) - start, theme.format(attributes)};
    });
    return formats;
}

class PaintedCanvas final : public ButtonCell::Canvas {
public:
    explicit PaintedCanvas(TitleButton& button) : _button(button), _painter(&button) { }

    bool isHighlighted() const override { return _button.isDown(); }

    Rect drawTitle(const StyledText& title, const Rect& frame) override
    {
        const TextTheme theme(paletteOnWindow(_button.palette()), _button.font(), {});
        QTextLayout layout(QString::fromStdString(title.string()), _button.font());
        layout.setFormats(formatsOf(title, theme));
        layout.beginLayout();
        auto line = layout.createLine();
        if (line.isValid())
            line.setNumColumns(static_cast<int>(title.length()));
        layout.endLayout();
        const QRectF within(frame.x, frame.y, frame.width, frame.height);
        QRectF drawn(QPointF(), layout.boundingRect().size());
        drawn.moveCenter(within.center());
        layout.draw(&_painter, drawn.topLeft());
        return {drawn.x(), drawn.y(), drawn.width(), drawn.height()};
    }

    void drawFocusFrame()
    {
        QStyleOptionFocusRect option;
        option.initFrom(&_button);
        option.backgroundColor = _button.palette().color(QPalette::Window);
        _button.style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &_painter, &_button);
    }

private:
    TitleButton& _button;
    QPainter _painter;
};

} // namespace

TitleButton::TitleButton(std::shared_ptr<const ButtonCell> cell) : _cell(std::move(cell))
{
    setFlat(true);
    setAutoDefault(false);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize TitleButton::sizeHint() const
{
    const auto title = QString::fromStdString(plainTitle(text()));
    return fontMetrics()
        .size(Qt::TextSingleLine, title)
        .grownBy(QMargins(focusMargin, focusMargin, focusMargin, focusMargin));
}

void TitleButton::paintEvent(QPaintEvent*)
{
    StyledText title;
    title.appendString(plainTitle(text()), {});
    PaintedCanvas canvas(*this);
    const auto inside = rect().marginsRemoved(QMargins(focusMargin, focusMargin, focusMargin, focusMargin));
    _cell->drawTitle(title, {double(inside.x()), double(inside.y()), double(inside.width()), double(inside.height())},
                     canvas);
    if (hasFocus())
        canvas.drawFocusFrame();
}

} // namespace platform::ui
