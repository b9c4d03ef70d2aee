#pragma once

#include "platform/FileDescriptor.h"

#include <memory>
#include <QObject>
#include <QSocketNotifier>

namespace platform::ui {

// Makes sure that a user's application runs once on a display. The first one listens at a local socket that only lives
// as long as it does; each further one says there that it was started, with the desktop's permission to come to the
// front, the window that it is to show and its startup identifier, and is not the first.
class FirstInstance final : public QObject {
    Q_OBJECT

public:
    // The window's name is empty when the user just starts the application, the identifier where the launcher has none.
    FirstInstance(const QByteArray& window, const QByteArray& startup);

    // True also where nothing can be found out: better twice than never.
    bool isFirst() const { return _isFirst; }

Q_SIGNALS:
    void startedAgain(const QByteArray& window, const QByteArray& startup);

private:
    bool listen();
    bool tellFirst(const QByteArray& window, const QByteArray& startup) const;
    void accept();
    void hear(int connection);

    FileDescriptor _socket;
    std::unique_ptr<QSocketNotifier> _notifier;
    bool _isFirst = true;
};

} // namespace platform::ui
