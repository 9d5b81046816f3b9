# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""The same values in the words of Python's plistlib, which reads and writes them on its own.

oracle.py check FILE          fails unless FILE holds the values
oracle.py make FILE FORMAT    writes them, in the format "binary" or "xml"
"""
import datetime
import plistlib
import sys

VALUES = {
    "text": "Grüße \U0001F600",
    "ints": [0, -1, 255, 256, 65536, 2**31, -2**63, 2**63 - 1, 2**64 - 1],
    "reals": [0.5, -1e300],
    "dates": [datetime.datetime(1, 1, 1), datetime.datetime(2014, 3, 7, 14, 5, 9),
              datetime.datetime(4001, 1, 1)],
    "data": bytes([0, 255]),
    "flags": [True, False],
    "many": {f"key {n}": "v" * n for n in range(300)},
    "empty": [{}, [], "", b""],
}
BINARY_ONLY = {"nul": "a\0b", "uid": plistlib.UID(7)}

mode, path = sys.argv[1:3]
if mode == "check":
    with open(path, "rb") as file:
        found = plistlib.load(file)
    wanted = VALUES | BINARY_ONLY
    for key in wanted.keys() | found.keys():
        if found.get(key) != wanted.get(key):
            sys.exit(f"{key}: {found.get(key)!r} instead of {wanted.get(key)!r}")
elif sys.argv[3] == "binary":
    with open(path, "wb") as file:
        plistlib.dump(VALUES | BINARY_ONLY, file, fmt=plistlib.FMT_BINARY, sort_keys=False)
else:
    with open(path, "wb") as file:
        plistlib.dump(VALUES, file, sort_keys=False)
