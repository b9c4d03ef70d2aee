#pragma once

#include <QWidget>

namespace platform::ui {

// The widget behind a stack view, to promote to in interface files. It is a class of its own, so a stack view within
// another one is no plain container.
class StackContainer : public QWidget {
    Q_OBJECT

public:
    explicit StackContainer(QWidget* parent = nullptr);
};

} // namespace platform::ui
