# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""What was measured on."""

import collections
import datetime
import os
import platform
import re
import subprocess

Machine = collections.namedtuple("Machine", "processor memory system kernel compiler disk date")


def first_match(pattern, path):
    with open(path) as file:
        found = re.search(pattern, file.read(), re.MULTILINE)
    return found.group(1).strip() if found else "unknown"


def lines(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\n")


def described(build, folder):
    """The machine, the compiler of the build, and the file system of the folder."""
    compiler = first_match(r"^CMAKE_CXX_COMPILER:\w+=(.*)", os.path.join(build, "CMakeCache.txt"))
    gibibytes = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return Machine(
        processor=f"{first_match(r'^model name.*: (.*)', '/proc/cpuinfo')}, {os.cpu_count()} cores",
        memory=f"{gibibytes:.0f} GiB",
        system=first_match(r'^PRETTY_NAME="?([^"\n]*)', "/etc/os-release"),
        kernel=f"{platform.system()} {platform.release()}",
        compiler=lines(compiler, "--version")[0],
        disk=lines("df", "--output=fstype", folder)[1],
        date=datetime.date.today().isoformat())
