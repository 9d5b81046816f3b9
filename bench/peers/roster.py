# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Who is compared."""

import collections

# The program's name after "peer-", its name in tables, the one in the picture where it is drawn there,
# what it does, and how it saves.
Peer = collections.namedtuple("Peer", "program name label works saving")

BOTH = ("read", "change")

OURS = Peer(
    "tallbook", "this library", "this library", BOTH,
    "The whole file, beside it and then in its place; the folder is flushed too. What other "
    "processes saved meanwhile is merged, and once a minute the file before is kept.")
PEERS = (
    OURS,
    Peer("gkeyfile", "GKeyFile", "GKeyFile", BOTH,
         "The whole file, with `G_FILE_SET_CONTENTS_CONSISTENT` and `_DURABLE`; the folder is "
         "flushed too."),
    Peer("kconfig", "KConfig", "KConfig", BOTH,
         "`SimpleConfig`. The whole file, under a lock file, merged with what is there; flushes "
         "the file and its lock file, not the folder."),
    Peer("libplist", "libplist", "libplist", BOTH,
         "Gives bytes and leaves the file to the program, which does what the bare replacement "
         "does."),
    Peer("sqlite-full", "SQLite", "SQLite", BOTH,
         "A page of the table, with a rollback journal and `synchronous` `FULL`."),
    Peer("sqlite-normal", "SQLite, `NORMAL`", None, ("change",),
         "The same with `synchronous` `NORMAL`."),
    Peer("sqlite-wal", "SQLite, WAL", None, ("change",),
         "With a write-ahead log and `synchronous` `FULL`. The log is not folded back into the "
         "table in the time taken."),
    Peer("libaccounts-glib", "libaccounts-glib", "libaccounts-glib", BOTH,
         "SQLite with a write-ahead log that is not flushed. To change an account it reads that "
         "one, not all."),
)

# No peers, but what nobody can be below.
NOTHING = Peer(
    "nothing", "a C++ program that does nothing", "does nothing", ("read",), None)
REPLACEMENT = Peer(
    "replace-file", "a bare replacement of the file", "bare replacement", ("change",),
    "As many bytes as the accounts file has: write, flush, rename, flush of the folder.")
FLOORS = (NOTHING, REPLACEMENT)

EVERYONE = PEERS + FLOORS
