"""A stand-in for PackageKit on the system bus that DBUS_SYSTEM_BUS_ADDRESS names.

    packagekit.py BEHAVIOUR...      a method's name, and what it does: "METHOD=error CODE TEXT", "METHOD=package IDENTIFIER",
                                    "METHOD=hang", "METHOD=vanish"; what is not named succeeds

Prints a line when it has the name, and one for each method that is called, with its arguments.
"""
import os
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.PackageKit"
PATH = "/org/freedesktop/PackageKit"
TRANSACTION = NAME + ".Transaction"
SUCCESS, FAILED = 1, 2
AVAILABLE = 2


class Transaction(dbus.service.Object):
    def __init__(self, bus, path, behaviours):
        super().__init__(bus, path)
        self.behaviours = behaviours

    @dbus.service.signal(TRANSACTION, signature="uss")
    def Package(self, info, identifier, summary):
        pass

    @dbus.service.signal(TRANSACTION, signature="us")
    def ErrorCode(self, code, details):
        pass

    @dbus.service.signal(TRANSACTION, signature="uu")
    def Finished(self, status, runtime):
        pass

    def play(self, method, *arguments):
        print(method, *[",".join(map(str, each)) if isinstance(each, list) else int(each) for each in arguments], flush=True)
        GLib.timeout_add(20, self.end, *(self.behaviours.get(method, "").split(" ", 1) + [""])[:2])

    def end(self, what, more):
        if what == "vanish":
            os._exit(0)
        if what == "package":
            self.Package(AVAILABLE, more, "a summary")
        if what == "error":
            code, text = more.split(" ", 1)
            self.ErrorCode(int(code), text)
        if what != "hang":
            self.Finished(FAILED if what == "error" else SUCCESS, 20)

    @dbus.service.method(TRANSACTION, in_signature="b")
    def RefreshCache(self, force):
        self.play("RefreshCache", force)

    @dbus.service.method(TRANSACTION, in_signature="t")
    def GetUpdates(self, filters):
        self.play("GetUpdates", filters)

    @dbus.service.method(TRANSACTION, in_signature="tas")
    def Resolve(self, filters, names):
        self.play("Resolve", filters, list(names))

    @dbus.service.method(TRANSACTION, in_signature="tas")
    def UpdatePackages(self, flags, identifiers):
        self.play("UpdatePackages", flags, list(identifiers))

    @dbus.service.method(TRANSACTION, in_signature="tasbb")
    def RemovePackages(self, flags, identifiers, allows_others, removes_unused):
        self.play("RemovePackages", flags, list(identifiers), allows_others, removes_unused)


class PackageKit(dbus.service.Object):
    def __init__(self, bus, behaviours):
        super().__init__(bus, PATH)
        self.bus = bus
        self.behaviours = behaviours
        self.count = 0

    @dbus.service.method(NAME, out_signature="o")
    def CreateTransaction(self):
        self.count += 1
        path = f"/{self.count}_transaction"
        Transaction(self.bus, path, self.behaviours)
        return dbus.ObjectPath(path)


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SystemBus()
    name = dbus.service.BusName(NAME, bus)
    service = PackageKit(bus, dict(each.split("=", 1) for each in sys.argv[1:]))
    print("ready", flush=True)
    GLib.MainLoop().run()
    del name, service


if __name__ == "__main__":
    main()
