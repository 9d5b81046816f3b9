# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Runs the migration host on device trees; their files are written and read with plistlib.

Usage: test_tallbook_migrate.py MIGRATE TALLBOOK LIBRARY OTHER-MODULE [unittest arguments]
"""

import fcntl
import json
import os
import plistlib
import re
import resource
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import unittest

MIGRATE = TALLBOOK = LIBRARY = OTHER_MODULE = ""
MIGRATED, NOT_MIGRATED, USAGE, NO_MODULE, NOT_NEEDED, NOT_PRINTED = range(6)

ACCOUNTS = "var/mobile/Library/Preferences/com.orvane.tallbook.plist"
MAIL = "var/mobile/Library/Mail/Accounts.plist"
EXCHANGE = "var/mobile/Library/Preferences/com.orvane.Syncora.plist"
SENTINEL = "var/mobile/Library/Preferences/.removingOldAccounts"
LOCK = "tmp/AccountMigrationInProgress"
COPIES = "var/mobile/Library/Logs/Dorvix"


def dataclasses(names):
    return {"Enabled Dataclasses": ["com.orvane.Dataclass." + name for name in names.split()]}


def account(identifier, kind, class_name, enabled=None, **more):
    record = {"Type": kind, "Class": class_name, "DisplayName": "name of " + identifier}
    if enabled is not None:
        record |= dataclasses(enabled)
    return record | {"Identifier": identifier} | more


def cal_dav(identifier, login, path, host="www.google.com"):
    return account(
        identifier, "CalDAV", "MobileCalDAVAccount",
        CalDAVPrincipalConfiguration={"Login_Key": login, "CalDAV_Server_Key": host},
        CalDAVAccountConfiguration={"CalDAV_PrincipalPath_Key": path})


def version_0():
    nameless = account("", "SMTP", "SMTPAccount", DisplayName="outgoing", Hostname="smtp.example")
    del nameless["Identifier"]
    return {"Version": 0, "Accounts": [
        account("LOCAL", "OnMyDevice", "DeviceLocalAccount"),
        account("old", "Mail", "IMAPAccount", uniqueId="IMAP"),
        account("GMAIL", "Mail", "GmailAccount", Username="ada@gmail.com"),
        cal_dav("CAL", "ada", "/calendar/dav/ada%40gmail.com/user"),
        cal_dav("OTHER-CAL", "bob", "/calendar/dav/bob/user"),
        account("HOSTED", "Veltro", "VeltroAccount", "Mail Notes", IsActive=True,
                ChildAccounts=[account("HOSTED-CAL", "CalDAV", "CalDAVAccount")]),
        account("PRIMARY", "OrvaneAccount", "OAAccount", "DeviceLocator", accountStatus=2,
                DisplayName="Veltro"),
        account("SECOND", "OrvaneAccount", "OAAccount", "Ubiquity", accountStatus=2,
                ChildAccounts=[account("SECOND-MAIL", "Veltro", "VeltroAccount")]),
        account("POP", "Mail", "POPAccount", "", IsActive=False),
        account("UNKNOWN", "Nonsense", "Class"),
        account("LDAP", "LDAP", "LDAPAccount", "ContactsSearch"),
        nameless,
    ]}


def legacy_mail():
    return {
        "DeliveryAccounts": [{"uniqueId": "OUT", "AccountName": "out", "Hostname": "h"}],
        "MailAccounts": [
            {"AccountType": "GmailAccount", "uniqueId": "NEW-GMAIL", "AccountName": "gmail"},
            {"AccountType": "VeltroAccount", "uniqueId": "NEW-HOSTED", "Username": "eve@x",
             "IsActive": True}]}


def legacy_exchange(**more):
    return {"SyncoraAccountsKey": [
        {"SyncoraAccountConfigurationClass": "ExchangeAccount", "SyncoraAccountDescription": "work",
         "SyncoraAccountConfigurationAccountID": "WORK",
         "SyncoraAccountEnabledForCalendar": False} | more]}


# Devices whose accounts meet every step, and their files.
DEVICES = {
    "version 0": {ACCOUNTS: version_0()},
    "version 10": {ACCOUNTS: {"Version": 10, "Accounts": [
        account("SECOND", "OrvaneAccount", "OAAccount", "KeyValue", accountStatus=2,
                ChildAccounts=[account("MAIL", "Veltro", "VeltroAccount")])]}},
    "no version": {ACCOUNTS: {"Accounts": [account("IMAP", "Mail", "IMAPAccount")]}},
    "legacy files alone": {MAIL: legacy_mail(), EXCHANGE: legacy_exchange()},
    "legacy files and accounts": {
        MAIL: legacy_mail(), EXCHANGE: legacy_exchange(), ACCOUNTS: {"Version": 12, "Accounts": [
            account("IMAP", "Mail", "IMAPAccount"), account("OUT", "SMTP", "SMTPAccount"),
            account("OLD", "Exchange", "ExchangeAccount"),
            account("WORK", "Exchange", "ExchangeAccount", DaysToSync=7),
            account("NEW-GMAIL", "Gmail", "GmailAccount"),
            account("YAHOO", "Yahoo", "YahooAccount")]}},
    "a legacy account without a class": {MAIL: legacy_mail(), EXCHANGE: {"SyncoraAccountsKey": [
        legacy_exchange()["SyncoraAccountsKey"][0],
        {"SyncoraAccountConfigurationAccountID": "BAD"}]}},
    "legacy files that hold none": {
        MAIL: b"noise", EXCHANGE: {"SyncoraAccountsKey": 1},
        ACCOUNTS: {"Version": 12, "Accounts": [account("IMAP", "Mail", "IMAPAccount")]}},
    "an interrupted removal": {
        SENTINEL: b"", MAIL: legacy_mail(),
        ACCOUNTS: {"Version": 3, "Accounts": [account("OUT", "SMTP", "SMTPAccount")]}},
    "nothing": {},
}


class HostTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.root = self.device({})

    def device(self, files):
        root = tempfile.mkdtemp(dir=self.folder)
        subprocess.run([TALLBOOK, "init", root], check=True, stdout=subprocess.DEVNULL, timeout=60)
        for path, content in files.items():
            self.write(path, content, root)
        return root

    def path(self, relative, root=None):
        return os.path.join(root or self.root, relative)

    def write(self, relative, content, root=None):
        if not isinstance(content, bytes):
            content = plistlib.dumps(content, fmt=plistlib.FMT_BINARY, sort_keys=False)
        os.makedirs(os.path.dirname(self.path(relative, root)), exist_ok=True)
        with open(self.path(relative, root), "wb") as file:
            file.write(content)

    def accounts(self, root=None):
        with open(self.path(ACCOUNTS, root), "rb") as file:
            return plistlib.load(file)

    def command(self, *arguments, root=None):
        return [MIGRATE, "--root", root or self.root, *arguments]

    def start(self, *arguments, **more):
        return subprocess.Popen(self.command(*arguments), stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=self.environment(), **more)

    def environment(self):
        # One case loads a second library on purpose, which a sanitizer need not report.
        return os.environ | {"LC_ALL": "C.UTF-8", "ASAN_OPTIONS": "detect_odr_violation=0"}

    def migrate(self, *arguments, expect=MIGRATED, root=None):
        """Runs the host and answers its output; the messages go to self.message."""
        done = subprocess.run(self.command(*arguments, root=root), capture_output=True, timeout=60,
                              env=self.environment())
        self.message = done.stderr.decode()
        self.assertEqual(done.returncode, expect, (arguments, done.stdout, self.message))
        return done.stdout.decode()

    def rows(self, *arguments, **more):
        """What became of the accounts, children after their parents."""
        output = self.migrate("--json", *arguments, **more)
        return flat(json.loads(output)["accounts"]) if output else []


def flat(rows, parent=None):
    listed = []
    for row in rows:
        children = row.pop("children")
        listed += [row | {"parent": parent}, *flat(children, row["identifier"])]
    return listed


def words(table):
    """A table's words, the identifiers that a migration made as a dry run shows them."""
    return re.sub("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}", "(new)", table).split()


