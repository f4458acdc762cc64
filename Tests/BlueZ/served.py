"""What the tests in the guest share: the tool, the hearing aids that it serves, and a count of what was checked."""
import json
import os
import select
import signal
import subprocess
import sys
import threading
import time

LONGEST_LINE = 300  # images are longer
TOOL = os.path.abspath(os.environ["AURISK"])


class Checks:
    """Says what was checked as it goes, and at the end how many failed."""

    def __init__(self):
        self.passed = self.failed = 0

    def __call__(self, holds, what, *details):
        if holds:
            self.passed += 1
            print("ok      ", what, flush=True)
        else:
            self.failed += 1
            print("FAILED  ", what, flush=True)
            for line in "\n".join(map(str, details)).splitlines():
                print("         " + line[:LONGEST_LINE], flush=True)
        return holds

    def same(self, seen, expected, what):
        return self(seen == expected, what, "seen:     %s" % (seen,), "expected: %s" % (expected,))

    def finish(self):
        print("%d checks, %d failed" % (self.passed + self.failed, self.failed), flush=True)
        sys.exit(1 if self.failed else 0)


class Answer:
    """What a command of the tool said, and how it ended."""

    def __init__(self, code, out, error, seconds=0.0):
        self.code, self.out, self.error, self.seconds = code, out, error, seconds

    def __str__(self):
        return "exit code %s after %.1f s\n%s%s" % (self.code, self.seconds, self.out, self.error)


def aurisk(*arguments, limit=60, folder=None):
    start = time.monotonic()
    with subprocess.Popen([TOOL, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True, cwd=folder) as run:
        try:
            out, error = run.communicate(timeout=limit)
        except subprocess.TimeoutExpired:
            run.kill()
            out, error = run.communicate()
    return Answer(run.returncode, out, error, time.monotonic() - start)


def over_the_air(*arguments, **how):
    return aurisk("--backend", "bluez", *arguments, **how)


class World:
    """A file with one of the default hearing aids, whose wearer does nothing by itself."""

    def __init__(self, path, name):
        self.path, self.name = path, name
        if os.path.exists(path):
            os.remove(path)
        made = aurisk("--backend", "sim", "--world", path, "--new-world", "scan", "--duration", "0.1")
        if made.code != 0:
            sys.exit("no world: %s" % made)
        self.change(lambda world: world.update(aids=[aid for aid in world["aids"] if aid["name"] == name], script=[]))

    def read(self):
        with open(self.path) as file:
            return json.load(file)

    def change(self, change):
        world = self.read()
        change(world)
        with open(self.path, "w") as file:
            json.dump(world, file)

    def aid(self):
        return self.read()["aids"][0]


def start_afresh():
    """With a daemon that has met nobody: it remembers the services of a hearing aid, and the next one has the same address."""
    subprocess.run("vmctl stop && rm -rf /var/lib/bluetooth/* && vmctl start", shell=True, check=True)


class Served:
    """The hearing aid of a world on the air, for as long as a `with` lasts; its world is saved at the end."""

    def __init__(self, world, adapter="hci1"):
        self.command = [TOOL, "sim", "--adapter", adapter, "--aid", world.name, "--world", world.path]

    def __enter__(self):
        self.process = subprocess.Popen(self.command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        # It says one line when it can be heard, and ends without where it cannot.
        if not select.select([self.process.stdout], [], [], 20)[0]:
            self.process.kill()
            sys.exit("%s: nothing on the air after 20 s" % " ".join(self.command))
        if not self.process.stdout.readline():
            sys.exit("%s: exit code %d, and nothing on the air" % (" ".join(self.command), self.process.wait()))
        # Whatever else it says is not to stop it when the pipe is full.
        threading.Thread(target=self.process.stdout.read, daemon=True).start()
        return self

    def wearer(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGINT)
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            sys.exit("aurisk sim does not end when it is interrupted")


class Radio:
    """How the guest's radio hears an adapter."""

    def __init__(self, adapter="hci1"):
        self.file = "/run/radio/" + adapter

    def set(self, text):
        with open(self.file, "w") as file:
            file.write(text)

    def reset(self):
        if os.path.exists(self.file):
            os.remove(self.file)
