#pragma once

#include "tests/platform/ui/User.h"

#include <deque>
#include <QObject>
#include <QPointer>

namespace platform::ui {
class AlertBox;
}

namespace user {

// Sees every alert that shows and answers those for which an answer was prepared.
class AlertWatcher : public QObject {
    Q_OBJECT

public:
    static ShownAlert describe(const platform::ui::AlertBox& box);
    static void answer(platform::ui::AlertBox& box, int buttonIndex);
    static platform::ui::AlertBox* front();

    bool eventFilter(QObject* object, QEvent* event) override;

    struct Answer {
        int button = 0;
        bool ticksCheckBox = false;
    };

    std::deque<Answer> prepared;
    std::function<int(const ShownAlert&)> choose;
    std::vector<ShownAlert> answered;

private:
    void alertDidShow(platform::ui::AlertBox& box);
    static void tick(platform::ui::AlertBox& box);
};

} // namespace user