def as_foretold(told, foretold):
    """Rows of a migration as a dry run shows them: a new identifier is another one every time."""
    news = {row["identifier"] for row in told} - {row["identifier"] for row in foretold}
    return [row | {key: "(new)" for key in ("identifier", "parent") if row.get(key) in news}
            for row in told]


def untouched(folder, entries=None):
    """What lstat and reading, a MiB a file, tell of a tree, without leaving access times behind."""
    entries = {} if entries is None else entries
    status = os.lstat(folder)
    entries[folder] = [getattr(status, "st_" + field) for field in (
        "mode", "ino", "nlink", "uid", "gid", "size", "atime_ns", "mtime_ns", "ctime_ns")]
    if stat.S_ISLNK(status.st_mode):
        # Looking where a link leads is an access that no program can hide, this one neither.
        entries[folder][6] = os.readlink(folder)
    elif stat.S_ISREG(status.st_mode) or stat.S_ISDIR(status.st_mode):
        try:
            opened = os.open(folder, os.O_RDONLY | os.O_NOATIME)
        except PermissionError:
            return entries
        try:
            if stat.S_ISREG(status.st_mode):
                entries[folder].append(os.read(opened, 1 << 20))
            else:
                for name in sorted(os.listdir(opened)):
                    untouched(os.path.join(folder, name), entries)
        finally:
            os.close(opened)
    return entries


