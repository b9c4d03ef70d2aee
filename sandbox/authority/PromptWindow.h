#pragma once

#include <QDialog>

// Asks the person in front of the screen for consent. `accepted` and `rejected` tell the answer.
class PromptWindow : public QDialog {
    Q_OBJECT

public:
    // `asker` names the program that wants the right.
    PromptWindow(const QString& prompt, const QString& asker);
};
