# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""The same records, kept by every program that is there."""

import collections
import datetime
import os
import plistlib
import random
import signal
import statistics
import subprocess

from roster import EVERYONE, PEERS

# What takes longer is given up.
SECONDS = 20

# The calls that wait for the disk.
FLUSHING = ("fsync", "fdatasync", "sync_file_range", "msync")

# Milliseconds by the program's own clock and from its start to its end, and peak memory in MiB.
Figures = collections.namedtuple("Figures", "program whole peak")


class Failure(Exception):
    """A program failed, or read something else than it should."""


class TooSlow(Exception):
    """A program was stopped after SECONDS."""


def printed(command, stdin=None):
    """What a program printed, as {name: number}."""
    done = subprocess.run(command, stdin=stdin, capture_output=True, text=True)
    if done.returncode == 128 + signal.SIGALRM:
        raise TooSlow
    if done.returncode != 0:
        raise Failure(f"{' '.join(command)}: {done.stderr.strip() or done.returncode}")
    return {name: int(value) for name, value in map(str.split, done.stdout.splitlines())}


def text_or_number(value):
    """A value as the programs store it."""
    if isinstance(value, list):
        (value,) = value
    if isinstance(value, datetime.datetime):
        return int((value - datetime.datetime(2001, 1, 1)).total_seconds())
    return value if isinstance(value, str) else int(value)


def checksum(records):
    """What the class `Checksum` makes of them."""

    def weight(value):
        return sum(value.encode()) if isinstance(value, str) else value

    return sum(weight(k) * weight(v) for each in records for k, v in each.items()) % 2**64


class Contest:
    """A number of records, kept by each program in a folder of its own below `folder`."""

    def __init__(self, programs, folder, size):
        self._programs = programs
        self._folder = folder
        self._size = size
        self._port = 10000
        self._records = self._make_records()
        self._checksum = checksum(self._records)
        self._everyone = [peer for peer in EVERYONE if os.path.exists(self._program(peer))]
        for peer in list(self._everyone):
            os.mkdir(os.path.join(folder, peer.program))
            if peer in PEERS:
                with open(os.path.join(folder, "records.tsv")) as records:
                    self._run(peer, "make", records)

    def medians(self, work, turns):
        """{program: Figures}, without those that took too long. All take turns, in an order that
        changes, so that nobody always runs after the same one."""
        runs = collections.defaultdict(list)
        order = random.Random(0)
        for _ in range(turns):
            if work == "change":
                self._port += 1
            turn = [peer for peer in self._everyone if work in peer.works]
            order.shuffle(turn)
            for peer in turn:
                runs[peer].append(self._run(peer, work))
        if work == "change":
            self._check_change()
        return {peer.program: Figures(*map(statistics.median, zip(*runs[peer])))
                for peer in runs if peer in self._everyone}

    def flushes(self):
        """{program: how often it flushes a change to the disk}."""
        self._port += 1
        trace = os.path.join(self._folder, "trace")
        counts = {}
        for peer in self._everyone:
            if "change" in peer.works:
                subprocess.run(["strace", "-f", "-qq", "-e", "trace=" + ",".join(FLUSHING),
                                "-o", trace, *self._words(peer, "change")],
                               check=True, capture_output=True)
                with open(trace) as lines:
                    counts[peer.program] = sum(any(call + "(" in line for call in FLUSHING)
                                               for line in lines)
        return counts

    def _program(self, peer):
        return os.path.join(self._programs, "peer-" + peer.program)

    def _words(self, peer, work):
        words = [self._program(peer), work, os.path.join(self._folder, peer.program)]
        if work == "change":
            changed = self._size // 2
            words += [self._records[changed]["Identifier"], str(changed), str(self._port)]
        return words

    def _run(self, peer, work, stdin=None):
        run_once = [os.path.join(self._programs, "run-once"), str(SECONDS)]
        try:
            run = printed(run_once + self._words(peer, work), stdin)
        except TooSlow:
            print(f"{peer.name}: more than {SECONDS} s to {work}, at {self._size:,} records")
            self._everyone.remove(peer)
            return Figures(0, 0, 0)
        if work == "read" and peer in PEERS and run["checksum"] != self._checksum:
            raise Failure(f"{peer.name} reads something else than was stored")
        return Figures(run.get("program", 0) / 1e6, run["whole"] / 1e6, run["peak"] / 1024)

    def _check_change(self):
        """Whether everyone has the last change."""
        self._records[self._size // 2]["PortNumber"] = self._port
        self._checksum = checksum(self._records)
        for peer in list(self._everyone):
            if peer in PEERS:
                self._run(peer, "read")

    def _make_records(self):
        """The records of the other measures, read by a decoder of another maker."""
        plist = os.path.join(self._folder, "records.plist")
        make = os.path.join(self._programs, "tallbook-measure")
        printed([make, "make", plist, str(self._size), "0"])
        with open(plist, "rb") as file:
            stored = next(v for v in plistlib.load(file).values() if isinstance(v, list))
        records = [{key: text_or_number(value) for key, value in each.items()} for each in stored]
        with open(os.path.join(self._folder, "records.tsv"), "w") as file:
            for record in records:
                values = (value for key, value in record.items() if key != "Identifier")
                print(record["Identifier"], *values, sep="\t", file=file)
        return records
