#pragma once

#include "platform/linux/ui/textlayout/TextLineLayout.h"

#include <memory>
#include <optional>
#include <QObject>
#include <QString>
#include <QTimer>

namespace platform::ui {

// Looks for a word in a text without regard to case, from a place to the end and on from the beginning, or the other
// way round. It takes little time per turn of the main loop, however long the text.
class TextFinder : public QObject {
    Q_OBJECT

public:
    enum class Direction { Forward, Backward };

    explicit TextFinder(QObject* parent = nullptr);

    // Forgets an earlier search. Forward takes the first match that begins at the place or after, backward the last one
    // that begins before it.
    void start(std::shared_ptr<const StyledText> text, const QString& word, std::size_t from, Direction direction);
    void cancel();

Q_SIGNALS:
    void found(std::size_t begin, std::size_t end);
    void notFound();

private:
    void search();
    bool searchBlock();
    std::optional<TextStretch> matchIn(TextStretch starts) const;
    std::optional<TextStretch> asciiMatchIn(TextStretch starts) const;
    std::optional<TextStretch> unicodeMatchIn(TextStretch starts) const;

    std::shared_ptr<const StyledText> _text;
    QString _word;
    std::string _bytes; // of the word, in lower case
    bool _isAscii = false;
    Direction _direction = Direction::Forward;
    std::size_t _place = 0; // where the next block begins, or ends when looking backward
    std::size_t _left = 0;  // bytes where a match may still begin
    QTimer _turn;
};

} // namespace platform::ui
