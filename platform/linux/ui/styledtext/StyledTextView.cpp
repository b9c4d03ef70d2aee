#include "platform/linux/ui/styledtext/StyledTextView.h"

#include "platform/linux/ui/styledtext/StyledTextAccessible.h"
#include "platform/Localization.h"

#include <QShortcut>
#include <QVBoxLayout>

namespace platform::ui {

StyledTextView::StyledTextView(QWidget* parent)
    : QWidget(parent),
      _bar(new FindBar(this)),
      _area(new StyledTextArea(this))
{
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(_bar);
    column->addWidget(_area, 1);
    _bar->hide();
    StyledTextAccessible::install();
    connect(_bar, &FindBar::wordEdited, this, &StyledTextView::findTyped);
    connect(_bar, &FindBar::nextRequested, this, &StyledTextView::findNext);
    connect(_bar, &FindBar::previousRequested, this, &StyledTextView::findPrevious);
    connect(_bar, &FindBar::closed, this, &StyledTextView::closeBar);
    connect(_area, &StyledTextArea::findRequested, this, &StyledTextView::openBar);
    connect(_area, &StyledTextArea::textReplaced, this, [this] {
        _finder.cancel();
        _bar->setNotice({});
    });
    connect(&_finder, &TextFinder::found, this, &StyledTextView::showMatch);
    connect(&_finder, &TextFinder::notFound, this,
            [this] { _bar->setNotice(QString::fromStdString(localizedString("Not Found"))); });

    new QShortcut(QKeySequence::Find, this, this, &StyledTextView::openBar);
    new QShortcut(QKeySequence::FindNext, this, this, &StyledTextView::findNext);
    new QShortcut(QKeySequence::FindPrevious, this, this, &StyledTextView::findPrevious);
}

void StyledTextView::openBar()
{
    _origin = placeInSight();
    _bar->open();
}

// What is selected there, or the end of what is in sight: the newest messages stand last.
std::size_t StyledTextView::placeInSight()
{
    const auto sight = _area->stretchInSight();
    const auto chosen = _area->selection();
    return !chosen.isEmpty() && chosen.begin >= sight.begin && chosen.begin < sight.end ? chosen.end : sight.end;
}

void StyledTextView::findTyped()
{
    // A longer word is looked for from where the shorter one was, while what was found is still in sight.
    const auto place = placeInSight();
    if (!_area->showsMatch() || place != _area->selection().end)
        _origin = place;
    find(_origin, TextFinder::Direction::Backward);
}

void StyledTextView::closeBar()
{
    _finder.cancel();
    _bar->hide();
    _area->setFocus();
}

void StyledTextView::find(std::size_t from, TextFinder::Direction direction)
{
    _bar->setNotice({});
    if (_bar->word().isEmpty())
        return _finder.cancel();
    _finder.start(_area->text(), _bar->word(), from, direction);
}

void StyledTextView::findNext()
{
    // One further than the last match's beginning, which may overlap the next one.
    const auto chosen = _area->selection();
    find(chosen.isEmpty() ? _area->stretchInSight().begin : chosen.begin + 1, TextFinder::Direction::Forward);
}

void StyledTextView::findPrevious()
{
    const auto chosen = _area->selection();
    find(chosen.isEmpty() ? placeInSight() : chosen.begin, TextFinder::Direction::Backward);
}

void StyledTextView::showMatch(std::size_t begin, std::size_t end)
{
    _area->selectMatch({begin, end});
}

} // namespace platform::ui
