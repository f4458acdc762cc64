"""What the clients that are compared with the library are measured by: the same exchange with the same hearing aid.

A client has `hear(count)`, `connect()` and `ask(frame, answers, service)`. Figures are printed as JSON, one a line.
"""
import binascii
import json
import os
import resource
import time

ADDRESS = "00:AA:01:01:00:01"
# Each service's characteristics to write to and to hear from.
REQUESTS, UPDATE = ("ae01", "ae02"), ("ae3b", "ae3c")
ADVERTISEMENTS, ROUND_TRIPS, IMAGE_SIZE = 1000, 1500, 65536
LONGEST_FRAME, FRAME_AROUND_IMAGE = 261, 10


def uuid(short):
    return "0000%s-0000-1000-8000-00805f9b34fb" % short


def frame(command, first, second, payload=b""):
    summed = bytes([0x68, command, 2 + len(payload), first, second]) + payload
    return b"\xfe" + summed + bytes([sum(summed) & 0xFF, 0x16])


def figure(name, value, unit):
    print(json.dumps({"name": name, "value": value, "unit": unit}), flush=True)


class Meter:
    """The time, and the time of this process's on the processor, since it was made; in milliseconds."""

    def __init__(self):
        self.start, self.cpu_start = time.monotonic(), self.used()

    @staticmethod
    def used():
        usage = resource.getrusage(resource.RUSAGE_SELF)
        return usage.ru_utime + usage.ru_stime

    def elapsed(self):
        return (time.monotonic() - self.start) * 1000

    def cpu(self):
        return (self.used() - self.cpu_start) * 1000


async def update(client):
    image = os.urandom(IMAGE_SIZE)
    room = min(LONGEST_FRAME, client.longest_write()) - FRAME_AROUND_IMAGE
    packets = [image[at:at + room] for at in range(0, len(image), room)]
    size_and_sum = len(image).to_bytes(4, "little") + binascii.crc_hqx(image, 0).to_bytes(2, "little")
    await client.ask(frame(0x1D, 0x91, 1, size_and_sum + bytes(2) + room.to_bytes(2, "little")), 2, UPDATE)
    meter = Meter()
    for number, packet in enumerate(packets, 1):
        await client.ask(frame(0x1D, 0x91, 2, number.to_bytes(2, "little") + packet), 1, UPDATE)
    figure("updatePacket", meter.elapsed() / len(packets), "ms")
    figure("updateThroughput", len(image) / meter.elapsed(), "kB/s")


async def measure(client):
    meter = Meter()
    await client.hear(ADVERTISEMENTS)
    figure("cpuPerThousandAdvertisements", meter.cpu() * 1000 / ADVERTISEMENTS, "ms")

    read_volume = frame(0x11, 1, 4)
    meter = Meter()
    await client.connect()
    await client.ask(read_volume, 1, REQUESTS)
    figure("connectToFirstReply", meter.elapsed(), "ms")

    meter = Meter()
    for _ in range(ROUND_TRIPS):
        await client.ask(read_volume, 1, REQUESTS)
    figure("requestsPerSecond", ROUND_TRIPS * 1000 / meter.elapsed(), "1/s")
    figure("cpuPerRoundTrip", meter.cpu() / ROUND_TRIPS, "ms")
    await update(client)
