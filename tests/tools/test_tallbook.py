# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Runs the command-line tool on device trees; reads and writes accounts files with plistlib.

Usage: test_tallbook.py PATH-OF-THE-TOOL [unittest arguments]
"""

import datetime
import fcntl
import json
import os
import pathlib
import plistlib
import pty
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import unittest
import xml.etree.ElementTree

TOOL = ""
INTERFACE = os.path.join(os.path.dirname(__file__), "../../tools/bus/com.orvane.Tallbook1.xml")
DONE, NOT_FOUND, USAGE, UNREADABLE, NOT_SAVED, NOT_PRINTED = range(6)
OTHER_USER = 65534


def dataclass(name):
    return "com.orvane.Dataclass." + name


def mail(identifier, **more):
    return {"Identifier": identifier, "Type": "Mail", "Class": "IMAPAccount"} | more


def family():
    child = {"Identifier": "c1", "Type": "CalDAV", "Class": "CalDAVAccount"}
    return [
        mail("m1", DisplayName="Büro", Port=993, **{"Enabled Dataclasses": [dataclass("Mail")]}),
        {"Identifier": "p1", "Type": "OrvaneAccount", "Class": "OrvaneAccount",
         "DisplayName": "Umbrella", "ChildAccounts": [child, dict(child, Identifier="c2")]},
    ]


def is_sanitized(program):
    with open(program, "rb") as file:
        code = file.read()
    return b"__asan_init" in code or b"__tsan_init" in code


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = os.path.join(folder.name, "device")
        self.run_tool("init", self.root, root=None)
        self.path = os.path.join(self.root, "var/mobile/Library/Preferences/com.orvane.tallbook.plist")

    def run_tool(self, *arguments, root="", expect=DONE, limit=None, user=None, output=subprocess.PIPE,
                 given="", **environment):
        """Runs the tool and answers its output; the message goes to self.message. A limit is a
        resource of the process and how much of it there is."""
        of_device = [] if root is None else ["--root", root or self.root]
        done = subprocess.run([TOOL, *of_device, *arguments], stdout=output, stderr=subprocess.PIPE,
                              timeout=60, user=user, input=given.encode(),
                              env=os.environ | {"LC_ALL": "C.UTF-8"} | environment,
                              preexec_fn=limit and (lambda: resource.setrlimit(limit[0], (limit[1],) * 2)))
        self.message = done.stderr.decode()
        self.assertEqual(done.returncode, expect, (arguments, done.stdout, self.message))
        return (done.stdout or b"").decode()

    def as_another_user(self):
        """A user for the superuser, whom nothing is forbidden; the device's files may be read and
        written by them."""
        if os.getuid() != 0:
            return None
        subprocess.run(["chmod", "-R", "a+rwX", os.path.dirname(self.root)], check=True)
        if subprocess.run([TOOL, "--help"], capture_output=True, user=OTHER_USER).returncode != DONE:
            self.skipTest("another user may not run the tool")
        return OTHER_USER

    def terminal(self):
        """Our end and the program's of a terminal."""
        try:
            ends = pty.openpty()
        except OSError as error:
            self.skipTest(f"no terminal can be made: {error}")
        for end in ends:
            self.addCleanup(os.close, end)
        return ends

    def start(self, *arguments):
        return subprocess.Popen([TOOL, "--root", self.root, *arguments], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, text=True)

    def json(self, *arguments, **more):
        return json.loads(self.run_tool("--json", *arguments, **more))

    def write(self, records, path=None, **top):
        with open(path or self.path, "wb") as file:
            plistlib.dump({"Version": 12, "Accounts": records} | top, file,
                          fmt=plistlib.FMT_BINARY)

    def which_file(self):
        status = os.stat(self.path)
        return status.st_ino, status.st_mtime_ns

    def read(self):
        with open(self.path, "rb") as file:
            return plistlib.load(file, fmt=plistlib.FMT_BINARY)["Accounts"]


