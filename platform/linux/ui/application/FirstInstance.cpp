#include "platform/linux/ui/application/FirstInstance.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <QCryptographicHash>
#include <QDir>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform::ui {

namespace {

constexpr int answerLimit = 3000; // milliseconds; past them the first one is busy, and hears it later
constexpr int attempts = 3;       // the first one may be just about to end
constexpr int waitingStarts = 8;
constexpr std::size_t longestToken = 512;
constexpr std::size_t longestWindow = 64;
constexpr std::size_t longestStartup = 512;
constexpr const char* activationToken = "XDG_ACTIVATION_TOKEN";

struct Address {
    sockaddr_un value{};
    socklen_t length = 0;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&value); }
};

// Without the number of the screen: ":0" and ":0.0" are one display.
QByteArray x11Display()
{
    const auto display = qgetenv("DISPLAY");
    const auto screen = display.indexOf('.', display.lastIndexOf(':'));
    return display.contains(':') && screen >= 0 ? display.left(screen) : display;
}

// A name that needs no file: it is free as soon as its owner is gone, however that ended.
Address instanceAddress()
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const auto& part :
         {QByteArray::number(::getuid()), QDir::homePath().toUtf8(), x11Display(), qgetenv("WAYLAND_DISPLAY")}) {
        hash.addData(part);
        hash.addData(QByteArray(1, '\0'));
    }
    const QByteArray name = "com.zerkolin.brevane.application-" + hash.result().toHex();
    Address address;
    address.value.sun_family = AF_UNIX;
    static_assert(sizeof address.value.sun_path > 100); // and the name is shorter
    std::memcpy(address.value.sun_path + 1, name.constData(), static_cast<std::size_t>(name.size()));
    address.length =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<std::size_t>(name.size()));
    return address;
}

FileDescriptor newSocket()
{
    return FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
}

// Any user may take a name; only one's own processes are listened to.
bool isOwnProcess(int connection)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::getuid();
}

} // namespace

FirstInstance::FirstInstance(const QByteArray& window, const QByteArray& startup)
{
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (listen())
            return;
        if (tellFirst(window, startup)) {
            _isFirst = false;
            return;
        }
    }
}

// False when another one listens.
bool FirstInstance::listen()
{
    const auto address = instanceAddress();
    auto socket = newSocket();
    if (!socket)
        return true;
    if (::bind(socket.get(), address.get(), address.length) != 0)
        return errno != EADDRINUSE;
    if (::listen(socket.get(), waitingStarts) != 0)
        return true;
    _socket = std::move(socket);
    _notifier = std::make_unique<QSocketNotifier>(_socket.get(), QSocketNotifier::Read);
    connect(_notifier.get(), &QSocketNotifier::activated, this, &FirstInstance::accept);
    return true;
}

bool FirstInstance::tellFirst(const QByteArray& window, const QByteArray& startup) const
{
    const auto address = instanceAddress();
    const auto socket = newSocket();
    if (!socket || ::connect(socket.get(), address.get(), address.length) != 0 || !isOwnProcess(socket.get()))
        return false;
    const auto packet = qgetenv(activationToken).left(longestToken) + '\n' + window.left(longestWindow) + '\n'
        + startup.left(longestStartup) + '\n';
    if (::send(socket.get(), packet.constData(), static_cast<std::size_t>(packet.size()), MSG_NOSIGNAL) < 0)
        return false;
    pollfd answer{socket.get(), POLLIN, 0};
    char heard = 0;
    return ::poll(&answer, 1, answerLimit) == 0 || ::recv(socket.get(), &heard, 1, 0) == 1;
}

void FirstInstance::accept()
{
    const int connection = ::accept4(_socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (connection < 0)
        return;
    auto* const notifier = new QSocketNotifier(connection, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier, connection] {
        notifier->setEnabled(false);
        notifier->deleteLater();
        hear(connection);
    });
}

void FirstInstance::hear(int connection)
{
    const FileDescriptor owned(connection);
    std::array<char, longestToken + longestWindow + longestStartup + 3> packet{};
    const auto length = ::recv(connection, packet.data(), packet.size(), 0);
    if (length <= 0 || !isOwnProcess(connection))
        return;
    ::send(connection, "!", 1, MSG_NOSIGNAL);
    const auto lines = QByteArray(packet.data(), length).split('\n');
    const auto token = lines.value(0).trimmed();
    if (!token.isEmpty())
        qputenv(activationToken, token); // read by the toolkit when a window asks for the keyboard
    Q_EMIT startedAgain(lines.value(1), lines.value(2));
}

} // namespace platform::ui
