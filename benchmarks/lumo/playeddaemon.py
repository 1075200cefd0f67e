# SPDX-License-Identifier: Apache-2.0
"""The connection daemon as the benchmarks play it: it answers at once, and says what it is told to say."""
import dbus.bus
import dbus.lowlevel

NAME, PATH = "org.orva.lumod", "/org/orva/lumod"


class PlayedDaemon:
    def __init__(self, address, details=None, commanded=lambda command: None):
        """The details of each interface by its name; `commanded` hears of each command."""
        self.details, self.commanded = details or {}, commanded
        self.bus = dbus.bus.BusConnection(address)
        self.bus.add_message_filter(self.answer)
        self.bus.request_name(NAME)

    def answer(self, _bus, message):
        if message.get_type() != dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL or message.get_path() != PATH:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        if not message.get_no_reply():
            reply = dbus.lowlevel.MethodReturnMessage(message)
            if message.get_member() == "InterfaceDetails":
                reply.append(self.details.get(message.get_args_list()[0], {}), signature="a{sv}")
            elif message.get_member() == "Get":
                reply.append("NormalMode", signature="v")
            self.bus.send_message(reply)
        self.commanded(message.get_member())
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    def say(self, member, *arguments, signature=""):
        signal = dbus.lowlevel.SignalMessage(PATH, NAME, member)
        signal.append(*arguments, signature=signature)
        self.bus.send_message(signal)
        self.bus.flush()