class Outcomes(ToolTest):
    def test_every_command_answers_with_its_exit_code(self):
        self.write(family())
        for code, *arguments in [
                (DONE, "list"), (DONE, "list", "--type", "Mail"), (NOT_FOUND, "list", "--type", "Gmail"),
                (USAGE, "list", "--type", "Nonsense"), (USAGE,), (USAGE, "frobnicate"),
                (USAGE, "--root", "/nowhere", "list"), (USAGE, "--root", "", "list"), (DONE, "--help"),
                (DONE, "show", "c2"), (NOT_FOUND, "show", "c3"), (USAGE, "show"),
                (DONE, "get", "m1", "Port"), (NOT_FOUND, "get", "m1", "Nothing"),
                (NOT_FOUND, "set", "m9", "Port", "1"), (USAGE, "set", "m1", "Port", "many"),
                (USAGE, "set", "m1", "Type", "Gmail"), (USAGE, "set", "m1", "Class", ""),
                (USAGE, "set", "m1", "port", "143"), (USAGE, "set", "m1", "username", "x"),
                (USAGE, "set", "m1", "", "x"), (DONE, "set", "m1", "Port", "0x3e1"),
                (USAGE, "set", "m1", "Class", "NoMailClass"), (USAGE, "set", "m1", "Key", b"\xff"),
                (NOT_FOUND, "unset", "m1", "Nothing"), (USAGE, "unset", "m1", "Identifier"),
                (USAGE, "enable", "m1", "Nonsense"), (USAGE, "enable", "m1", "Backup"),
                (USAGE, "add", "Nonsense"), (USAGE, "add", "Mail", ""), (USAGE, "list", "more"),
                (DONE, "--version"), (DONE, "help"), (DONE, "help", "set"), (USAGE, "help", "nonsense"),
                (DONE, "get", "m1", "Nothing", "--default", "x"), (DONE, "explain", "m1"),
                (USAGE, "add", "CalDAV", "CalDAVAccount", "--parent", "c1"),
                (NOT_FOUND, "remove", "m9"), (DONE, "types"), (DONE, "types", "Mail"),
                (USAGE, "types", "Nonsense"), (NOT_FOUND, "explain", "m9", "Mail"),
                (NOT_FOUND, "diff", self.path, self.path + ".none"), (DONE, "wait"),
                (USAGE, "init", self.root)]:
            with self.subTest(arguments=arguments):
                self.run_tool(*arguments, expect=code)
        self.assertEqual(self.read(), family(), "a refused command changed the file")

    def test_accounts_are_found_by_what_people_call_them(self):
        self.write([*family(), mail("m12", DisplayName="Workshop"), mail("ABC-1", Username="ada@x")])
        for name, kind, message in [
                ("M1", "Mail", ""), ("büro", "Mail", ""), ("abc", "Mail", ""), ("ADA@X", "Mail", ""),
                ("umbrella", "OrvaneAccount", ""), ("C1", "CalDAV", ""),
                ("", None, "no account is called"), ("Worksop", None, "did you mean Workshop?"),
                ("c", None, "may be any of Umbrella (CalDAV, c1), Umbrella (CalDAV, c2)"), ("m", None, "Büro (Mail, m1)")]:
            with self.subTest(name=name):
                found = self.run_tool("get", name, "Type", expect=DONE if kind else NOT_FOUND).strip()
                self.assertEqual(found, kind or "")
                self.assertIn(message, self.message)
        self.run_tool("remove", "workshop")
        self.assertNotIn("m12", [record["Identifier"] for record in self.read()])

    def test_the_manual_has_the_commands_and_the_options_of_the_help(self):
        manual = os.path.join(os.path.dirname(__file__), "../../docs/man/tallbook.1.scd")
        with open(manual, encoding="utf-8") as file:
            chapters = dict(each.split("\n", 1) for each in re.split("^# ", file.read(), flags=re.MULTILINE)[1:])
        told = dict(each.split("\n", 1) for each in chapters["COMMANDS"].split("\n## ")[1:])

        shared, commands = self.run_tool("--help").split("Subcommands:")
        listed = re.findall(r"^  ([a-z]+) ", commands, re.MULTILINE)
        self.assertEqual(sorted(told), sorted(listed))
        for text, section in [(shared, chapters["OPTIONS"]), *((self.run_tool("help", each), told[each])
                                                                for each in listed)]:
            options = re.findall("^  (?:-h,)?(--[a-z-]+)", text, re.MULTILINE)
            self.assertLessEqual(set(options) - {"--help"}, set(re.findall(r"\*(--[a-z-]+)\*", section)))

    def test_errors_are_json_where_results_are(self):
        self.write([{"Type": "Mail", "Class": "IMAPAccount", "DisplayName": "Anon"}])
        for command in [["list"], ["explain", "Anon"]]:
            self.assertIsNone(self.json(*command)[0]["identifier"], command)
        for code, *arguments in [(NOT_FOUND, "get", "m9", "Port"), (USAGE, "lits"), (USAGE, "get")]:
            self.run_tool("--json", *arguments, expect=code)
            self.assertEqual(json.loads(self.message)["code"], code, arguments)
        self.run_tool("lits", expect=USAGE)
        self.assertIn("did you mean list?", self.message)

    def test_a_device_without_a_file_is_empty_and_gets_one_with_the_first_account(self):
        self.assertEqual(self.json("list"), [])
        self.run_tool("dump", expect=NOT_FOUND)
        identifier = self.run_tool("add", "Gmail", "--name", "Work").strip()
        self.assertEqual([(r["Identifier"], r["DisplayName"]) for r in self.read()],
                         [(identifier, "Work")])

    def test_a_save_that_fails_says_why_and_leaves_the_file(self):
        self.write(family())
        for missing, cause in [
                ("etc/group", 'give the new accounts file to the account and the group "mobile": '
                              "no such group in etc/group"),
                ("etc/passwd", "no such account in etc/passwd")]:
            os.remove(os.path.join(self.root, missing))
            self.run_tool("set", "m1", "Port", "143", expect=NOT_SAVED)
            self.assertIn("is not saved: cannot ", self.message)
            self.assertIn(cause, self.message)
            self.assertEqual(self.read(), family())
        self.run_tool("--verbose", "set", "m1", "Port", "143", expect=NOT_SAVED)
        self.assertIn("Failed to save accounts to filesystem.", self.message)
        folder = os.path.dirname(self.path)
        os.rename(folder, folder + "-")
        self.run_tool("add", "Mail", "IMAPAccount", expect=NOT_SAVED)
        self.assertIn(f"cannot open the folder {folder}: No such file or directory", self.message)
        user = self.as_another_user()
        os.rename(folder + "-", folder)
        os.chmod(folder, 0o555)
        self.run_tool("set", "m1", "Port", "143", expect=NOT_SAVED, user=user)
        os.chmod(folder, 0o755)
        self.assertIn("make a new accounts file: Permission denied; run as mobile", self.message)

    def test_what_is_short_is_told_and_nothing_stays_behind(self):
        self.write([mail(f"m{number}", Filler=str(number) * 5000) for number in range(1500)])
        before = self.read()
        for limit, message in [((resource.RLIMIT_FSIZE, 1 << 20), "File too large"),
                               ((resource.RLIMIT_AS, 100 << 20), "not enough memory")]:
            with self.subTest(message=message):
                if limit[0] == resource.RLIMIT_AS and is_sanitized(TOOL):
                    self.skipTest("a sanitizer takes more address space than there is memory")
                self.run_tool("set", "m1", "Port", "143", expect=NOT_SAVED, limit=limit)
                self.assertIn(message, self.message)
                self.assertEqual(self.read(), before)
                self.assertEqual(os.listdir(os.path.dirname(self.path)), [os.path.basename(self.path)])

    def test_a_result_that_cannot_be_printed_does_not_hide_whether_it_was_saved(self):
        self.write(family())
        with open("/dev/full", "wb") as full:
            for code, *arguments in [(NOT_SAVED, "list"), (NOT_SAVED, "types"),
                                     (NOT_PRINTED, "add", "Mail", "IMAPAccount"),
                                     (NOT_PRINTED, "init", self.root + "-2")]:
                with self.subTest(arguments=arguments):
                    self.run_tool(*arguments, expect=code, output=full)
                    self.assertIn("could not be printed", self.message)
        self.assertEqual(len(self.read()), 3)

    def test_a_wait_for_a_lock_that_cannot_be_made_fails(self):
        os.rmdir(os.path.join(self.root, "tmp"))
        self.run_tool("wait", expect=NOT_SAVED)
        self.assertIn("/tmp/AccountMigrationInProgress", self.message)

    def on_terminal(self, *arguments, width=80, **environment):
        """What the tool prints on a terminal, in the C locale."""
        ours, theirs = self.terminal()
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("4H", 24, width, 0, 0))
        subprocess.run([TOOL, "--root", self.root, *arguments], stdout=theirs, check=True, timeout=60,
                       env=os.environ | {"LC_ALL": "C", "NO_COLOR": "", "TERM": "xterm"} | environment)
        printed = os.read(ours, 1 << 16)
        return printed.decode().replace("\r\n", "\n")

    def test_only_a_terminal_gets_colours(self):
        self.write(family())
        self.write([], self.path + ".other")
        command = ["diff", self.path, self.path + ".other"]
        self.assertNotIn("\x1b", self.run_tool(*command))
        self.assertIn("\x1b[31m", self.on_terminal(*command))
        for variable in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            self.assertNotIn("\x1b", self.on_terminal(*command, **variable))

    def test_tables_fit_a_terminal_and_are_whole_in_a_pipe(self):
        enabled = [dataclass(name) for name in ("Mail", "Contacts", "Calendars", "Notes")]
        long = mail("6f1c22ab-0000-4000-8000-0000000090d1", Type="Yahoo", DisplayName="Büro\n\\x日本",
                    **{"Enabled Dataclasses": enabled, "Evil": "a\x1b[31m\x9bb\nc"})
        self.write([long])
        listed = self.on_terminal("list", width=60)
        for text in ("Büro\\x0a", "6f1c22ab…90d1", "Mail, Contacts,\n", "Notes\n"):
            self.assertIn(text, listed)
        # The letters from Japan take two columns each.
        self.assertTrue(all(len(line) + 2 * line.count("日") <= 60 for line in listed.split("\n")), listed)
        self.assertIn("…", self.on_terminal("list", width=50).split("\n")[1].split(" ")[0])
        self.assertIn(long["Identifier"], self.on_terminal("list", width=200))
        self.assertEqual(self.on_terminal("get", long["Identifier"], "Evil"), "a\\x1b[31m\\x9bb\nc\n")
        for row in (self.run_tool("list", LC_ALL="C"), self.run_tool("list", LC_ALL="de_DE.ISO-8859-1")):
            for text in ("Büro\\x0a", "日本", long["Identifier"], "Mail, Contacts, Calendars, Notes\n"):
                self.assertIn(text, row)
        self.assertEqual(self.run_tool("get", long["Identifier"], "Evil"), long["Evil"] + "\n")


