#pragma once

#include "platform/linux/ui/entry/TextEdit.h"
#include "platform/ui/TextField.h"

#include <functional>
#include <QLineEdit>

namespace platform::ui {

// A line of text that asks before it takes an edit of the user: typed, pasted, cut, dropped, deleted, composed by an
// input method, undone, redone or made by an assistive tool. All of these pass the toolkit's validation; a validator
// that compares the text before with the text proposed therefore misses none.
class LineEdit : public QLineEdit {
    Q_OBJECT

public:
    using Judge = std::function<bool(const TextEdit&)>;
    using CommandHandler = std::function<bool(TextCommand)>;

    explicit LineEdit(QWidget* parent = nullptr);

    void setJudge(Judge judge) { _judge = std::move(judge); }
    void setCommandHandler(CommandHandler handler) { _handleCommand = std::move(handler); }

    // While an edit is judged, still the text without it.
    const QString& value() const { return _value; }
    // Asks nobody and tells nobody.
    void setValue(const QString& text);

Q_SIGNALS:
    void valueEdited(); // by the user

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Validator;
    struct Caret {
        int position = 0;
        int selectionStart = -1;
        int selectionLength = 0;
    };

    bool allows(const QString& proposed, int positionAfter);
    void textDidChange();
    void takeBack();
    Caret caret() const;
    void restore(const Caret& caret);

    Judge _judge;
    CommandHandler _handleCommand;
    QString _value;
    Caret _caretBefore;
    Caret _caretBeforeDrag;
    bool _refused = false;
    bool _byProgram = false;
};

} // namespace platform::ui