def age(folder):
    """Makes every access time one that the kernel would renew."""
    for place, folders, files in os.walk(folder):
        for path in [place, *(os.path.join(place, name) for name in files)]:
            os.utime(path, ns=(10**18, 2 * 10**18), follow_symlinks=False)


class WhatBecameOfTheAccounts(HostTest):
    def test_is_told_for_each_and_foretold_by_a_dry_run_that_leaves_no_trace(self):
        for name, files in DEVICES.items():
            with self.subTest(device=name):
                root = self.device(files)
                age(root)
                before = untouched(root)
                code = NOT_MIGRATED if "BAD" in str(files) else MIGRATED
                foretold = self.rows("--dry-run", root=root, expect=code)
                self.assertEqual(untouched(root), before)
                told = self.rows(root=root, expect=code)
                self.assertEqual(as_foretold(told, foretold), foretold)
                if SENTINEL not in files:
                    self.assertEqual({row["identifier"] for row in told if row["now"] == "in the file"},
                                     {record["Identifier"] for top in self.accounts(root)["Accounts"]
                                      for record in [top, *top.get("ChildAccounts", [])]})

    def test_a_second_migration_changes_no_record(self):
        for name, files in DEVICES.items():
            if SENTINEL in files or "BAD" in str(files):
                continue
            with self.subTest(device=name):
                root = self.device(files)
                self.migrate("--needed", root=root, expect=NOT_NEEDED if name in ("nothing", "no version") else MIGRATED)
                self.assertEqual((self.migrate("--quiet", root=root), self.message), ("", ""))
                records = self.accounts(root)
                self.migrate("--needed", root=root, expect=NOT_NEEDED)
                self.assertEqual([row for row in self.rows(root=root)
                                  if row["steps"] or row["now"] != "in the file"], [])
                self.assertEqual(self.accounts(root), records)

    def test_the_table_shows_children_below_their_parents_and_the_reasons(self):
        self.write(ACCOUNTS, version_0())
        table = self.migrate()
        lines = table.splitlines()
        self.assertRegex(lines[0], "^NAME +TYPE +IDENTIFIER +FROM +NOW +WHAT HAPPENED")
        self.assertRegex(table, "├─name of HOSTED +Veltro +HOSTED +accounts file +in the file .*"
                                "8B117: .*put into name of HOSTED")
        self.assertRegex(table, 'UNKNOWN +accounts file +gone +there is no account type "Nonsense"')
        self.assertRegex(table, " IMAP +.*7A150: .*Identifier changed.*; 7A242: Mail on, Notes on")
        self.assertRegex(lines[-1], "^16 accounts: 13 in the file .*, 3 gone$")
        self.assertIn("Migrating accounts\n", self.message)
        self.assertNotIn("Error", self.message)