class Manuals(unittest.TestCase):
    def test_the_property_lists_that_they_show_can_be_pasted(self):
        tree = pathlib.Path(__file__).parents[2]
        shown = [text for manual in [*tree.glob("docs/*.md"), *tree.glob("examples/*.md")]
                 for text in re.findall(r"^```xml\n(.*?)^```", manual.read_text(), re.MULTILINE | re.DOTALL)]
        self.assertGreaterEqual(len(shown), 3)
        for text in shown:
            self.assertTrue(plistlib.loads(text.encode()), text)


class UnreadableFiles(ToolTest):
    CONTENTS = {
        "empty": b"", "noise": bytes(range(256)),
        "cut off": plistlib.dumps({"Accounts": family()}, fmt=plistlib.FMT_BINARY)[:-40],
        "no dictionary": plistlib.dumps([1], fmt=plistlib.FMT_BINARY),
        "no list": plistlib.dumps({"Accounts": {"m1": mail("m1")}}, fmt=plistlib.FMT_BINARY),
    }

    def test_no_command_replaces_them(self):
        changes = [("set", "m1", "Port", "1"), ("add", "Mail", "IMAPAccount"), ("remove", "m1"),
                   ("enable", "m1", "Mail"), ("disable", "m1", "Mail"), ("unset", "m1", "Port")]
        for name, content in self.CONTENTS.items():
            with open(self.path, "wb") as file:
                file.write(content)
            for command in [*changes, ("list",), ("check",), ("dump",), ("diff", self.path, self.path)]:
                with self.subTest(file=name, command=command):
                    self.run_tool(*command, expect=UNREADABLE)
                    self.assertIn(self.path, self.message)
            with open(self.path, "rb") as file:
                self.assertEqual(file.read(), content)

    def test_what_may_not_be_read_is_never_replaced(self):
        secret = self.path + ".kept"
        self.write(family(), secret)

        def refused(reason, user=None):
            for command in [("list",), ("check",), ("dump",), ("--replace-unreadable", "remove", "m1"),
                            ("--replace-unreadable", "add", "Mail", "IMAPAccount")]:
                with self.subTest(command=command, reason=reason):
                    self.run_tool(*command, expect=UNREADABLE, user=user)
                    self.assertIn(f"{self.path} cannot be read: {reason}", self.message)

        os.mkdir(self.path)
        refused("Is a directory; move away")
        os.rmdir(self.path)
        os.rename(secret, self.path)
        user = self.as_another_user()
        os.chmod(self.path, 0o600 if user else 0)
        refused("Permission denied; run as mobile", user)
        self.run_tool("diff", self.path, self.path, expect=UNREADABLE, user=user)
        self.assertIn("Permission denied", self.message)
        os.chmod(self.path, 0o600)
        self.assertEqual(self.read(), family())

    def test_xml_that_cannot_be_parsed_for_want_of_the_parser_is_never_replaced(self):
        content = plistlib.dumps({"Version": 12, "Accounts": family()}, fmt=plistlib.FMT_XML)
        with open(self.path, "wb") as file:
            file.write(content)
        with open(os.path.join(self.root, "libexpat.so.1"), "wb"):
            pass  # no library
        for command in [("list",), ("set", "m1", "Port", "1"),
                        ("--replace-unreadable", "add", "Mail", "IMAPAccount")]:
            with self.subTest(command=command):
                self.run_tool(*command, expect=UNREADABLE, LD_LIBRARY_PATH=self.root)
                self.assertIn(f"{self.path} cannot be read: libexpat.so.1", self.message)
        with open(self.path, "rb") as file:
            self.assertEqual(file.read(), content)
        self.assertEqual(self.run_tool("get", "m1", "Port"), "993\n")

    def test_they_are_replaced_on_demand_after_a_copy_of_each(self):
        for number, content in enumerate([b"first", b"second"], start=1):
            with open(self.path, "wb") as file:
                file.write(content)
            self.run_tool("--replace-unreadable", "add", "Mail", "IMAPAccount")
            self.assertEqual(len(self.read()), 1)
            with open(f"{self.path}.unreadable-{number}", "rb") as file:
                self.assertEqual(file.read(), content)


