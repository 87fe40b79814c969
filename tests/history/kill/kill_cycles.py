#!/usr/bin/env python3
"""Kills processes that save readings, again and again, and looks whether anything is lost.

Two processes save into one history at the same time. Each prints a reading's number once it counts as saved, and
is killed (SIGKILL) at a moment of its own. Whatever was printed has to be there afterwards, every file has to be
readable, and no temporary file may be left after the next start.

    kill_cycles.py PROGRAM [--cycles N] [--spread MS] [--seed S]

Without --spread the kill follows at once on a line of output; with it, up to so many milliseconds later, which
reaches every step of a save.
"""

import argparse
import random
import signal
import subprocess
import sys
import tempfile
import time

savers = 2


def numbers(text):
    """Of whole lines; the last one may have been cut by the kill."""
    return [int(line) for line in text.split("\n")[:-1]]


def kill_after(process, lines, delay):
    """Returns all that the process printed before it was killed."""
    read = []
    for _ in range(lines):
        line = process.stdout.readline()
        if not line:
            break
        read.append(line)
    time.sleep(delay)
    process.kill()
    rest = process.stdout.read()  # Not communicate(), which forgets what readline() has read ahead.
    errors = process.stderr.read()
    if process.wait() != -signal.SIGKILL:
        sys.exit(f"a saver ended by itself: {errors}")
    return numbers("".join(read) + rest)


def cycle(program, folder, first, choices, spread):
    """Returns what both savers acknowledged."""
    processes = [
        subprocess.Popen(
            [program, "save", folder, str(first + index), str(savers)],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
        )
        for index in range(savers)
    ]
    acknowledged = []
    for process in processes:
        delay = choices.uniform(0, spread) / 1000 if spread else 0
        acknowledged += kill_after(process, choices.randrange(0, 6), delay)
    return acknowledged


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--cycles", type=int, default=10)
    parser.add_argument("--spread", type=float, default=0)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    choices = random.Random(options.seed)
    acknowledged = set()
    unacknowledged = 0
    with tempfile.TemporaryDirectory(prefix="tidewell-kill-") as folder:
        first = 0
        for number in range(options.cycles):
            acknowledged.update(cycle(options.program, folder, first, choices, options.spread))
            listing = subprocess.run(
                [options.program, "list", folder], capture_output=True, text=True
            )
            if listing.returncode != 0:
                sys.exit(f"cycle {number}: {listing.stderr}")
            there = set(numbers(listing.stdout))
            lost = acknowledged - there
            if lost:
                sys.exit(f"cycle {number}: lost {sorted(lost)}")
            unacknowledged = len(there - acknowledged)
            first = max(there | acknowledged, default=-1) + 1
    if not acknowledged:
        sys.exit("nothing was saved")
    print(
        f"{savers * options.cycles} processes killed in {options.cycles} cycles: "
        f"{len(acknowledged)} acknowledged readings, none lost; {unacknowledged} more were saved"
    )


main()
