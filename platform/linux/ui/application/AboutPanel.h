#pragma once

#include "platform/ui/Button.h"

#include <memory>
#include <QDialog>
#include <string>
#include <vector>

namespace platform::ui {

// Tells what the application is called, which version runs, and where there is more.
class AboutPanel final : public QDialog {
    Q_OBJECT

public:
    // The one that is open, or a new one.
    static void orderFront(const std::string& version, std::vector<std::shared_ptr<Button>> links);

private:
    AboutPanel(const std::string& version, std::vector<std::shared_ptr<Button>> links);

    std::vector<std::shared_ptr<Button>> _links;
};

} // namespace platform::ui
