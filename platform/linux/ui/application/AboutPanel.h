#pragma once

#include <QDialog>
#include <string>

namespace platform::ui {

// Tells what the application is called and which version runs.
class AboutPanel final : public QDialog {
    Q_OBJECT

public:
    // The one that is open, or a new one.
    static void orderFront(const std::string& version);

private:
    explicit AboutPanel(const std::string& version);
};

} // namespace platform::ui
