#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Counts what small programs cost beyond one that does nothing.

usage: counts.py FOLDER            (the folder of the built programs)
       counts.py FOLDER --renew

Counted are the instructions of the whole process, its allocations and its system calls; of those
that are started all day also the symbols and other places that the dynamic linker fills in. Ends
with 1 when a count is more than 3 % above the one in counts.json, or one of the two is missing, and
with 77 where this machine cannot count what the program that does nothing costs. After a change that
is worth what it costs, or that saves something, --renew writes the counts of the present build into
that file.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TOLERATED = 1.03
CANNOT_COUNT = 77
COUNTS = pathlib.Path(__file__).with_name("counts.json")
FIRST = "00000000-5EED-4ACC-8000-000000000000"
ACCOUNTS = "var/mobile/Library/Preferences/com.orvane.tallbook.plist"
# The dynamic linker reads the whole environment, which is to be the same everywhere.
ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LC_ALL": "C"}


def run(*command, **environment):
    result = subprocess.run(command, env=ENVIRONMENT | environment, capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"{' '.join(command)} ended with {result.returncode}: {result.stderr.strip()}")
    return result.stderr


def counts(scratch, *command, links=False, again=lambda: None):
    """What one process of the command costs. What it does to its device, `again` undoes."""
    trace = scratch / "trace"
    instructions = run("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command)
    again()
    heap = run("valgrind", "--undef-value-errors=no", "--leak-check=no", *command)
    again()
    run("strace", "-f", "-o", str(trace), *command)
    again()
    spent = {
        "instructions": int(re.search(r"Collected : (\d+)", instructions)[1]),
        "allocations": int(re.search(r"usage: ([\d,]+) allocs", heap)[1].replace(",", "")),
        "system calls": len(re.findall(r"^\d+ +\w+\(", trace.read_text(), re.MULTILINE)),
    }
    if links:
        linking = run(*command, LD_DEBUG="statistics")
        symbols = re.search(r"final number of relocations: (\d+)", linking)
        relative = re.search(r"relative relocations: (\d+)", linking)
        spent |= {"symbols": int(symbols[1]), "relative relocations": int(relative[1])}
    return spent


def counts_of_nothing(programs, scratch):
    """What the program costs that does nothing; ends where that cannot be counted here."""
    for tool in ("valgrind", "strace"):
        if not shutil.which(tool, path=ENVIRONMENT["PATH"]):
            print(f"there is no {tool} on this machine")
            sys.exit(CANNOT_COUNT)
    try:
        return counts(scratch, str(programs / "do-nothing"), links=True)
    except SystemExit as reason:
        print(reason)
        sys.exit(CANNOT_COUNT)


def present_counts(programs, scratch, nothing):
    """For each small program what it costs beyond the one that does nothing."""
    present = {}

    def measure(name, *command, **options):
        spent = counts(scratch, *map(str, command), **options)
        present[name] = {what: spent[what] - nothing[what] for what in spent}

    for records in 10, 1000:
        root = scratch / str(records)
        subprocess.run([programs / "tallbook", "init", root], check=True, stdout=subprocess.DEVNULL)
        new = scratch / f"{records} new"
        shutil.copytree(root, new)
        old = scratch / f"{records} old"
        shutil.copytree(root, old)
        make = programs / "tallbook-measure"
        subprocess.run([make, "make", new / ACCOUNTS, str(records), "0"], check=True)
        subprocess.run([make, "make-old", old, str(records)], check=True)

        def restore(before):
            shutil.rmtree(root)
            shutil.copytree(before, root)

        restore(new)
        measure(f"cold start, {records} records", programs / "cold-start", root, links=records == 10)
        for operation in "load", "save", "look-up":
            measure(f"{operation}, {records} records", programs / "one-operation", operation, root,
                    again=lambda: restore(new))
        if records == 10:
            measure("tallbook get", programs / "tallbook", "--root", root, "get", FIRST, "Username",
                    links=True)
        restore(old)
        measure(f"migrate, {records} records", programs / "one-operation", "migrate", root,
                again=lambda: restore(old))
    return present


def by_name(table):
    return {f"{program}, {what}": count for program, spent in table.items() for what, count in spent.items()}


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["--renew"]):
        sys.exit(__doc__)
    programs = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        present = present_counts(programs, scratch, counts_of_nothing(programs, scratch))
    if sys.argv[2:]:
        COUNTS.write_text(json.dumps(present, indent=2) + "\n")
    agreed, present = by_name(json.loads(COUNTS.read_text())), by_name(present)
    wrong = 0
    for name in agreed | present:
        most, count = agreed.get(name), present.get(name)
        verdict = ("MISSING" if most is None or count is None else
                   "GROWN" if count > most * TOLERATED else "")
        wrong += verdict != ""
        print(f"{name:<40}{count!s:>10}{most!s:>10}  {verdict}".rstrip())
    if wrong:
        print(f"{wrong} have grown or are missing. Where that is as it should be, say why and: "
              "bench/counts.py FOLDER --renew")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