class Changes(ToolTest):
    def test_typed_values_arrive_as_other_programs_read_them(self):
        self.write([mail("m1", Port=993, Kept=plistlib.UID(7))])
        date = datetime.datetime(4001, 1, 1, 12, 30)
        for kind, text, value in [
                ("string", "993", "993"), ("integer", "18446744073709551615", 2**64 - 1),
                ("integer", "-9223372036854775808", -2**63), ("real", "0.1", 0.1),
                ("integer", "-0x10", -16), ("boolean", "true", True), ("boolean", "off", False),
                ("date", "4001-01-01T14:00:00+01:30", date), ("date", "4001-01-01T10:30:00-02:00", date), ("data", "AP8=", b"\0\xff"), ("uid", "5", plistlib.UID(5)),
                ("date", "4001-01-01T12:30:00Z", date), ("json", '{"a": [1, 2.0, "ü\\u0000"]}',
                                                       {"a": [1, 2.0, "ü\0"]}),
                ("json", '{"$data": "AQI="}', b"\1\2")]:
            with self.subTest(kind=kind, text=text):
                self.run_tool("set", "m1", "K", "--type", kind, text)
                stored = self.read()[0]["K"]
                self.assertEqual((type(stored), stored), (type(value), value))
                # What get prints as JSON is what set takes.
                again = self.run_tool("--json", "get", "m1", "K")
                self.run_tool("set", "m1", "Copy", "--type", "json", "--", again)
                self.assertEqual(self.read()[0]["Copy"], value)
        self.run_tool("set", "m1", "Port", "143")
        for key, value, hint in [("New", "143", "--type integer"), ("Off", "off", "--type boolean"),
                                 ("DisplayName", "143", ""), ("port", "text", "")]:
            self.run_tool("set", "m1", key, "--new-key", "-", given=value + "\n")
            self.assertIn(hint, self.message)
            self.assertEqual(bool(self.message), bool(hint))
        self.run_tool("unset", "m1", "K")
        record = self.read()[0]
        self.assertEqual((record["Port"], record["New"], record["Kept"]), (143, "143", plistlib.UID(7)))
        self.assertNotIn("K", record)
        for kind, text, told in [("boolean", "maybe", "yes, no, on or off"), ("json", '{"a":\n tru}', "line 2, column 5"),
                                 ("integer", "1e3", "0x1F"), ("date", "today", "+01:00")]:
            self.run_tool("set", "m1", "Port", "--type", kind, text, expect=USAGE)
            self.assertIn(told, self.message)
        self.run_tool("set", "m1", "ChildAccounts", "5", expect=USAGE)
        saved = self.which_file()
        self.run_tool("set", "m1", "Port", "143")
        self.assertEqual(self.which_file(), saved, "the value that was there was saved again")

    def test_children_change_in_their_place(self):
        self.write(family())
        self.run_tool("set", "c1", "DisplayName", "First")
        added = self.run_tool("add", "CardDAV", "CardDAVAccount", "--parent", "p1").strip()
        self.run_tool("remove", "c2")
        children = self.read()[1]["ChildAccounts"]
        self.assertEqual([(c["Identifier"], c.get("DisplayName")) for c in children],
                         [("c1", "First"), (added, None)])
        shown = self.json("list")[1]
        self.assertEqual([c["identifier"] for c in shown["children"]], ["c1", added])

    def test_records_without_identifier_change_as_others_do(self):
        child = {"Type": "CalDAV", "Class": "CalDAVAccount", "DisplayName": "Kid"}
        for command in [["set", "Kid", "Port", "1"], ["edit", "Kid"], ["remove", "Kid"]]:
            for records in [[mail("m1", ChildAccounts=[child])], [child]]:
                with self.subTest(command=command, records=records):
                    self.write(records)
                    self.run_tool(*command, VISUAL="sed -i 's/{/{ \"Port\": \"1\",/'")
                    records = self.read()
                    left = records[0]["ChildAccounts"] if records and "ChildAccounts" in records[0] else records
                    self.assertEqual([each["Port"] for each in left], [] if command[0] == "remove" else ["1"])

    def test_there_is_one_on_device_account(self):
        self.run_tool("add", "OnMyDevice", "DeviceLocalAccount")
        self.run_tool("add", "OnMyDevice", "DeviceLocalAccount", expect=USAGE)
        self.assertEqual([r["Identifier"] for r in self.read()], ["DeviceLocalAccount"])

    def test_dataclasses_are_switched_and_explained(self):
        self.write(family())
        self.run_tool("enable", "m1", "notes")
        self.run_tool("disable", "m1", dataclass("Mail"))
        self.assertEqual(self.read()[0]["Enabled Dataclasses"], [dataclass("Notes")])
        self.run_tool("set", "p1", "--type", "json", "Provisioned Dataclasses",
                      json.dumps([dataclass("Mail"), dataclass("Backup")]))
        self.run_tool("enable", "p1", "Mail")
        self.run_tool("enable", "p1", "Contacts")
        self.assertIn("stays off", self.message)
        os.makedirs(os.path.join(self.root, "etc/tallbook"))
        with open(os.path.join(self.root, "etc/tallbook/Restrictions.plist"), "wb") as file:
            plistlib.dump({"CloudBackup": 2}, file)
        for identifier, name, on, reason in [
                ("m1", "Notes", True, "enabled"), ("m1", "Mail", False, "disabled"),
                ("m1", "Backup", False, "unsupported"), ("p1", "Contacts", False, "unprovisioned"),
                ("p1", "Backup", False, "restricted"), ("c1", "Calendars", False, "parent"), ("c1", "Mail", True, "parent")]:
            with self.subTest(identifier=identifier, name=name):
                answer = self.json("explain", identifier, name)
                self.assertEqual((answer["on"], answer["reason"]), (on, reason))


    def test_an_upgrade_is_given_up_only_on_demand(self):
        for version, code in [(7, USAGE), (11, USAGE), (12, DONE), (13, DONE), (-1, DONE), ("7", DONE)]:
            with self.subTest(version=version):
                self.write(family(), Version=version)
                for command in [("set", "m1", "Port", "143"), ("add", "Mail", "IMAPAccount"),
                                ("remove", "c2"), ("disable", "m1", "Mail"), ("unset", "m1", "Port")]:
                    self.run_tool(*command, expect=code)
                    if code == USAGE:
                        self.assertIn("run tallbook-migrate first", self.message)
                        self.assertEqual(self.read(), family())
                        self.run_tool(*command, "--give-up-upgrade")
                        self.write(family(), Version=version)
                self.run_tool("list")


