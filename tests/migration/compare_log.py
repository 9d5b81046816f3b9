# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Compares a migration's log with copies of the files that it is about.

compare_log.py LOG FOLDER: the folder holds one property list for each key of the log, under the
key's name. Ends with 0 when the log is a binary property list of exactly these.
"""

import os
import plistlib
import sys

log_path, folder = sys.argv[1:]
with open(log_path, "rb") as file:
    log = plistlib.load(file, fmt=plistlib.FMT_BINARY)
expected = {}
for name in os.listdir(folder):
    with open(os.path.join(folder, name), "rb") as file:
        expected[name] = plistlib.load(file)
if len(expected) != 4 or log != expected:
    sys.exit(f"the log differs: {log}\nexpected: {expected}")
