#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

namespace platform::ui {

// A field for a word to look for, with what one does to look for it.
class FindBar : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(QWidget* parent = nullptr);

    QString word() const;
    // Shows itself with the keyboard in the field and the word selected.
    void open();
    void setNotice(const QString& notice);

Q_SIGNALS:
    void wordEdited();
    void nextRequested();
    void previousRequested();
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addButton(const char* arrow, const char* name, void (FindBar::*signal)());

    QLineEdit* _field;
    QLabel* _notice;
};

} // namespace platform::ui