class GoingBack(ToolTest):
    def generations(self):
        return [each["generation"] for each in self.json("history")]

    def test_a_generation_comes_back_and_that_can_be_undone(self):
        self.write(family())
        self.run_tool("set", "m1", "DisplayName", "Office")
        self.run_tool("remove", "c1")
        self.run_tool("remove", "m1")
        # What follows within a minute belongs to the same burst.
        [first] = self.generations()
        self.assertIn("- Mail m1", self.run_tool("history"))
        self.assertIn("c1", self.run_tool("diff", first))
        self.assertEqual(self.json("diff", first, first), [])

        self.assertIn("+ Mail m1", self.run_tool("undo"))
        by_identifier = {record["Identifier"]: record for record in self.read()}
        self.assertEqual(by_identifier, {record["Identifier"]: record for record in family()})
        self.assertIn("- Mail m1", self.run_tool("undo"))
        self.assertEqual([record["Identifier"] for record in self.read()], ["p1"])
        self.assertEqual(len(self.read()[0]["ChildAccounts"]), 1)

        self.run_tool("restore", first)
        self.assertEqual(len(self.read()), 2)
        self.assertEqual(len(self.generations()), 4)
        self.assertEqual(os.stat(os.path.join(os.path.dirname(self.path), ".tallbook-generations")).st_mode & 0o777, 0o700)
        self.run_tool("history", "--forget")
        self.assertEqual(self.generations(), [])
        self.run_tool("undo", expect=NOT_FOUND)
        self.run_tool("restore", first, expect=NOT_FOUND)
        self.run_tool("diff", "2020-01-01T00-00-00.000000000Z", expect=NOT_FOUND)

    def test_an_older_generation_is_no_way_around_its_upgrade(self):
        self.write(family(), Version=7)
        self.run_tool("--give-up-upgrade", "remove", "m1")
        self.run_tool("undo", expect=USAGE)
        self.run_tool("--give-up-upgrade", "undo")
        self.assertEqual(len(self.read()), 2)


