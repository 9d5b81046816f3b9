# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Two processes hold the same accounts and save one after the other; both changes must be kept, and a
third process hears of all of them.

Usage: test_clients.py TOOL CLIENT WATCHER MODULE FURNISHER
"""

import os
import plistlib
import shutil
import subprocess
import sys
import tempfile

tool, client, watcher, module, furnisher = sys.argv[1:6]


class Client:
    """One process: it loads at once, and changes and saves when told to go."""

    def __init__(self, root, *changes, log):
        self.process = subprocess.Popen(
            [client, root, *changes], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
            env=os.environ | {"EXAMPLE_NOTIFIER_LOG": log})
        assert self.process.stdout.readline() == "loaded 12 accounts\n"

    def go(self):
        out, _ = self.process.communicate("go\n", timeout=60)
        assert (self.process.returncode, out) == (0, "saved\n"), (self.process.returncode, out)


with tempfile.TemporaryDirectory() as folder:
    root = os.path.join(folder, "device")
    subprocess.run([tool, "init", root], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([sys.executable, furnisher, root, "example.so"], check=True)
    shutil.copy(module, os.path.join(root, "example.so"))
    path = os.path.join(root, "var/mobile/Library/Preferences/com.orvane.tallbook.plist")

    def accounts():
        with open(path, "rb") as file:
            return {record["Identifier"]: record for record in plistlib.load(file)["Accounts"]}

    # Without a baseline a watcher begins with the accounts as they are, and keeps one.
    baseline = os.path.join(folder, "baseline")
    watching = [watcher, root, baseline]
    assert subprocess.run(watching, input="", capture_output=True, text=True, check=True).stdout == ""

    logs = [os.path.join(folder, name) for name in ("first", "second")]
    wanted = accounts()
    first = Client(root, "WORK:DisplayName=1", "WORK:DaysToSync", "GMAIL:DisplayName=1",
                   log=logs[0])
    second = Client(root, "WORK:Username=2", "WORK:New=2", "GMAIL:DisplayName=2", "POP:Port",
                    log=logs[1])
    first.go()
    second.go()

    del wanted["WORK"]["DaysToSync"], wanted["POP"]["Port"]
    wanted["WORK"].update(DisplayName="1", Username="2", New="2")
    wanted["GMAIL"]["DisplayName"] = "2"
    assert accounts() == wanted, accounts()
    assert list(accounts()) == list(wanted), "the order of the records changed"
    subprocess.run([tool, "--root", root, "check"], check=True)

    heard = subprocess.Popen(watching, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    caught_up = [heard.stdout.readline() for _ in range(3)]
    assert sorted(caught_up) == ["look again at GMAIL: DisplayName\n", "look again at POP: Port\n",
                                 "look again at WORK: DisplayName Username New DaysToSync\n"], caught_up
    subprocess.run([tool, "--root", root, "remove", "POP"], check=True)
    forgotten = [heard.stdout.readline() for _ in range(2)]
    assert forgotten == ["forget POP\n", "forget POP-NOTES\n"], forgotten
    rest, _ = heard.communicate("", timeout=60)
    assert (rest, heard.returncode) == ("", 0), (rest, heard.returncode)

    told = [open(log).read().splitlines() for log in logs]
    assert [lines[0] for lines in told] == ["batch of 2:", "batch of 3:"], told
    assert told[1][1].startswith("  changed Gmail GMAIL, enabled before: "), told
