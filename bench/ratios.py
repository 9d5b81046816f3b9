#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Measures the ratios that the library must keep and prints them with their bounds.

usage: ratios.py FOLDER    (the folder of the built programs)

Ends with 1 when a ratio misses its bound.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

PROCESSES = 31
REPEATS = 3
SHORT_PROCESSES = 301


def figures(*command):
    """What a measuring program printed, as {name: number}."""
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return {name: float(value) for name, value in map(str.split, output.splitlines())}


def against_libplist(measure, compare, work, path):
    """How many times as fast as libplist; the two take turns in fresh processes."""
    ours, theirs = [], []
    for _ in range(PROCESSES):
        ours.append(figures(measure, work, path)[work])
        theirs.append(figures(compare, work, path)[work])
    return statistics.median(theirs) / statistics.median(ours)


def store(measure, records, children=0):
    """Medians of the store's measures over several processes."""
    runs = [figures(measure, "store", str(records), str(children)) for _ in range(REPEATS)]
    return {name: statistics.median(run[name] for run in runs) for name in runs[0]}


def whole_processes(commands):
    """Medians of the time from the start of a process to its end; the commands take turns."""
    with open(os.devnull, "wb") as nowhere:
        def run(command):
            start = time.perf_counter()
            silent = [(os.POSIX_SPAWN_DUP2, nowhere.fileno(), 1)]
            process = os.posix_spawn(command[0], command, {}, file_actions=silent)
            status = os.waitpid(process, 0)[1]
            if status != 0:
                sys.exit(f"{command[0]} failed")
            return time.perf_counter() - start

        rounds = [[run(command) for command in commands] for _ in range(SHORT_PROCESSES)]
    return [statistics.median(times) for times in zip(*rounds)]


def small_device(folder, root):
    """Rows of what programs cost that read ten accounts, against one that does nothing."""
    path = os.path.join(root, "var/mobile/Library/Preferences/com.orvane.tallbook.plist")
    subprocess.run([os.path.join(folder, "tallbook-measure"), "make", path, "10", "0"], check=True)
    first = "00000000-5EED-4ACC-8000-000000000000"
    nothing, reading, getting = whole_processes([
        [os.path.join(folder, "do-nothing")],
        [os.path.join(folder, "cold-start"), root],
        [os.path.join(folder, "tallbook"), "--root", root, "get", first, "Username"]])
    yield "process that reads 10 accounts / one that does nothing", reading / nothing, 1.35, False
    yield "tallbook get, 10 accounts / one that does nothing", getting / nothing, 1.65, False


def migration(measure, kind, accounts):
    """Medians of a migration's measures over several processes."""
    runs = [figures(measure, kind, str(accounts)) for _ in range(REPEATS)]
    return {name: statistics.median(run[name] for run in runs) for name in runs[0]}


def ratios(folder):
    """Rows of (measure, ratio, bound, whether the bound is a minimum)."""
    measure = os.path.join(folder, "tallbook-measure")
    compare = os.path.join(folder, "compare-libplist")
    with tempfile.TemporaryDirectory() as temporary:
        path = os.path.join(temporary, "accounts.plist")
        subprocess.run([measure, "make", path, "1000", "0"], check=True)
        for work, bound in (("decode", 6), ("encode", 5)):
            speed = against_libplist(measure, compare, work, path)
            yield f"{work}, 1,000 records: times as fast as libplist", speed, bound, True
        yield from small_device(folder, os.path.join(temporary, "device"))
    for size, bound in ((10, 1.5), (100, 1.85)):
        run = store(measure, size)
        share = run["save"] / run["replace-barely"]
        yield f"save / bare write, flush, rename, flush, {size} records", share, bound, False
    small, middle, large = (store(measure, size) for size in (1000, 10000, 100000))
    yield "load / decode, 1,000 records", small["load"] / small["decode"], 2, False
    yield "load / decode, 100,000 records", large["load"] / large["decode"], 2, False
    for size, run in (("1,000", small), ("100,000", large)):
        parts = run["load"] + run["encode"] + run["write"]
        yield f"save / (load + encode + write), {size} records", run["save"] / parts, 1.5, False
        share = run["save-changes"] / parts
        yield f"saving changes / (load + encode + write), {size} records", share, 1.6, False
    for work, bound in (("decode", 1.5), ("encode", 2), ("load", 1.5), ("save", 1.5)):
        growth = large[work] / small[work] / 100
        yield f"{work}: time a record, 100,000 / 1,000 records", growth, bound, False
    growth = large["encode"] / middle["encode"] / 10
    yield "encode: time a record, 100,000 / 10,000 records", growth, 1.2, False
    parents = store(measure, 10000, 5)
    fewer = store(measure, 1000, 5)
    growth = parents["load"] / fewer["load"] / 10
    yield "load: time a parent of 5 children, 10,000 / 1,000", growth, 1.5, False
    memory = figures(measure, "memory", "100000", "0")
    yield "peak memory of a load / file, 100,000 records", memory["peak"] / memory["file"], 12, False
    watch = [figures(measure, "watch", "1000") for _ in range(REPEATS)]
    share = statistics.median(run["answer"] / run["load"] for run in watch)
    yield "watcher's answer about one account / load, 1,000 records", share, 1.3, False
    yield "memory of a watcher / of a store, 1,000 records", watch[0]["watcher"] / watch[0]["store"], 1, False
    for kind, name in (("legacy", "legacy files"), ("zero", "version 0")):
        few, many = (migration(measure, kind, count) for count in (1000, 10000))
        growth = many["migration"] / few["migration"] / 10
        yield f"migration of {name}: time an account, 10,000 / 1,000", growth, 1.5, False
        # The report's snapshots of 10,000 accounts do not fit into the caches, which makes its share
        # of the time larger than that of the instructions (1.08).
        for count, run, bound in (("1,000", few, 1.1), ("10,000", many, 1.25)):
            share = run["migration"] / run["loads-and-saves"]
            yield f"migration of {name} / its loads and saves, {count}", share, 1.3, False
            share = run["migration-with-report"] / run["migration"]
            yield f"migration of {name} with a report / without, {count}", share, bound, False
    # Its time is to stay the same; the bound leaves room for the caches' share of it.
    look_up = "picoseconds-a-look-up"
    growth = large[look_up] / small[look_up]
    yield "look-up by identifier, 100,000 / 1,000 records", growth, 1.5, False


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    missed = 0
    print(f"{'measure':<56}{'ratio':>8}  bound")
    for name, ratio, bound, is_minimum in ratios(sys.argv[1]):
        kept = ratio >= bound if is_minimum else ratio <= bound
        missed += not kept
        sign = ">=" if is_minimum else "<="
        print(f"{name:<56}{ratio:>8.2f}  {sign} {bound:g}{'' if kept else '  MISSED'}", flush=True)
    sys.exit(1 if missed else 0)


if __name__ == "__main__":
    main()