class Bulk(ToolTest):
    def apply(self, records, *options, expect=DONE):
        text = json.dumps({"Accounts": records})
        return self.run_tool("apply", "-", *options, given=text, expect=expect)

    def test_accounts_become_what_a_text_says_once(self):
        self.write(family() + [mail("stays", Port=1)])
        wanted = family() + [mail("new", Data={"$data": "AP8="})]
        wanted[0] = mail("m1", Port=143, Server="mail.example")
        wanted[1]["ChildAccounts"][0]["DisplayName"] = "First"
        del wanted[1]["ChildAccounts"][1]
        before = self.which_file()
        shown = self.apply(wanted, "--dry-run", "--prune")
        self.assertEqual(self.which_file(), before)
        for line in ["~ Port: 993 -> 143", "- DisplayName", "- OrvaneAccount p1", "+ Mail new", "- Mail stays"]:
            self.assertIn(line, shown)
        self.apply(wanted)
        wanted[2]["Data"] = b"\0\xff"
        self.assertCountEqual(self.read(), wanted + [mail("stays", Port=1)])
        xml = self.path + ".xml"
        with open(xml, "wb") as file:
            plistlib.dump({"Accounts": wanted}, file)
        before = self.which_file()
        self.assertEqual(self.run_tool("apply", xml), "")
        self.assertEqual(self.which_file(), before, "what was there already was saved again")
        self.run_tool("apply", "--prune", xml)
        self.assertCountEqual(self.read(), wanted)
        self.run_tool("undo")
        self.assertCountEqual(self.read(), wanted + [mail("stays", Port=1)])
        self.assertEqual([c["record"] for c in self.json("diff", xml)], ["file", "Mail stays"])

    def test_what_dump_prints_changes_nothing(self):
        twins = [mail("a", Port=1), mail("a", Port=2), mail("", Port=0)]
        anonymous = {"Type": "Gmail", "Class": "GmailAccount"}
        self.write([*twins, anonymous, anonymous, mail("b", Type="Unknown"), "text", *family()])
        before = self.which_file()
        self.assertEqual(self.run_tool("apply", "--prune", "-", given=self.run_tool("--json", "dump")), "")
        self.assertEqual(self.run_tool("apply", "-", given=self.run_tool("dump")), "")
        self.assertEqual(self.which_file(), before)
        self.apply([], "--prune")
        self.assertIn("cannot be loaded stay: 5", self.message)
        self.assertEqual([record["type"] for record in self.json("list")], ["Mail", "Gmail", "Gmail"])

    def test_what_cannot_be_had_is_refused_as_a_whole(self):
        self.write(family())
        device = {"Type": "OnMyDevice", "Class": "DeviceLocalAccount"}
        for records in [[mail("m1", Type="Gmail")], [mail("n", Type="Unknown")], [mail("n", Class="")],
                        [{"Type": "Mail", "Class": "IMAPAccount"}], [mail("n"), mail("n")], ["text"],
                        [mail("c1")], [device | {"Identifier": i} for i in "ab"]]:
            with self.subTest(records=records):
                self.apply([mail("first")] + records, expect=USAGE)
                self.assertIn("Accounts[", self.message)
                self.assertEqual(self.read(), family())
        for code, text in [(UNREADABLE, "{]"), (UNREADABLE, ""), (UNREADABLE, "[1]"), (UNREADABLE, '{"Accounts": 5}'),
                           (UNREADABLE, "{}"), (UNREADABLE, '{"Accounts": [], "Accounts": []}'),
                           (UNREADABLE, '{"Accounts": [1e400]}'), (UNREADABLE, '{"Accounts": [18446744073709551616]}'),
                           (UNREADABLE, '{"Accounts": [{"a": {"$data": "?"}}]}'), (USAGE, '{"Version": 7, "Accounts": []}')]:
            with self.subTest(text=text):
                self.run_tool("apply", "--prune", "-", given=text, expect=code)
        self.run_tool("apply", self.path + ".none", expect=NOT_FOUND)
        self.assertEqual(self.read(), family())
        self.write([mail("odd", Type="Unknown")])
        self.apply([mail("odd")], expect=USAGE)
        self.assertIn("a record with its identifier odd that cannot be loaded", self.message)

    def edit(self, *arguments, by, **more):
        return self.run_tool("edit", *arguments, EDITOR="false", VISUAL=by, TMPDIR=self.root + "/tmp", **more)

    def test_what_is_edited_is_merged_with_what_others_did_meanwhile(self):
        self.write(family())
        others = f"{TOOL} --root {self.root} set m1 Server mail.example"
        self.assertIn("~ Port: 993 -> 143", self.edit("m1", by=f"f() {{ {others}; sed -i s/993/143/ $1; }}; f"))
        self.edit("c1", by='sed -i "s/{/{ \\"DisplayName\\": \\"First\\",/"')
        account = family()[0] | {"Port": 143, "Server": "mail.example"}
        umbrella = family()[1]
        umbrella["ChildAccounts"][0]["DisplayName"] = "First"
        self.assertEqual(self.read(), [account, umbrella])
        self.edit(by="sed -i s/p1/p2/")
        self.assertEqual(self.read(), [account, umbrella | {"Identifier": "p2"}])
        self.assertEqual(os.listdir(self.root + "/tmp"), ["AccountMigrationInProgress"])

    def test_a_text_that_cannot_be_taken_is_not_lost(self):
        self.write(family())
        before = self.which_file()
        self.edit(by="true")
        self.edit(by="false", expect=NOT_SAVED)
        self.assertEqual(os.listdir(self.root + "/tmp"), ["AccountMigrationInProgress"])
        for code, told, *arguments in [(UNREADABLE, "line ", ), (USAGE, "line 3, column ", "m1")]:
            self.edit(*arguments, by="sed -i s/IMAPAccount/\\\"/", expect=code)
            self.assertIn(told, self.message)
            kept = self.message.split(" kept in ")[1].strip()
            with open(kept) as file:
                self.assertIn('"Class": """', file.read())
            self.assertEqual((os.stat(kept).st_mode & 0o777, os.stat(os.path.dirname(kept)).st_mode & 0o777),
                             (0o600, 0o700))
        self.assertEqual(self.which_file(), before)

    def test_children_go_only_when_somebody_at_a_terminal_agrees(self):
        self.write(family())
        ours, theirs = self.terminal()
        for answer, code, *more in [(b"n\n", NOT_SAVED), (b"", DONE, "--yes")]:
            os.write(ours, answer)
            done = subprocess.run([TOOL, "--root", self.root, "remove", "p1", *more], stdin=theirs,
                                  capture_output=True, timeout=60)
            self.assertEqual((done.returncode, b"its children (2)?" in done.stderr), (code, not more))
        self.assertEqual([record["Identifier"] for record in self.read()], ["m1"])


class Neighbours(ToolTest):
    def test_a_reader_never_takes_a_file_that_is_replaced_for_a_damaged_one(self):
        self.write(family())
        for number in range(30):
            # Files of quite different sizes.
            writer = self.start("set", "m1", "Filler", "x" * (100_000 if number % 2 else 1))
            while writer.poll() is None:
                self.run_tool("list")
            self.assertEqual(writer.communicate()[1], "")

    def test_accounts_that_are_added_together_are_all_there(self):
        self.write(family())
        added = []
        for _ in range(10):
            pair = [self.start("add", "Mail", "IMAPAccount") for _ in range(2)]
            for adding in pair:
                identifier, message = adding.communicate(timeout=60)
                self.assertEqual((adding.returncode, message), (DONE, ""))
                added.append(identifier.strip())
        self.assertCountEqual([record["Identifier"] for record in self.read()], ["m1", "p1"] + added)


