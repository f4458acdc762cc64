#!/usr/bin/env python3
"""Every command of the tool with a hearing aid on the air, and once more with its twin in the simulator.

Both start from the same world and get the same commands, so both have to say the same, refusals included, save what belongs
to a radio or to a clock. In the end, the one that was on the air has to be what its twin is.
"""
import os
import re
import select
import subprocess

from served import TOOL, Checks, Radio, Served, World, aurisk, over_the_air, start_afresh

AURISK_RAW = (["raw", "fe68110201048016"], ["raw", "11", "09", "04"])  # a volume, and that of a program that it lacks
PL3_RAW = (["raw", "7e000183"], ["raw", "7e00020010"])  # the battery, and a volume of 16
AIDS = {"X1-L": AURISK_RAW, "Solo-L": AURISK_RAW, "Uno-R": AURISK_RAW, "P3-L": PL3_RAW}

# The device's name follows the words of a command, behind `dsp show` and the like.
COMMANDS = (
    ["scan", "--duration", "2"],
    ["--json", "scan", "--duration", "2"],
    ["info"],
    ["--json", "info"],
    ["volume"],
    ["volume set", "3"],
    ["volume set", "12", "--program", "1"],
    ["program"],
    ["program set", "1"],
    ["program set", "14"],
    ["battery"],
    ["mute", "on"],
    ["dsp show"],
    ["--json", "dsp show"],
    ["dsp export", "fit.json"],
    ["noise set", "strong"],
    ["eq set", "1000=-6"],
    ["dsp import", "fit.json"],
    ["logs"],
    ["profile show"],
    ["transparency set", "7"],
)

WEARER = ("volume 5", "program 2", "battery 20")

# What a radio or a clock has a say in.
OF_THE_MOMENT = tuple(
    (re.compile(pattern, re.MULTILINE), masked)
    for pattern, masked in (
        (r"-?\d+ dBm", "RSSI"),
        (r'"rssi":-?\d+', '"rssi":RSSI'),
        (r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}", "IDENTIFIER"),
        (r"^ +\d+\.\d\d s  ", "TIME  "),
        (r"updated in \d+\.\d s", "updated in TIME"),
        (r"(%, )?\d+\.\d kB/s(, \d+:\d\d left)?", "SPEED"),
        (r"^(  run time( since power-up)?) +\d+$", r"\1 TIME"),
        (r"^( +\d  ) *\d+( +\d+  [.])", r"\1TIME\2"),
        (r" +$", ""),
    )
)

check = Checks()


def lasting(text):
    for pattern, masked in OF_THE_MOMENT:
        text = pattern.sub(masked, text)
    return text


def spelled(command, name):
    """The arguments, with the device behind the command's own words."""
    options = [word for word in command if word.startswith("--")][:1] if command[0].startswith("--") else []
    words = command[len(options):]
    device = [] if words[0] == "scan" else [name]
    return options + words[0].split() + device + words[1:]


