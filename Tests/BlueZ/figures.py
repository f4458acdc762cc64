#!/usr/bin/env python3
"""The speed of the library over BlueZ, beside plain calls of the bus and another library: `figures.py PROGRAM`.

PROGRAM measures the library. It is run with nothing but a hearing aid, X1-L, in the air, and prints a JSON object
{"name", "value", "unit"} a line, as the other two do. Nothing here fails for being slow.
"""
import json
import os
import subprocess
import sys

from served import Radio, Served, World, start_afresh

FIGURES = {
    "connectToFirstReply": "connect to the first reply",
    "requestsPerSecond": "requests, pauses left out",
    "cpuPerRoundTrip": "processor time of a round trip",
    "updatePacket": "a packet of an update",
    "updateThroughput": "an update",
    "cpuPerThousandAdvertisements": "processor time of 1000 advertisements",
}
ATTEMPTS = 3  # bleak stumbles over a link that fails at once; what is measured has to go well
HERE = os.path.dirname(os.path.abspath(__file__))
PROGRAMS = {
    "library": [sys.argv[1]],
    "plain calls": [HERE + "/figures_plain.py"],
    "bleak": [HERE + "/figures_bleak.py"],
}


def figures_of(program):
    """Its figures by name; none of a program that has not been built."""
    if not os.path.exists(program[0]):
        print("%s: not built" % program[0])
        return {}
    for _ in range(ATTEMPTS):
        start_afresh()
        with Served(World("/tmp/figures.json", "X1-L")):
            try:
                run = subprocess.run(program, stdout=subprocess.PIPE, text=True, timeout=80)
            except subprocess.TimeoutExpired as late:
                sys.exit("%s does not end; so far it said:\n%s" % (program[0], (late.stdout or b"").decode()))
        if run.returncode == 0:
            return {one["name"]: one for one in map(json.loads, run.stdout.splitlines())}
    sys.exit("%s: exit code %d, %d times" % (program[0], run.returncode, ATTEMPTS))


def line(name, results):
    values = [figures.get(name, {}).get("value") for figures in results]
    unit = next((figures[name]["unit"] for figures in results if name in figures), "")
    cells = ["%.2f" % value if value is not None else "-" for value in values]
    cells += ["%.2f" % (values[0] / value) if values[0] is not None and value else "-" for value in values[1:]]
    return "%-44s" % ("%s (%s)" % (FIGURES.get(name, name), unit)) + "".join("%14s" % cell for cell in cells)


# A hundred times a second: a thousand of them are to be heard by each program.
Radio("interval").set("10")
results = [figures_of(program) for program in PROGRAMS.values()]
others = list(PROGRAMS)[1:]
print(" " * 44 + "".join("%14s" % title for title in [*PROGRAMS, *("/ " + other for other in others)]))
for name in dict.fromkeys([*FIGURES, *(name for figures in results for name in figures)]):
    print(line(name, results))
