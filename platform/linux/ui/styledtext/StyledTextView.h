#pragma once

#include "platform/linux/ui/styledtext/FindBar.h"
#include "platform/linux/ui/styledtext/StyledTextArea.h"
#include "platform/linux/ui/styledtext/TextFinder.h"

#include <QWidget>

namespace platform::ui {

// A styled text with a bar to find words in it, which Ctrl+F opens.
class StyledTextView : public QWidget {
    Q_OBJECT

public:
    explicit StyledTextView(QWidget* parent = nullptr);

    StyledTextArea& area() { return *_area; }

private:
    void openBar();
    std::size_t placeInSight();
    void findTyped();
    void closeBar();
    void find(std::size_t from, TextFinder::Direction direction);
    void findNext();
    void findPrevious();
    void showMatch(std::size_t begin, std::size_t end);

    FindBar* _bar;
    StyledTextArea* _area;
    TextFinder _finder;
    std::size_t _origin = 0; // where a word that is typed is looked for from, upwards
};

} // namespace platform::ui
