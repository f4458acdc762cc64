#!/usr/bin/env python3
"""A hearing aid that `aurisk sim` serves, as a program finds it that knows nothing of this project but the bytes.

It uses bleak, and writes and expects frames as they stand in docs/formats.
"""
import asyncio
import contextlib

from bleak import BleakClient, BleakError, BleakScanner

from exchange import ADDRESS, uuid
from served import Checks, Served, World

REQUESTS, REPLIES, BATTERY, UPDATE, UPDATE_ANSWERS = EVERYTHING = [uuid(short) for short in ("ae01", "ae02", "2a19", "ae3b", "ae3c")]

check = Checks()


class Heard:
    """The notifications of a characteristic, as they come."""

    def __init__(self):
        self.values = asyncio.Queue()

    def __call__(self, _, value):
        self.values.put_nowait(bytes(value))

    async def next(self, seconds=5):
        """The next one in hexadecimal, or none."""
        try:
            return (await asyncio.wait_for(self.values.get(), seconds)).hex()
        except asyncio.TimeoutError:
            return None


async def scan():
    """The device and what it advertises, once both name and manufacturer are known."""
    found = asyncio.get_running_loop().create_future()

    def heard(device, advertisement):
        if device.address == ADDRESS and advertisement.local_name and advertisement.manufacturer_data and not found.done():
            found.set_result((device, advertisement))

    async with BleakScanner(heard, adapter="hci0"):
        return await asyncio.wait_for(found, 20)


@contextlib.asynccontextmanager
async def connection(device):
    """A connection with everything that the hearing aid offers, and the event of its end.

    This version of bleak takes the services to be complete a little before the daemon shows the last of them, stumbles over
    a link that fails at once, and leaves it to its users to try again.
    """
    for attempt in range(1, 6):
        lost = asyncio.Event()
        client = BleakClient(device, lambda _, lost=lost: lost.set(), adapter="hci0")
        try:
            await client.connect()
            if all(client.services.get_characteristic(one) for one in EVERYTHING):
                break
            print("attempt %d: services are missing" % attempt)
        except (BleakError, EOFError) as error:
            print("attempt %d: %s" % (attempt, error or "the connection to the bus has ended"))
        await client.disconnect()
    try:
        yield client, lost
    finally:
        await client.disconnect()


async def talk(client, aid):
    services = {
        service.uuid[4:8]: {one.uuid[4:8]: sorted(one.properties) for one in service.characteristics} for service in client.services
    }
    check.same(services.get("ae30"), {"ae01": ["write", "write-without-response"], "ae02": ["notify"]}, "requests and replies")
    check.same(services.get("180f"), {"2a19": ["notify", "read"]}, "the battery service")
    check.same(services.get("ae3a"), {"ae3b": ["write-without-response"], "ae3c": ["notify"]}, "the update service")

    replies, battery, update_answers = Heard(), Heard(), Heard()
    await client.start_notify(REPLIES, replies)
    exchanges = (
        ("the volume of the first program", "fe68110201048016", "00fe6891030104080916"),
        ("the volume of the second", "fe68110202048116", "00fe6891030204060816"),
        ("the volume of a program that it lacks is refused", "fe68110209048816", "00fe68d10209044816"),
    )
    for what, frame, reply in exchanges:
        for response in False, True:
            await client.write_gatt_char(REQUESTS, bytes.fromhex(frame), response=response)
            check.same(await replies.next(), reply, "%s, written %s response" % (what, "with" if response else "without"))
    await client.write_gatt_char(REQUESTS, bytes.fromhex("fe68110201048116"), response=True)
    check.same(await replies.next(1), None, "a frame with a wrong sum gets no reply")

    check.same((await client.read_gatt_char(BATTERY)).hex(), "54", "the battery level is read")
    await client.start_notify(BATTERY, battery)
    aid.wearer("battery 20")
    check.same(await battery.next(), "14", "the battery level is notified")
    check.same((await client.read_gatt_char(BATTERY)).hex(), "14", "and read again")

    aid.wearer("volume 5")
    check.same(await replies.next(), "00fe689f050105060705" "2416", "the wearer turns the volume")
    aid.wearer("program 1")
    check.same(await replies.next(), "00fe689f050205060705" "2516", "the wearer changes the program")

    await client.stop_notify(REPLIES)
    aid.wearer("volume 6")
    check.same(await replies.next(1), None, "who has unsubscribed hears nothing")


async def update(client):
    """The nine bytes 31 to 39, in one packet."""
    answers = Heard()
    await client.start_notify(UPDATE_ANSWERS, answers)
    for what, frame, expected in (
        ("the image is announced", "fe681d0c910109000000c33100000a002a16", ["00fe689d03910111ab16", "00fe689d03910113ad16"]),
        ("its packet is taken", "fe681d0d91020100313233343536373839" "0316", ["00fe689d03910215b016"]),
        ("it is whole, and installed", "fe681d0291031b16", ["00fe689d03910317b316", "00fe689d03910319b516"]),
    ):
        await client.write_gatt_char(UPDATE, bytes.fromhex(frame), response=False)
        check.same([await answers.next() for _ in expected], expected, what)


async def ends(lost, what):
    try:
        await asyncio.wait_for(lost.wait(), 10)
    except asyncio.TimeoutError:
        pass
    check(lost.is_set(), what)


async def main():
    world = World("/tmp/client.json", "X1-L")
    with Served(world) as aid:
        device, advertisement = await scan()
        manufacturer = {company: data.hex() for company, data in advertisement.manufacturer_data.items()}
        check.same(advertisement.local_name, "X1-L", "it is heard under its name")
        check.same(manufacturer, {0xFEFE: "0a1b2c3d4e5f0806"}, "its manufacturer data is whole")

        async with connection(device) as (client, lost):
            await talk(client, aid)
            aid.wearer("drop")
            await ends(lost, "the hearing aid ends the link")

        device, _ = await scan()
        async with connection(device) as (client, lost):
            replies = Heard()
            await client.start_notify(REPLIES, replies)
            await client.write_gatt_char(REQUESTS, bytes.fromhex("fe68110201048016"), response=False)
            check.same(await replies.next(), "00fe6891030104050616", "a second connection finds what the wearer did in the first")
            await update(client)
            await ends(lost, "it leaves to start its new image")
        await scan()
        check(True, "and is on the air again")

    saved = world.aid()
    check.same((saved["program"], saved["volumes"], saved["battery"]), (1, [5, 6, 7, 5], 20), "the world is saved as it was left")
    check.same(saved["firmware"]["image"], "313233343536373839", "and so is the image")
    check.finish()


asyncio.run(main())
