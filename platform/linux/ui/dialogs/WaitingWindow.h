#pragma once

#include <QDialog>
#include <string>

namespace platform::ui {

// Says what is waited for, over every other window. Closing it gives up.
class WaitingWindow final : public QDialog {
    Q_OBJECT

public:
    explicit WaitingWindow(const std::string& text);
};

} // namespace platform::ui
