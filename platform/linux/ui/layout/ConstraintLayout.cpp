#include "platform/linux/ui/layout/ConstraintLayout.h"

#include <algorithm>
#include <utility>

namespace platform::ui {

ConstraintLayout::ConstraintLayout(QWidget* container) : QLayout(container)
{
    setContentsMargins(0, 0, 0, 0);
}

ConstraintLayout::~ConstraintLayout() = default;

void ConstraintLayout::addItem(QLayoutItem* item)
{
    _items.emplace_back(item);
    invalidate();
}

int ConstraintLayout::count() const
{
    return static_cast<int>(_items.size());
}

QLayoutItem* ConstraintLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? _items[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem* ConstraintLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    const auto position = _items.begin() + index;
    QLayoutItem* item = position->release();
    _items.erase(position);
    return item;
}

QSize ConstraintLayout::sizeHint() const
{
    if (!_sizeHint)
        _sizeHint = solve({}).size;
    return *_sizeHint;
}

QSize ConstraintLayout::minimumSize() const
{
    if (!_minimumSize)
        _minimumSize = solve({std::nullopt, std::nullopt, true}).size;
    return *_minimumSize;
}

bool ConstraintLayout::hasHeightForWidth() const
{
    return std::ranges::any_of(_items, [](const auto& item) { return item->widget()->hasHeightForWidth(); });
}

int ConstraintLayout::heightForWidth(int width) const
{
    if (!hasHeightForWidth())
        return -1;
    if (!_sizeForWidth || _sizeForWidth->width() != width)
        _sizeForWidth = solve({width, std::nullopt, false}).size;
    return _sizeForWidth->height();
}

void ConstraintLayout::setGeometry(const QRect& rect)
{
    if (rect == geometry())
        return;
    QLayout::setGeometry(rect);
    const auto frames = solve({rect.width(), rect.height(), false}).frames;
    for (std::size_t i = 0; i < _items.size(); ++i)
        _items[i]->widget()->setGeometry(frames[i].translated(rect.topLeft()));
}

void ConstraintLayout::invalidate()
{
    _sizeHint.reset();
    _minimumSize.reset();
    _sizeForWidth.reset();
    QLayout::invalidate();
}

ConstraintSystem::Solution ConstraintLayout::solve(const ConstraintSystem::Request& request) const
{
    std::vector<QWidget*> widgets;
    for (const auto& item : _items)
        widgets.push_back(item->widget());
    return ConstraintSystem(parentWidget(), widgets).solve(request);
}

} // namespace platform::ui