class DryRuns(HostTest):
    def test_meet_the_obstacles_of_the_device(self):
        def instead(make):
            def put(path):
                shutil.rmtree(path) if os.path.isdir(path) else os.path.exists(path) and os.remove(path)
                os.makedirs(os.path.dirname(path), exist_ok=True)
                make(path)
            return put

        def link(target):
            return instead(lambda path: os.symlink(target, path))

        def mode(bits):
            return lambda path: os.chmod(path, bits)

        def frozen(flag):
            def put(path):
                done = subprocess.run(["chattr", "+" + flag, path], capture_output=True, timeout=60)
                if done.returncode != 0:
                    self.skipTest(f"chattr +{flag} cannot be had: {done.stderr.decode()}")
                self.addCleanup(subprocess.run, ["chattr", "-" + flag, path], check=True)
            return put

        outside = os.path.join(self.folder, "outside")
        os.mkdir(outside)
        # The superuser is not held up by any mode.
        held = NOT_MIGRATED if os.geteuid() else MIGRATED
        preferences, logs, passwd = os.path.dirname(ACCOUNTS), os.path.dirname(COPIES), "etc/passwd"
        for relative, put, code in [
                (MAIL, instead(os.mkdir), MIGRATED), (MAIL, instead(os.mkfifo), MIGRATED),
                (MAIL, link("/nowhere"), MIGRATED), (MAIL, link("../../../../mail"), MIGRATED),
                (MAIL, link("Accounts.plist"), MIGRATED), (SENTINEL, link("/" + SENTINEL), MIGRATED),
                (os.path.dirname(MAIL), link("Mail"), NOT_MIGRATED),
                (ACCOUNTS, link("./" + os.path.basename(ACCOUNTS)), NOT_MIGRATED),
                (EXCHANGE, instead(os.mkdir), MIGRATED), (SENTINEL, instead(os.mkdir), MIGRATED),
                (COPIES, instead(os.mkfifo), MIGRATED), (COPIES, shutil.rmtree, MIGRATED),
                (logs, shutil.rmtree, MIGRATED), (logs, link(outside), MIGRATED),
                (COPIES + "/AccountMigration", instead(os.mkfifo), MIGRATED),
                (COPIES + "/" + os.path.basename(ACCOUNTS), instead(os.mkdir), MIGRATED),
                (LOCK, instead(os.mkdir), NOT_MIGRATED), (LOCK, link("../mail"), NOT_MIGRATED),
                (os.path.dirname(MAIL), shutil.rmtree, MIGRATED), ("tmp", shutil.rmtree, NOT_MIGRATED),
                (passwd, os.remove, NOT_MIGRATED), (passwd, link("passwd"), NOT_MIGRATED),
                (EXCHANGE, instead(lambda path: os.mknod(path, 0o000)), held),
                (COPIES, mode(0o500), MIGRATED), (os.path.dirname(MAIL), mode(0o000), held),
                (preferences, mode(0o500), held), (preferences, mode(0o000), held),
                (ACCOUNTS, frozen("i"), NOT_MIGRATED), (ACCOUNTS, frozen("a"), NOT_MIGRATED),
                (preferences, frozen("i"), NOT_MIGRATED), (preferences, frozen("a"), NOT_MIGRATED)]:
            with self.subTest(path=relative, code=code):
                self.root = self.device({"mail": legacy_mail(), MAIL + ".unreadable-1": b"", ACCOUNTS: {
                    "Version": 3, "Accounts": [account("IMAP", "Mail", "IMAPAccount"),
                                               account("LDAP", "LDAP", "LDAPAccount")]}})
                put(self.path(relative))
                before = untouched(self.root)
                foretold = words(self.migrate("--dry-run", expect=code))
                self.assertEqual(untouched(self.root), before)
                messages = self.message
                self.assertEqual(words(self.migrate(expect=code)), foretold)
                self.assertEqual(self.message, messages)
                self.assertEqual(os.listdir(outside), [])

    def test_read_the_device_s_facts_and_resources(self):
        self.write("etc/tallbook/HostedService.plist", {"AccountTypeDisplayString": "Cirrus"})
        with open(os.path.join(os.path.dirname(LIBRARY),
                               "../share/tallbook/AccountTypesProperties.plist"), "rb") as file:
            types = plistlib.load(file)
        self.write("usr/share/tallbook/AccountTypesProperties.plist", types | {"Nonsense": {}})
        self.write("usr/share/tallbook/en/DeviceLocalAccount.strings", {})
        self.write(ACCOUNTS, version_0())
        rows = {row["identifier"]: row for row in self.rows("--dry-run")}
        self.assertEqual(rows["PRIMARY"]["name"], "Cirrus")
        self.assertEqual(rows["UNKNOWN"]["now"], "in the file")


