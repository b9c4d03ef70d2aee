#include "sandbox/authority/Authority.h"
#include "sandbox/authority/PolicyFile.h"

#include <cstdio>
#include <cstdlib>
#include <QApplication>

namespace {

int fail(const char* text)
{
    std::fprintf(stderr, "brevane_sandbox_authority: %s\n", text);
    return EXIT_FAILURE;
}

} // namespace

// Ends when it loses its bus.
int main(int count, char** arguments)
{
    QApplication application(count, arguments);
    application.setQuitOnLastWindowClosed(false);
    if (count < 2 || count > 3)
        return fail("usage: brevane_sandbox_authority POLICY-FILE [RULES-FOLDER] (with DBUS_SYSTEM_BUS_ADDRESS set)");
    // Never the machine's own bus.
    auto address = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    if (address.isEmpty())
        return fail("DBUS_SYSTEM_BUS_ADDRESS is not set");
    auto prompts = PolicyFile::promptsInFile(arguments[1]);
    if (!prompts)
        return fail("the policy file cannot be read");

    auto bus = QDBusConnection::connectToBus(address, "sandbox");
    Authority authority(bus, *prompts);
    if (count == 3)
        authority.setRulesFolder(QString::fromLocal8Bit(arguments[2]));
    if (!bus.isConnected() || !authority.serve())
        return fail("there is no bus, or another authority serves it");
    bus.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected", &application,
                SLOT(quit()));
    return application.exec();
}
