#!/usr/bin/python3
"""A connection daemon that does nothing but write down what it is asked, type by type.

Its directory holds: "calls", one line for each start and each call; "delay", seconds to wait before it owns
its name; "crash", present when it is to end right after its start. Its answers use every width of integer. A
test has it say something by Emit(member, argument...), fall silent for some ms by Hang, keep its next answer to
itself by Swallow, answer questions with an error by Fail(its name, or "" for none), and end by Exit."""
import os
import sys
import time

import dbus
import dbus.lowlevel
import dbus.mainloop.glib
from gi.repository import GLib

NAME, PATH = "org.orva.lumod", "/org/orva/lumod"
LETTERS = {dbus.String: "s", dbus.Boolean: "b", dbus.Int32: "i", dbus.Int64: "x", dbus.UInt32: "u"}
DETAILS = {
    "eth0": {"Present": True, "Mac": "02:00:00:00:00:01", "CableStatus": True, "Connected": True,
             "Ips": "10.0.0.2/24", "Dns": "10.0.0.1"},
    "wlan0": {"Present": dbus.Byte(1), "Signal": dbus.Int16(-61), "Frequency": dbus.UInt32(2412),
              "Channel": dbus.Int64(1), "Mac": 7, "Ips": ["10.0.0.9"], "Encryption": "wpa2"},
}


def spell(value):
    if isinstance(value, dbus.Dictionary):
        entries = ", ".join(f"{key}={spell(entry)}" for key, entry in sorted(value.items()))
        text = f"a{{{value.signature}}}({entries})"
    else:
        text = f"{LETTERS[type(value)]}:{value}"
    return "v:" * value.variant_level + text


class Daemon:
    def __init__(self, directory):
        self.directory = directory
        self.bus = dbus.SystemBus(private=True, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        self.loop = GLib.MainLoop()
        self.swallows = False
        self.error = ""
        self.write("start")
        if os.path.exists(self.path("delay")):
            with open(self.path("delay"), encoding="ascii") as delay:
                time.sleep(float(delay.read()))
        self.bus.add_message_filter(self.handle)
        self.bus.request_name(NAME)
        self.emit("Started")
        if os.path.exists(self.path("crash")):
            self.bus.flush()
            os._exit(1)
        self.loop.run()

    def path(self, name):
        return os.path.join(self.directory, name)

    def write(self, line):
        with open(self.path("calls"), "a", encoding="utf-8") as calls:
            calls.write(line + "\n")

    def emit(self, member, *arguments, signature=""):
        signal = dbus.lowlevel.SignalMessage(PATH, NAME, member)
        signal.append(*arguments, signature=signature)
        self.bus.send_message(signal)

    def handle(self, _bus, message):
        if message.get_type() != dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL or message.get_path() != PATH:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        member, arguments = message.get_member(), message.get_args_list()
        reply = dbus.lowlevel.MethodReturnMessage(message)
        if member == "InterfaceDetails" and self.error:
            reply = dbus.lowlevel.ErrorMessage(message, self.error, "told so")
        elif member == "InterfaceDetails":
            reply.append(DETAILS.get(arguments[0], {}), signature="a{sv}")
        elif member == "Get":
            reply.append("NormalMode", signature="v")
        elif member == "Emit":
            self.emit(*arguments, signature=message.get_signature()[1:])
        elif member == "Hang":
            time.sleep(arguments[0] / 1000)
        elif member == "Swallow":
            self.swallows = True
        elif member == "Fail":
            self.error = str(arguments[0])
        elif member == "Exit":
            os._exit(1)
        if member not in ("Emit", "Fail", "Hang", "Get", "Swallow"):
            self.write(f"{member}({', '.join(map(spell, arguments))})")
        swallowed = self.swallows and member == "InterfaceDetails"
        self.swallows = self.swallows and not swallowed
        if not message.get_no_reply() and not swallowed:
            self.bus.send_message(reply)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED


Daemon(sys.argv[1])
