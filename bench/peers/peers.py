#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Compares this library with others that could keep the same records.

usage: peers.py BUILD DOCS    (the folder of the build, and that of the results)

Measures fresh processes that take turns, and writes tables and a picture of the medians to peers.md
and measures.svg. Ends with 1 when a program fails or reads something else than it should.
"""

import os
import shutil
import subprocess
import sys
import tempfile

import picture
import tables
from contest import Contest, Failure
from machine import described
from roster import PEERS

# How often each program has its turn, by the number of records.
TURNS = {10: 151, 100: 101, 1000: 61, 10000: 21}


def versions_of_peers(programs):
    """{program: version} of the peers that are there; tells who is not."""
    versions = {}
    for peer in PEERS:
        program = os.path.join(programs, "peer-" + peer.program)
        if os.path.exists(program):
            asked = subprocess.run([program, "version"], check=True, capture_output=True, text=True)
            versions[peer.program] = asked.stdout.strip()
        else:
            print(f"{peer.name} is left out: scripts/setup --peers installs it", file=sys.stderr)
    return versions


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    build, docs = sys.argv[1:]
    for tool in ("gnuplot", "strace"):
        if not shutil.which(tool):
            raise Failure(f"{tool} is needed: scripts/setup --peers installs it")
    programs = os.path.join(build, "bin")
    versions = versions_of_peers(programs)
    medians = {"read": {}, "change": {}}
    flushes = None
    # On the disk of the build: a temporary folder may be in memory, where flushing costs nothing.
    with tempfile.TemporaryDirectory(dir=build, prefix="peers-") as folder:
        system = described(build, folder)
        for size, turns in TURNS.items():
            below = os.path.join(folder, str(size))
            os.mkdir(below)
            contest = Contest(programs, below, size)
            for work, figures in medians.items():
                print(f"{work}, {size:,} records, {turns} processes each", flush=True)
                figures[size] = contest.medians(work, turns)
            flushes = flushes or contest.flushes()
    with open(os.path.join(docs, "peers.md"), "w") as page:
        page.write(tables.page(medians, flushes, versions, system, TURNS))
    picture.draw(medians, system, os.path.join(docs, "measures.svg"))


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        sys.exit(f"peers: {failure}")
