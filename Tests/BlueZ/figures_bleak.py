#!/usr/bin/env python3
"""The figures of bleak, which many programs in Python use."""
import asyncio
import sys

from bleak import BleakClient, BleakScanner
from bleak.exc import BleakError

import exchange


class Bleak:
    def __init__(self):
        self.device, self.client, self.answers = None, None, {}

    async def hear(self, count):
        heard, enough = 0, asyncio.Event()

        def on_advertisement(device, _):
            nonlocal heard
            if device.address == exchange.ADDRESS:
                self.device = device
                heard += 1
                if heard >= count:
                    enough.set()

        async with BleakScanner(on_advertisement, adapter="hci0"):
            await enough.wait()

    async def connect(self):
        """As often as it takes: it may say that it is connected before the services are announced, or lose the next link."""
        while True:
            self.client = BleakClient(self.device, adapter="hci0")
            try:
                await self.client.connect()
                if self.client.services.get_characteristic(exchange.uuid(exchange.UPDATE[1])):
                    return
                await self.client.disconnect()
            except BleakError as error:
                print("bleak: %s" % error, file=sys.stderr)

    def longest_write(self):
        return self.client.services.get_characteristic(exchange.uuid(exchange.UPDATE[0])).max_write_without_response_size

    async def ask(self, frame, answers, service):
        written, notified = service
        if notified not in self.answers:
            queue = self.answers[notified] = asyncio.Queue()
            await self.client.start_notify(exchange.uuid(notified), lambda _, value: queue.put_nowait(value))
        await self.client.write_gatt_char(exchange.uuid(written), frame, response=False)
        for _ in range(answers):
            await self.answers[notified].get()


asyncio.run(exchange.measure(Bleak()))