class Twins:
    """A hearing aid on the air and its twin, each with a folder for what the tool writes."""

    def __init__(self, name):
        self.name = name
        self.folders = ["/tmp/%s/%s" % (name, place) for place in ("air", "twin")]
        for folder in self.folders:
            os.makedirs(folder)
        self.air, self.twin = (World(folder + "/world.json", name) for folder in self.folders)

    def in_the_simulator(self, *arguments):
        return aurisk("--backend", "sim", "--world", self.twin.path, *arguments, folder=self.folders[1])

    def say_the_same(self, command):
        arguments = spelled(command, self.name)
        seen = over_the_air(*arguments, folder=self.folders[0])
        expected = self.in_the_simulator(*arguments)
        what = "%s (exit code %d, %.1f s)" % (" ".join(arguments), expected.code, seen.seconds)
        alike = all(lasting(getattr(seen, part)) == lasting(getattr(expected, part)) for part in ("out", "error"))
        check(seen.code == expected.code and alike, what, "on the air:", seen, "in the simulator:", expected)

    def files_are_the_same(self, file):
        contents = []
        for folder in self.folders:
            path = os.path.join(folder, file)
            contents.append(open(path).read() if os.path.exists(path) else None)
        check(contents[0] == contents[1], "%s is the same from both" % file, *contents)

    def hear_the_same(self, aid):
        """What the wearer of the one does as its line is written, and that of the twin by the script of its world."""
        seen = []
        with subprocess.Popen(
                [TOOL, "--backend", "bluez", "monitor", self.name, "--duration", "6"], stdout=subprocess.PIPE, text=True) as monitor:
            for action in ("", *WEARER):
                if action:
                    aid.wearer(action)
                if select.select([monitor.stdout], [], [], 8)[0]:
                    seen.append(monitor.stdout.readline())
            seen += monitor.stdout.readlines()

        script = [{"at": 2 + index / 4, "aid": self.name, "action": action} for index, action in enumerate(WEARER)]
        self.twin.change(lambda world: world.update(script=script))
        expected = self.in_the_simulator("monitor", self.name, "--duration", "4")
        self.twin.change(lambda world: world.update(script=[]))
        check.same(lasting("".join(seen)), lasting(expected.out), "monitor tells what the wearer does")

    def are_the_same(self):
        seen, expected = self.air.aid(), self.twin.aid()
        for aid in seen, expected:
            aid.pop("link")
            aid.pop("usage", None)  # counts seconds
        differing = sorted(key for key in seen.keys() | expected.keys() if seen.get(key) != expected.get(key))
        check(not differing, "in the end both are the same", *("%s: %s, and the twin's %s" % (key, seen.get(key), expected.get(key)) for key in differing))


def update(twins):
    image = os.urandom(65536)
    for folder in twins.folders:
        with open(folder + "/image.bin", "wb") as file:
            file.write(image)
    twins.say_the_same(["update", "image.bin"])
    return image.hex()


def a_family(name, raw):
    print("---- " + name)
    start_afresh()
    twins = Twins(name)
    with Served(twins.air) as aid:
        for command in (*COMMANDS, *raw):
            twins.say_the_same(command)
        twins.files_are_the_same("fit.json")
        twins.hear_the_same(aid)
        image = update(twins)
    if "firmware" in twins.air.aid():
        check(twins.air.aid()["firmware"].get("image") == image, "the image has arrived as it was sent")
    twins.are_the_same()


def refuses(code, what, *arguments):
    answer = over_the_air(*arguments)
    one_sentence = answer.error.startswith("aurisk: ") and answer.error.count("\n") == 1
    check(answer.code == code and one_sentence and not answer.out, "%s: exit code %d and a sentence" % (what, code), answer)


def mishaps():
    print("---- mishaps")
    start_afresh()
    world, radio = World("/tmp/mishaps.json", "X1-L"), Radio()
    with Served(world):
        refuses(4, "nobody of this name", "volume", "X9-L")
        radio.set("off")
        refuses(4, "the hearing aid is out of range", "volume", "X1-L")
        radio.reset()
        check(over_the_air("volume", "X1-L").code == 0, "back in range, it answers")
        subprocess.run(["bluetoothctl", "power", "off"], stdout=subprocess.DEVNULL, check=True)
        refuses(3, "the radio is off", "volume", "X1-L")
        subprocess.run(["bluetoothctl", "power", "on"], stdout=subprocess.DEVNULL, check=True)
        check(over_the_air("volume", "X1-L").code == 0, "with the radio on again, it answers")
        refuses(3, "no such adapter", "volume", "X1-L", "--adapter", "hci7")
    subprocess.run(["vmctl", "stop"], check=True)
    refuses(3, "no daemon", "volume", "X1-L")


for one, frames in AIDS.items():
    a_family(one, frames)
mishaps()
check.finish()
