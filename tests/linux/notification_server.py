#!/usr/bin/python3
"""A notification server that shows nothing and writes down what it is given, one JSON document a line.

The first line of all is the address of the bus. Lines read from standard input answer: "choose NUMBER KEY" for an
action, "close NUMBER REASON" for the end of a notification; "leave" takes the server off the bus, writes "left", and
"return CAPABILITY ..." puts a new one there. Capabilities are the arguments.
"""

import json
import os
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"


class Server(dbus.service.Object):
    def __init__(self, bus, capabilities):
        super().__init__(bus, "/org/freedesktop/Notifications")
        self.capabilities = capabilities
        self.count = 0

    @dbus.service.method(NAME, out_signature="as")
    def GetCapabilities(self):
        return dbus.Array(self.capabilities, signature="s")

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, application, replaced, icon, title, body, actions, hints, timeout):
        if not replaced:
            self.count += 1
        number = int(replaced) or self.count
        print(json.dumps([number, title, body, *actions, timeout], ensure_ascii=False), flush=True)
        return dbus.UInt32(number)

    @dbus.service.method(NAME, in_signature="u")
    def CloseNotification(self, number):
        print(json.dumps([int(number), "taken back"]), flush=True)

    @dbus.service.signal(NAME, signature="us")
    def ActionInvoked(self, number, key):
        pass

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, number, reason):
        pass


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    name = dbus.service.BusName(NAME, bus)
    server = Server(bus, sys.argv[1:])
    loop = GLib.MainLoop()

    def hear(*_):
        lines = os.read(sys.stdin.fileno(), 4096).decode().splitlines()
        if not lines:
            loop.quit()
            return False
        for words in map(str.split, lines):
            if words[0] == "choose":
                server.ActionInvoked(int(words[1]), words[2])
                server.NotificationClosed(int(words[1]), 3)
            elif words[0] == "close":
                server.NotificationClosed(int(words[1]), int(words[2]))
            elif words[0] == "leave":
                bus.release_name(NAME)
                print(json.dumps("left"), flush=True)
            else:
                server.capabilities, server.count = words[1:], 0
                bus.request_name(NAME)
        return True

    GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, hear)
    print(os.environ["DBUS_SESSION_BUS_ADDRESS"], flush=True)
    loop.run()
    del name


if __name__ == "__main__":
    main()
