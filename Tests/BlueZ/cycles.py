#!/usr/bin/env python3
"""Connecting, asking and disconnecting again and again, with one daemon: each time works, and none leaves anything behind."""
import os
import subprocess

from served import Checks, Served, World, over_the_air

CYCLES = int(os.environ.get("CYCLES", "30"))

check = Checks()


def descriptors_of_the_daemon():
    with open("/run/bluetoothd.pid") as file:
        return len(os.listdir("/proc/%s/fd" % file.read().strip()))


def connected():
    said = subprocess.run(["bluetoothctl", "devices", "Connected"], capture_output=True, text=True).stdout
    return [line for line in said.splitlines() if line.startswith("Device ")]


seconds = []
with Served(World("/tmp/cycles.json", "X1-L")) as aid:
    for cycle in range(CYCLES):
        # What is read was set by another connection: by the tool, or by the wearer while nobody listened.
        volume = cycle % 16
        if cycle % 5 == 4:
            aid.wearer("volume %d" % volume)
        else:
            answer = over_the_air("volume", "set", "X1-L", str(volume))
            check(answer.code == 0, "cycle %d: volume set" % cycle, answer)
        answer = over_the_air("volume", "X1-L")
        check(answer.out == "X1-L  volume %d, program 0\n" % volume, "cycle %d: volume read" % cycle, answer)
        seconds.append(answer.seconds)
        check.same(connected(), [], "cycle %d: nobody is connected" % cycle)
        if cycle == 4:
            level = descriptors_of_the_daemon()
check.same(descriptors_of_the_daemon(), level, "the daemon's descriptors stay level")
print("reading a volume took %.1f s, at most %.1f s" % (sorted(seconds)[CYCLES // 2], max(seconds)))
check.finish()
