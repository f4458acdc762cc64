#!/usr/bin/env python3
"""The figures of plain calls of the bus, from Python."""
import asyncio

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

import exchange

ADAPTER, PROPERTIES, DEVICE, CHARACTERISTIC = (
    "org.bluez.Adapter1", "org.freedesktop.DBus.Properties", "org.bluez.Device1", "org.bluez.GattCharacteristic1")
ADAPTER_PATH = "/org/bluez/hci0"
DEVICE_PATH = ADAPTER_PATH + "/dev_" + exchange.ADDRESS.replace(":", "_")


class PlainCalls:
    """Its calls block, and what is awaited is heard by turns of the main loop."""

    def __init__(self):
        self.bus = dbus.SystemBus()
        self.heard, self.resolved, self.values, self.characteristics = 0, False, {}, {}
        self.bus.add_signal_receiver(self.changed, "PropertiesChanged", PROPERTIES, "org.bluez", path_keyword="path")

    def changed(self, _, properties, __, path):
        if path == DEVICE_PATH:
            self.heard += "ManufacturerData" in properties
            self.resolved |= bool(properties.get("ServicesResolved", False))
        elif "Value" in properties:
            self.values.setdefault(path, []).append(bytes(properties["Value"]))

    def interface(self, path, name):
        return dbus.Interface(self.bus.get_object("org.bluez", path, introspect=False), name)

    @staticmethod
    def until(condition):
        while not condition():
            GLib.MainContext.default().iteration(True)

    async def hear(self, count):
        adapter = self.interface(ADAPTER_PATH, ADAPTER)
        adapter.SetDiscoveryFilter(dbus.Dictionary({"Transport": "le", "DuplicateData": True}, signature="sv"))
        adapter.StartDiscovery()
        self.until(lambda: self.heard >= count)
        adapter.StopDiscovery()

    async def connect(self):
        self.interface(DEVICE_PATH, DEVICE).Connect()
        self.until(lambda: self.resolved)
        objects = self.interface("/", "org.freedesktop.DBus.ObjectManager").GetManagedObjects()
        for path, interfaces in objects.items():
            if CHARACTERISTIC in interfaces and path.startswith(DEVICE_PATH):
                self.characteristics[interfaces[CHARACTERISTIC]["UUID"]] = path

    def characteristic(self, short):
        return self.characteristics[exchange.uuid(short)]

    def longest_write(self):
        path = self.characteristic(exchange.UPDATE[0])
        return int(self.interface(path, PROPERTIES).Get(CHARACTERISTIC, "MTU")) - 3

    async def ask(self, frame, answers, service):
        written, notified = map(self.characteristic, service)
        if notified not in self.values:
            self.values[notified] = []
            self.interface(notified, CHARACTERISTIC).StartNotify()
        heard = self.values[notified]
        heard.clear()
        how = dbus.Dictionary({"type": "command"}, signature="sv")
        self.interface(written, CHARACTERISTIC).WriteValue(dbus.Array(frame, signature="y"), how)
        self.until(lambda: len(heard) >= answers)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
asyncio.run(exchange.measure(PlainCalls()))
