# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

"""Asks the command-line tool what words may become, itself and in the shells that do so on a tab.

Usage: test_completion.py PATH-OF-THE-TOOL [unittest arguments]
"""

import os
import pathlib
import plistlib
import pty
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import unittest

TOOL = ""
SCRIPTS = pathlib.Path(__file__).parents[2] / "tools/completion"
BASH_COMPLETION = "/usr/share/bash-completion/bash_completion"
UUID = "7148D65F-5E99-405F-A8E3-37B23ECC6AA8"


def account(identifier, name, **more):
    return {"Identifier": identifier, "Type": "Mail", "Class": "IMAPAccount", "DisplayName": name} | more


class Device(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.root = self.folder / "device"
        subprocess.run([TOOL, "init", self.root], check=True, capture_output=True)
        self.path = self.root / "var/mobile/Library/Preferences/com.orvane.tallbook.plist"

    def write(self, *accounts):
        self.path.write_bytes(plistlib.dumps({"Version": 12, "Accounts": list(accounts)}))

    def answers(self, *words, root=None, **environment):
        environment = os.environ | {"TALLBOOK_ROOT": str(root or self.root)} | environment
        done = subprocess.run([TOOL, "_complete", str(len(words)), "tallbook", *words], env=environment,
                              capture_output=True, text=True, timeout=60)
        self.assertEqual((done.returncode, done.stderr), (0, ""), words)
        return dict(line.split("\t") for line in done.stdout.splitlines())


class Answers(Device):
    def test_words_become_what_may_stand_there(self):
        self.write(account("m1", "Office", Port=993, **{"Enabled Dataclasses": ["com.orvane.Dataclass.Mail"]}),
                   account("m2", "Twin"), account("m3", "twin"), account(UUID, "Home", Username="ada"))
        subprocess.run([TOOL, "--root", self.root, "set", "Home", "Port", "1"], check=True, capture_output=True)
        [generation] = self.answers("restore", "")
        for words, values in [
                (["sho"], ["show"]), (["help", "und"], ["undo"]), (["--js"], ["--json"]), (["nonsense", ""], []),
                (["set", "--n"], ["--new-key", "--no-wait"]), (["show", "--n"], ["--no-wait"]),
                (["show", ""], ["Office", "m2", "m3", "Home"]), (["show", "m"], ["m1", "m2", "m3"]),
                (["show", "OFF"], ["Office"]), (["show", UUID[:3]], [UUID]), (["show", "Office", ""], []),
                (["--json", "show", "--", "Of"], ["Office"]), (["add", "--parent", "Ho"], ["Home"]),
                (["get", "Office", "Por"], ["Port"]), (["get", "nobody", "P"], []),
                (["enable", "Office", ""], ["Mail", "Notes"]), (["types", "Gm"], ["Gmail"]),
                (["list", "--type=Gm"], ["--type=Gmail"]), (["list", "--type", "Gm"], ["Gmail"]),
                (["set", "Office", "Port", "-1", "--type", "r"], ["real"]), (["add", "Gmail", ""], ["GmailAccount"]),
                (["diff", generation[:4]], ["", generation]), (["init", "x"], [""])]:
            with self.subTest(words=words):
                self.assertEqual(list(self.answers(*words)), values)
        self.assertEqual(self.answers("show", "Of"), {"Office": "Mail, m1"})
        self.assertEqual(self.answers("enable", "m1", ""), {"Mail": "on", "Notes": "off"})
        self.assertEqual(self.answers("get", "m1", "P")["Port"], "integer")
        self.assertEqual(self.answers("set", "m1", "Us"), {"Username": "string, not set"})

    def test_the_device_is_the_one_of_that_line(self):
        self.write(account("m1", "Office"))
        for words in [["--root", str(self.root)], [f"--root={self.root}"], ["--root", "~/device"]]:
            self.assertEqual(list(self.answers(*words, "show", "O", root="/nowhere", HOME=str(self.folder))),
                             ["Office"], words)
        self.assertEqual(self.answers("--root", "/nowhere", "show", "O"), {})

    def test_what_is_wrong_is_not_told(self):
        self.assertEqual(self.answers("show", ""), {})
        self.path.write_bytes(b"no accounts file")
        for words in [["show", ""], ["set", "m1", ""], ["restore", ""], ["--verbose", "show", ""], ["--root"], []]:
            self.assertEqual([value for value in self.answers(*words) if value.startswith("m")], [], words)

    def test_names_that_no_line_can_hold_are_left_out(self):
        self.write(account("m1", "two\nlines"), account("m2", "--json"), account("m3", "Tab\there"))
        self.assertEqual(self.answers("show", ""), {})
        self.assertEqual(self.answers("show", "m1"), {"m1": "two\\x0alines, Mail"})


class Shells(Device):
    NAMES = ["Office: at home", "ada@host=x", "it's $5 \"net\"", "Büro"]

    def told(self, *shell, setup, typed):
        """What the tool printed when it was run by the words that became of the typed ones."""
        told = self.folder / "told"
        told.unlink(missing_ok=True)
        process, terminal = pty.fork()
        if process == 0:
            os.environ.update(HOME=str(self.folder), TALLBOOK_ROOT=str(self.root), LC_ALL="C.UTF-8", TERM="vt100",
                              PATH=os.path.dirname(TOOL) + ":" + os.environ["PATH"])
            os.chdir(self.folder)
            os.execvp(shell[0], shell)
        shown = []
        reader = threading.Thread(target=self.drain, args=(terminal, shown))
        reader.start()
        try:
            os.write(terminal, f"{setup}; echo rea''dy\n".encode())
            self.wait_for(lambda: b"ready" in b"".join(shown), shown)
            os.write(terminal, f"tallbook get {typed}\tDisplayName >told\r".encode())
            self.wait_for(lambda: told.exists() and told.read_text().endswith("\n"), shown)
        finally:
            os.kill(process, signal.SIGKILL)
            os.waitpid(process, 0)
            reader.join()
            os.close(terminal)
        return told.read_text()[:-1]

    @staticmethod
    def drain(terminal, shown):
        try:
            while piece := os.read(terminal, 65536):
                shown.append(piece)
        except OSError:
            pass  # the shell is gone

    def wait_for(self, condition, shown):
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end, b"".join(shown))
            time.sleep(0.01)

    def check(self, *shell, setup):
        self.write(*(account(f"m{at}", name) for at, name in enumerate(self.NAMES)))
        for typed, name in [("Off", 0), ("off", 0), ("Office:", 0), ("Office:\\ a", 0), ('"Office: a', 0),
                            ("'Office: a", 0), ("ada@", 1), ("ada@host=", 1), ("it\\'s", 2), ('"it', 2), ("'it", 2),
                            ("Bü", 3)]:
            with self.subTest(typed=typed):
                self.assertEqual(self.told(*shell, setup=setup, typed=typed), self.NAMES[name])

    @unittest.skipUnless(os.path.exists(BASH_COMPLETION), "bash-completion is not installed")
    def test_bash(self):
        self.check("bash", "--norc", "--noprofile", setup=f". {BASH_COMPLETION}; . {SCRIPTS}/tallbook.bash")

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh(self):
        self.check("zsh", "-f", setup=f"fpath=({SCRIPTS} $fpath); autoload -Uz compinit; compinit -u -D")

    @unittest.skipUnless(shutil.which("fish"), "fish is not installed")
    def test_fish(self):
        self.check("fish", "--no-config", setup=f"source {SCRIPTS}/tallbook.fish")


if __name__ == "__main__":
    TOOL = os.path.abspath(sys.argv.pop(1))
    unittest.main()