class Refusals(HostTest):
    def test_every_outcome_has_its_exit_code(self):
        own = os.path.join(self.folder, "libtallbook.so.1")
        shutil.copy(LIBRARY, own)
        for code, message, *arguments in [
                (USAGE, "", "--nonsense"), (USAGE, "", "more"), (MIGRATED, "", "--help"),
                (MIGRATED, "", "--module", LIBRARY), (MIGRATED, "", "--class", "AccountsDataMigrator"),
                (NO_MODULE, "cannot be loaded", "--module", "/nowhere.so"),
                (NO_MODULE, "no migration plug-in", "--module", OTHER_MODULE),
                (NO_MODULE, "a library of its own", "--module", own),
                (NO_MODULE, 'no class "Nobody"', "--class", "Nobody"),
                (NO_MODULE, "migrates nothing", "--class", "DeviceLocalAccount")]:
            with self.subTest(arguments=arguments):
                self.migrate(*arguments, expect=code)
                self.assertIn(message, self.message)
        self.migrate("--dry-run", root="/nowhere", expect=USAGE)
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.run(self.command(), stdout=full).returncode, NOT_PRINTED)

    def test_an_accounts_file_that_cannot_be_read_is_kept(self):
        for content in [b"", b"noise", [1], {"Version": 3, "Accounts": 1}]:
            with self.subTest(content=content):
                self.root = self.device({ACCOUNTS: content, MAIL: legacy_mail()})
                for arguments in [(), ("--dry-run",), ("--dry-run", "--replace-unreadable")]:
                    self.migrate(*arguments, expect=MIGRATED if len(arguments) > 1 else NOT_MIGRATED)
                    self.assertIn(self.path(ACCOUNTS), self.message)
                    self.assertTrue(os.path.exists(self.path(MAIL)))
                with open(self.path(ACCOUNTS), "rb") as file:
                    original = file.read()
                self.assertEqual(original, content if isinstance(content, bytes) else
                                 plistlib.dumps(content, fmt=plistlib.FMT_BINARY, sort_keys=False))
                self.migrate("--replace-unreadable")
                with open(self.path(ACCOUNTS) + ".unreadable-1", "rb") as file:
                    self.assertEqual(file.read(), original)
                self.assertEqual(self.accounts()["Version"], 12)
        self.root = self.device({})
        os.mkdir(self.path(ACCOUNTS))
        for arguments in [(), ("--dry-run",), ("--replace-unreadable",)]:
            self.migrate(*arguments, expect=NOT_MIGRATED)

    def test_a_save_that_fails_is_no_success(self):
        self.write(MAIL, legacy_mail())
        host = self.start(preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)))
        _, message = host.communicate(timeout=60)
        self.assertEqual(host.returncode, NOT_MIGRATED, message)
        self.assertIn(b"could not be replaced", message)
        self.assertEqual(os.listdir(os.path.dirname(self.path(ACCOUNTS))), [],
                         "a temporary file stayed behind")
        os.remove(self.path("etc/passwd"))
        rows = self.rows(expect=NOT_MIGRATED)
        self.assertIn("could not be replaced", self.message)
        self.assertEqual({row["now"] for row in rows}, {"not saved"})
        self.assertTrue(os.path.exists(self.path(MAIL)))
        self.write(ACCOUNTS, {"Version": 12, "Accounts": [account("YAHOO", "Yahoo", "YahooAccount")]})
        rows = {row["identifier"]: row["now"] for row in self.rows(expect=NOT_MIGRATED)}
        self.assertEqual(rows["YAHOO"], "in the file as before")


    def test_a_file_that_can_be_kept_nowhere_is_not_touched_unasked(self):
        self.write(ACCOUNTS, {"Version": 9, "Accounts": [account("IMAP", "Mail", "IMAPAccount")]})
        os.makedirs(self.path(COPIES + "/com.orvane.tallbook.plist/folder"))
        self.write(os.path.dirname(ACCOUNTS) + "/.tallbook-generations", b"")
        before = self.accounts()
        for dry_run in (["--dry-run"], []):
            self.assertEqual(self.rows(*dry_run, expect=NOT_MIGRATED), [])
            self.assertIn("--without-copy", self.message)
            self.assertEqual(self.accounts(), before)
        self.migrate("--without-copy")
        self.assertEqual(self.accounts()["Version"], 12)


