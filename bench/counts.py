#!/usr/bin/env python3
"""Counts what small programs cost beyond one that does nothing, on a device with ten accounts.

usage: counts.py FOLDER            (the folder of the built programs)
       counts.py FOLDER --renew

Counted are the instructions of the whole process, its system calls, and the symbols and other
places that the dynamic linker fills in. Ends with 1 when a count is more than 5 % above the one in
counts.json, and with 77 where this machine cannot count. After a change that is worth what it costs,
or that saves something, --renew writes the counts of the present build into that file.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TOLERATED = 1.05
CANNOT_COUNT = 77
COUNTS = pathlib.Path(__file__).with_name("counts.json")
ACCOUNTS = "var/mobile/Library/Preferences/com.orvane.tallbook.plist"
# The dynamic linker reads the whole environment, which is to be the same everywhere.
ENVIRONMENT = {"PATH": "/usr/bin:/bin", "LC_ALL": "C"}


def run(*command, **environment):
    result = subprocess.run(command, env=ENVIRONMENT | environment, capture_output=True, text=True)
    if result.returncode != 0:
        print(f"{command[0]} cannot run here: {result.stderr.strip().splitlines()[-1:]}")
        sys.exit(CANNOT_COUNT)
    return result.stderr


def counts(scratch, *command):
    """What one process of the command costs."""
    trace = scratch / "trace"
    instructions = run("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command)
    run("strace", "-f", "-o", str(trace), *command)
    linking = run(*command, LD_DEBUG="statistics")
    relative = re.search(r"relative relocations: (\d+)", linking)
    symbols = re.search(r"final number of relocations: (\d+)", linking)
    return {
        "instructions": int(re.search(r"Collected : (\d+)", instructions)[1]),
        "system calls": len(re.findall(r"^\d+ +\w+\(", trace.read_text(), re.MULTILINE)),
        "symbols": int(symbols[1]),
        "relative relocations": int(relative[1]),
    }


def present_counts(programs, scratch):
    """For each small program what it costs beyond the one that does nothing."""
    root = scratch / "device"
    accounts = root / ACCOUNTS
    subprocess.run([programs / "tallbook-measure", "make", accounts, "10", "0"], check=True)
    first = "00000000-5EED-4ACC-8000-000000000000"
    tool = [programs / "tallbook", "--root", root, "get", first, "Username"]
    nothing = counts(scratch, str(programs / "do-nothing"))
    present = {}
    for name, command in ("cold-start", [programs / "cold-start", root]), ("tallbook get", tool):
        spent = counts(scratch, *map(str, command))
        present[name] = {what: spent[what] - nothing[what] for what in spent}
    return present


def main():
    if len(sys.argv) not in (2, 3) or sys.argv[2:] not in ([], ["--renew"]):
        sys.exit(__doc__)
    for tool in ("valgrind", "strace"):
        if not shutil.which(tool, path=ENVIRONMENT["PATH"]):
            print(f"there is no {tool} on this machine")
            sys.exit(CANNOT_COUNT)
    with tempfile.TemporaryDirectory() as scratch:
        present = present_counts(pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(scratch))
    if sys.argv[2:]:
        COUNTS.write_text(json.dumps(present, indent=2) + "\n")
    agreed = json.loads(COUNTS.read_text())
    grown = 0
    for program, expected in agreed.items():
        for what, most in expected.items():
            count = present[program][what]
            has_grown = count > most * TOLERATED
            grown += has_grown
            verdict = "  GROWN" if has_grown else ""
            print(f"{program + ', ' + what:<40}{count:>10}{most:>10}{verdict}")
    sys.exit(1 if grown else 0)


if __name__ == "__main__":
    main()
