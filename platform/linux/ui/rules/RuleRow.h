#pragma once

#include "platform/ui/RuleEditor.h"

#include <QToolButton>
#include <QWidget>
#include <string>
#include <vector>

namespace platform::ui {

// The widgets of one row in sight: its texts and controls as a sentence, and the two buttons at its end.
class RuleRow : public QWidget {
    Q_OBJECT

public:
    // The row takes the widgets of the values' controls; both views and values outlive it or its dismissal.
    RuleRow(const RuleEditor::DisplayValues& values, QWidget* parent);

    // Gives the controls back and goes away, in its own time, since one of its own buttons may have asked for it.
    void dismiss();

    // `number` counts from 1, for assistive tools.
    void setNumber(int number);
    void setRemovable(bool removable) { _remove->setEnabled(removable); }

    // Where the Tab key stops, in the order of the sentence.
    int numberOfStops() const { return static_cast<int>(_stops.size()); }
    int stopOf(const QWidget* widget) const; // -1 for none of them or in them
    bool isStop(int stop) const;             // and enabled
    void focusStop(int stop, Qt::FocusReason reason);

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void addPressed();
    void removePressed();

private:
    struct Control {
        std::shared_ptr<View> view;
        std::string name;
    };

    void addControl(const std::shared_ptr<View>& view);
    QToolButton* addButton(const QString& text, const char* identifier);

    std::vector<Control> _controls;
    std::vector<QWidget*> _stops;
    QToolButton* _remove;
    QToolButton* _add;
    int _number = 0;
};

} // namespace platform::ui