class Comparing(ToolTest):
    def test_diff_names_records_and_keys(self):
        other = self.path + ".other"
        before = family() + [mail("gone")]
        after = family() + [mail("new")]
        after[0]["Port"] = 143
        after[0]["Server"] = "mail.example"
        del after[0]["DisplayName"]
        after[1]["ChildAccounts"][1]["Username"] = "x"
        self.write(before)
        self.write(after, other, Version=7)
        changes = self.json("diff", self.path, other)
        self.assertEqual([(c["change"], sorted(c["keys"])) for c in changes], [
            ("changed", ["Version"]), ("removed", ["Class", "Identifier", "Type"]),
            ("changed", ["DisplayName", "Port", "Server"]), ("changed", ["Username"]),
            ("added", ["Class", "Identifier", "Type"])])
        self.assertEqual(changes[2]["keys"], {"Port": {"before": 993, "after": 143},
                                              "Server": {"after": "mail.example"},
                                              "DisplayName": {"before": "Büro"}})
        self.assertIn("~ Port: 993 -> 143", self.run_tool("diff", self.path, other))
        self.assertEqual(self.run_tool("diff", self.path, self.path), "")
        self.write(list(reversed(family())), other)
        self.write(family())
        self.assertEqual(self.json("diff", self.path, other)[0]["record"], "order of the records")
        self.write([mail("a", Type="Unknown", Port=1), *family()])
        self.write([mail("a", Type="Unknown", Port=2), *family()], other)
        self.assertEqual(self.run_tool("diff", self.path, other), "~ Unknown a\n    ~ Port: 1 -> 2\n")

    def test_dump_says_what_the_file_says(self):
        record = mail("m1", Text="<&>\r\n\"ü😀", Real=1e300, Big=2**64 - 1, Data=b"\0\1\2",
                      Date=datetime.datetime(1, 2, 3), No=False, List=[[], {}])
        self.write([record])
        self.assertEqual(plistlib.loads(self.run_tool("dump").encode())["Accounts"], [record])
        self.assertEqual(self.json("dump")["Accounts"][0]["Date"], {"$date": "0001-02-03T00:00:00Z"})
        for value in ["\x01", plistlib.UID(1)]:
            self.write([mail("m1", Bad=[value])])
            self.run_tool("dump", expect=NOT_FOUND)
            self.assertIn("Accounts[0].Bad[0]", self.message)

    def test_what_a_small_file_shares_is_not_written_out_a_thousand_times(self):
        text = "t" * 1_000_000
        self.write([mail("m1", Many=[text] * 1000)])
        for arguments in [("dump",), ("list",), ("show", "m1"), ("get", "m1", "Many"), ("check",),
                          ("diff", self.path, self.path)]:
            self.run_tool(*arguments, expect=UNREADABLE)
            self.assertIn("MiB that can be printed", self.message)
        self.run_tool("--verbose", "unset", "m1", "Many")
        self.assertLess(len(self.message), 16_000_000)
        # A name stands in every line about its record, and its cell is as wide as the widest one.
        children = [mail(str(n), DisplayName=str(n)) for n in range(200)]
        self.write([mail("m1", DisplayName=text, ChildAccounts=children, **{text: 1})])
        empty = self.path + ".empty"
        self.write([], path=empty)
        for arguments in [("list",), ("show", "m1"), ("diff", empty, self.path)]:
            printed = self.run_tool(*arguments)
            self.assertIn("t...", printed)
            self.assertLess(len(printed), 5_000_000)

    def test_check_finds_what_the_library_does_not_take(self):
        self.write(family())
        self.assertEqual(self.json("check"), [])
        device = {"Type": "OnMyDevice", "Class": "DeviceLocalAccount"}
        path = {"AccountPath": "/var/mobile/Library/Mail/IMAP-a@b"}
        for effect, place, records, top in [
                ("dropped", "Extra", [], {"Extra": 1}), ("ambiguous", "Version", [], {"Version": 7}),
                ("ambiguous", "Version", [], {"Version": "12"}),
                ("dropped", "Accounts[0]", ["text"], {}), ("dropped", "Accounts[0]", [mail("a", Type="X")], {}),
                ("dropped", "Accounts[0]", [mail("a", Type=5)], {}),
                ("dropped", "Accounts[0]", [mail("a", Class="")], {}),
                ("dropped", "Accounts[0]", [mail("a", Class="MailAccount")], {}),
                ("repaired", "Accounts[0]", [mail("a", Class="MailAccount", **path)], {}),
                ("ambiguous", "Accounts[1]", [mail("a"), mail("a")], {}),
                ("ambiguous", "Accounts[1]", [device | {"Identifier": i} for i in "ab"], {}),
                ("ignored", "Accounts[0]", [mail("a", ChildAccounts="none")], {}),
                ("ignored", "Accounts[0].ChildAccounts[0]", [mail("a", ChildAccounts=[1])], {}),
                ("ambiguous", "Accounts[0].ChildAccounts[0]", [mail("a", ChildAccounts=[mail("a")])], {}),
                ("repaired", "Accounts[0]", [{"Type": "Mail", "Class": "IMAPAccount"}], {}),
                ("ambiguous", "Accounts[0].ChildAccounts[0]",
                 [mail("a", ChildAccounts=[{"Type": "Mail", "Class": "IMAPAccount"}])], {}),
                ("ignored", "Accounts[0].ChildAccounts[0]",
                 [mail("a", ChildAccounts=[mail("b", ChildAccounts=[])])], {}),
                ("ignored", "Accounts[0]", [mail("a", **{"Enabled Dataclasses": [dataclass("Contacts")]})], {}),
                ("ignored", "Accounts[0]", [mail("a", **{"Enabled Dataclasses": [3]})], {})]:
            with self.subTest(effect=effect, records=records, top=top):
                self.write(records, **top)
                findings = self.json("check", expect=NOT_FOUND)
                self.assertEqual([(f["effect"], f["place"].split(" ")[0]) for f in findings],
                                 [(effect, place)])
                # What is not loaded is not listed, and stays as it is all the same.
                if effect == "dropped" and records:
                    self.run_tool("add", "Gmail", "GmailAccount")
                    self.assertEqual(len(self.json("list")), 1)
                    before, after = self.read()[:1], self.read()[1:]
                    if records == ["text"]:
                        before, after = after, before
                    self.assertEqual(before, records)
                    self.assertEqual([r["Type"] for r in after], ["Gmail"])

    def test_check_looks_at_creators_modules_and_what_saves_left(self):
        self.write([])
        folder = os.path.dirname(self.path)
        left = [os.path.join(folder, name) for name in (".tallbook-0123456789abcdef",
                                                        "com.orvane.tallbook.plist.unreadable-3")]
        for path in [*left, os.path.join(folder, ".tallbook-other"), os.path.join(self.root, "bad.so")]:
            open(path, "w").close()
        self.assertEqual([(f["effect"], f["place"]) for f in self.json("check")],
                         [("leftover", path) for path in left])
        modules = self.json("check", "--modules")
        self.assertIn("DeviceLocalAccount: offers accountWithBasicAccount", modules[0]["why"])

        def creator(framework):
            return {"Type": "NotifierAccount", "Description": {
                "Framework": framework, "Class": "C", "Supported Dataclasses": [dataclass("Mail")]}}
        creators = os.path.join(self.root, "usr/share/tallbook/AccountCreators.plist")
        with open(creators, "wb") as file:
            plistlib.dump({"Mail": [creator("bad.so"), creator("none.so")]}, file)
        broken = [f for f in self.json("check", "--modules", expect=NOT_FOUND) if f["effect"] == "broken"]
        self.assertEqual([f["place"] for f in broken], [f"{creators}, Mail[{n}]" for n in (1, 0)])
        # The same is said when a save needs the module, and other types are served as ever.
        self.run_tool("add", "Gmail", "GmailAccount")
        self.assertEqual(self.message, "")
        identifier = self.run_tool("add", "Mail", "IMAPAccount").strip()
        self.run_tool("enable", identifier, "Mail", expect=NOT_SAVED)
        self.assertIn(f"{creators}, Mail[1]: there is no module {self.root}/none.so", self.message)


