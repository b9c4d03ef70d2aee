#pragma once

#include "platform/ui/Application.h"

#include <QApplication>

namespace platform::ui {

// The toolkit's application, which asks the delegate before it terminates.
class ApplicationInstance : public QApplication {
    Q_OBJECT

public:
    ApplicationInstance(int& argc, char** argv); // they are used as long as it lives

    void setDelegate(std::weak_ptr<ApplicationDelegate> delegate)
    {
        _delegate = std::move(delegate);
        _terminating = false; // it was not asked yet
        _ended = false;
    }
    // From the main loop, once, however often it is asked for.
    void terminateSoon();
    // Without asking: the session or the system wants the process to end.
    void terminateAtOnce();
    // For a further start with this identifier.
    void reopen(const QByteArray& startup);
    void show(const QByteArray& window); // nothing for an empty name

    bool event(QEvent* event) override;

Q_SIGNALS:
    void terminated();

private:
    void terminate();
    void lastWindowDidClose();

    std::weak_ptr<ApplicationDelegate> _delegate;
    bool _terminating = false;
    bool _ended = false;
};

} // namespace platform::ui