class SeveralHosts(HostTest):
    def test_one_works_and_the_others_find_nothing_to_do(self):
        self.write(MAIL, legacy_mail())
        self.write(EXCHANGE, legacy_exchange())
        hosts = [self.start("--json") for _ in range(4)]
        origins = []
        for host in hosts:
            output, message = host.communicate(timeout=120)
            self.assertEqual(host.returncode, MIGRATED, message)
            origins.append({row["from"] for row in flat(json.loads(output)["accounts"])})
        self.assertEqual(sorted(origins, key=len), [{"accounts file"}] * 3 + [
            {"legacy Exchange file", "legacy mail file", "7A153", "8B117"}])
        self.assertFalse(os.path.exists(self.path(MAIL)) or os.path.exists(self.path(EXCHANGE)))

    def test_say_who_holds_the_migration_s_own_lock(self):
        with open(self.path(LOCK), "wb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            tallbook = [TALLBOOK, "--root", self.root]
            self.assertEqual(subprocess.run([*tallbook, "wait", "--timeout", "0"]).returncode, 1)
            subprocess.run([*tallbook, "--no-wait", "add", "Mail"], check=True, timeout=60)
            waiting = [subprocess.Popen([*tallbook, *command], stderr=subprocess.PIPE)
                       for command in (["wait"], ["add", "Mail"])] + [self.start()]
            for program in waiting:
                self.assertIn(f"process {os.getpid()} (".encode(), program.stderr.readline())
        for program in waiting:
            program.communicate(timeout=60)
            self.assertEqual(program.returncode, 0)

    def test_one_that_is_killed_holds_nobody_up(self):
        self.write(ACCOUNTS, {"Version": 0, "Accounts": [
            account(f"a{number}", "Mail", "IMAPAccount", Filler="x" * 500) for number in range(300)]})
        host = self.start("--verbose")
        # What it logs from here on is more than the pipe holds: it stands still in the middle.
        while host.stderr.readline() != b"Migrating accounts\n":
            self.assertIsNone(host.poll())
        host.kill()
        host.communicate(timeout=60)
        self.assertEqual(host.returncode, -signal.SIGKILL)
        subprocess.run([TALLBOOK, "--root", self.root, "wait"], check=True, timeout=60)
        self.assertEqual({row["from"] for row in self.rows()}, {"accounts file", "7A153"})


if __name__ == "__main__":
    MIGRATE, TALLBOOK, LIBRARY, OTHER_MODULE = sys.argv[1:5]
    del sys.argv[1:5]
    unittest.main()