class Watching(ToolTest):
    def setUp(self):
        super().setUp()
        self.write(family())
        # A baseline that lacks the child c2: its line tells that the watcher is there.
        known = family()
        known[1]["ChildAccounts"].pop()
        self.baseline = os.path.join(self.root, "baseline")
        self.write(known, self.baseline, BaselineVersion=1)

    def watch(self, *arguments):
        watcher = self.start("watch", "--since", self.baseline, *arguments)
        self.addCleanup(watcher.kill)
        self.addCleanup(watcher.stdout.close)
        self.addCleanup(watcher.stderr.close)
        return watcher

    def line(self, watcher):
        time, text = watcher.stdout.readline().rstrip("\n").split("  ", 1)
        datetime.datetime.strptime(time, "%Y-%m-%d %H:%M:%S")
        return text

    def test_a_line_a_change_until_it_is_stopped_and_from_there_on_the_next_time(self):
        signal.signal(signal.SIGHUP, signal.SIG_IGN)  # as nohup does
        watcher = self.watch("--keep", self.baseline)
        signal.signal(signal.SIGHUP, signal.SIG_DFL)
        self.assertEqual(self.line(watcher), "Umbrella > CalDAV: added, CalDAV c2")
        watcher.send_signal(signal.SIGHUP)
        for arguments, expected in [
                (("disable", "m1", "Mail"), "Büro: Mail off"),
                (("set", "m1", "DisplayName", "A\nB"), 'Büro: DisplayName "Büro" -> "A\\nB"'),
                (("set", "m1", "Server", "x"), 'A\\x0aB: Server added: "x"'),
                (("unset", "m1", "Server"), 'A\\x0aB: Server removed: "x"'),
                (("remove", "c2"), "Umbrella > CalDAV: removed, CalDAV c2")]:
            self.run_tool(*arguments)
            self.assertEqual(self.line(watcher), expected)
        with open(self.path, "wb") as file:
            file.write(b"junk")
        self.assertIn("the accounts file is none: ", self.line(watcher))
        self.write([mail("m1")])
        self.assertEqual(self.line(watcher), "the accounts file can be read again")
        for expected in ["Umbrella: removed, OrvaneAccount p1", "Umbrella > CalDAV: removed, CalDAV c1"]:
            self.assertEqual(self.line(watcher), expected)
        self.assertIn("A\\x0aB: ", self.line(watcher))
        watcher.send_signal(signal.SIGINT)
        self.assertEqual((watcher.wait(60), watcher.stdout.read(), watcher.stderr.read()), (DONE, "", ""))
        self.assertEqual(os.stat(self.baseline).st_mode & 0o777, 0o600)
        self.run_tool("set", "m1", "DisplayName", "Work")
        again = self.run_tool("watch", "--since", self.baseline, "--once")
        self.assertIn(': DisplayName added: "Work"', again)

    def test_json_types_and_the_reader_who_goes_away(self):
        watcher = self.watch("--json", "--type", "Mail")
        self.run_tool("set", "p1", "Port", "1")
        self.run_tool("set", "m1", "Port", "143")
        line = json.loads(watcher.stdout.readline())
        self.assertEqual(line["time"][-1], "Z")
        self.assertEqual([line[key] for key in ("change", "identifier", "type", "name", "keys")],
                         ["changed", "m1", "Mail", "Büro", {"Port": {"before": 993, "after": 143}}])
        watcher.stdout.close()
        self.assertEqual(watcher.wait(60), DONE)
        for arguments, code in [(("--since", self.path), UNREADABLE), (("--keep", self.path), UNREADABLE),
                                (("--type", "Nonsense"), USAGE),
                                (("--keep", self.root + "/none/file"), NOT_SAVED)]:
            self.run_tool("watch", *arguments, expect=code)

    @unittest.skipUnless(shutil.which("dbus-daemon") and shutil.which("dbus-monitor"), "there is no message bus")
    def test_the_bus_is_told_names_and_no_values(self):
        self.run_tool("disable", "m1", "Mail")
        # Without a bus the change is kept for the next start.
        self.run_tool("watch", "--since", self.baseline, "--keep", self.baseline, "--bus", expect=NOT_SAVED)
        os.makedirs(os.path.join(self.root, "run/dbus"))
        address = "unix:path=" + os.path.join(self.root, "run/dbus/system_bus_socket")
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1",
                                "--address=" + address], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.addCleanup(bus.stdout.close)
        self.addCleanup(bus.wait)
        self.addCleanup(bus.kill)
        bus.stdout.readline()
        listener = subprocess.Popen(["dbus-monitor", "--address", address, "interface='com.orvane.Tallbook1'"],
                                    stdout=subprocess.PIPE, text=True)
        self.addCleanup(listener.stdout.close)
        self.addCleanup(listener.wait)
        self.addCleanup(listener.kill)
        line = ""
        while "NameLost" not in line:  # the sign that it listens
            line = listener.stdout.readline()
            self.assertNotEqual(line, "", "dbus-monitor has ended")
        self.assertEqual(self.run_tool("watch", "--since", self.baseline, "--bus", "--once"), "")
        heard = ""
        while 'string "c2"' not in heard:
            heard += listener.stdout.readline()
        first, second = (re.findall(r'string "(.*)"', message) for message in heard.split("AccountsChanged")[1:])
        self.assertEqual(first, ["changed", "Mail", "m1", "", dataclass("Mail"), "Enabled Dataclasses"])
        self.assertEqual(second, ["added", "CalDAV", "c2"])
        described = xml.etree.ElementTree.parse(INTERFACE).iter("arg")
        self.assertEqual(re.findall(r"^   (string|array)", heard.split("AccountsChanged")[1], re.MULTILINE),
                         [{"s": "string", "as": "array"}[argument.get("type")] for argument in described])


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
