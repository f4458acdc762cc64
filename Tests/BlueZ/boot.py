#!/usr/bin/env python3
"""The first use of the radio after a fresh start works, at the first try."""
from served import Checks, Served, World, over_the_air

check = Checks()
with Served(World("/tmp/boot.json", "X1-L")):
    answer = over_the_air("--log", "info", "X1-L")  # of a failure, the log is shown
told = "volumes             8 6 7 5" in answer.out and "battery             84 %" in answer.out
check(answer.code == 0 and told, "info tells everything after %.1f s" % answer.seconds, answer)
check.finish()
