"""The pager in which long text is read on a terminal."""

import os
import pathlib
import signal
import unittest

from velhostcase import BRIDGE, VELHOST, VelhostCase

# With these as the pager, what would be read in it is in the file "paged".
TO_FILE = "cat >paged"

SERVER = """
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
"""
# The ninth register would take an hour.
LATE_REGISTER = '[[fault]]\non = "register"\nnth = 9\ndelay_ms = 3600000\n'


class Pager(VelhostCase):
    def setUp(self):
        super().setUp()
        self.schema_file = self.schema({f"Register{i}": (0x1000 + 8 * i, 8) for i in range(12)}, count=3)
        self.write("server.toml", SERVER)
        self.write("late.toml", SERVER + LATE_REGISTER)

    def shown(self, *arguments, status=0, **variables):
        """What a command shows on a terminal of its own."""
        shown, actual = self.run_on_terminal([VELHOST, *arguments], {"TERM": "xterm", **variables})
        self.assertEqual(actual, status, shown)
        return shown.replace("\r\n", "\n")

    def collect_words(self, server="server.toml"):
        return ["collect", "--schema", self.schema_file, "--sp", f"sim:./{server}"]

    def paged(self):
        return (self.folder / "paged").read_text()

    def program(self, name, text):
        path = self.folder / name
        path.write_text("#!/bin/sh\n" + text)
        path.chmod(0o755)
        return str(path)

    def test_every_text_for_people_is_paged(self):
        for words, text in ((["classes"], "Machine type: 6203\n"), (["describe", BRIDGE], f"\x1b[1m{BRIDGE}\x1b[0m\n"),
                            (["check"], "no findings\n"), (self.collect_words() + ["--dry-run"], "Machine type: 6203\n"),
                            (self.collect_words(), "\x1b[31mSIMULATED: ")):
            self.assertEqual(self.shown(*words, PAGER=TO_FILE), "", words)
            self.assertTrue(self.paged().startswith(text), words)
            self.assertTrue(self.paged().endswith("\n"), words)

    def test_what_programs_read_is_not_paged(self):
        for words in (["classes", "--format", "json"], ["describe", BRIDGE, "--format", "json"], ["plugin"], ["--help"],
                      ["check", "--format", "json"], self.collect_words() + ["--format", "mof"],
                      self.collect_words() + ["--dry-run", "--format", "json"],
                      self.collect_words() + ["--format", "table", "-o", "out.txt"]):
            self.shown(*words, PAGER=TO_FILE)
            self.assertFalse((self.folder / "paged").exists(), words)
        self.run_velhost("classes", environment={"PAGER": TO_FILE})  # no terminal
        self.assertFalse((self.folder / "paged").exists())

    def test_which_pager_is_run(self):
        less = self.program("less", 'echo "less $* LESS=$LESS $LESSSECURE"; cat >paged\n')
        path = f"{self.folder}:{os.environ['PATH']}"
        for expected, variables in (
                ("less  LESS=FRX \n", {}),
                ("less  LESS=M \n", {"LESS": "M"}),
                ("less  LESS=FRX 1\n", {"SUDO_UID": "1000"}),
                ("less -N -S LESS=FRX \n", {"PAGER": "less  -N -S "}),
                ("less a b LESS=FRX \n", {"PAGER": "less 'a b'"}),
                ("less  LESS=FRX \n", {"PAGER": "false", "VELHOST_PAGER": "less"}),
                ("less  LESS=FRX \n", {"TERM": "dumb", "PAGER": less})):
            self.assertEqual(self.shown("classes", PATH=path, **variables), expected, variables)
            self.assertTrue(self.paged().startswith("Machine type: 6203\n"))

    def test_without_a_pager(self):
        path = f"{self.folder}:{os.environ['PATH']}"
        self.program("less", "cat >paged\n")
        for words, variables in ((["--no-pager"], {}), ([], {"PAGER": ""}), ([], {"PAGER": "cat"}), ([], {"PAGER": " "}),
                                 ([], {"PAGER": "less", "VELHOST_PAGER": ""}), ([], {"TERM": "dumb"})):
            shown = self.shown("classes", *words, PATH=path, **variables)
            self.assertTrue(shown.startswith("Machine type: 6203\n"), variables)
            self.assertFalse((self.folder / "paged").exists())

    def test_a_pager_that_does_not_exist(self):
        text = self.shown("classes", "--no-pager")
        self.assertEqual(self.shown("classes", PATH="/nonexistent"), text, "less is not everywhere")
        self.assertEqual(self.shown("classes", PAGER="no-such-pager -x"), "velhost: warning: cannot run the pager "
                         f'"no-such-pager -x": No such file or directory\n{text}')
        self.assertIn("velhost: the pager \"no-such-pager 'x'\" could not be run (status 127); --no-pager prints without "
                      "one\n", self.shown("classes", PAGER="no-such-pager 'x'", status=74))

    def test_a_pager_in_the_current_folder_is_run_only_by_its_path(self):
        self.program("less", "cat >paged\n")
        text = self.shown("classes", PATH=":.:")
        self.assertTrue(text.startswith("Machine type: 6203\n"))
        self.assertEqual(self.shown("classes", PAGER="./less", PATH="/usr/bin:/bin"), "")
        self.assertEqual(self.paged(), text)

    def test_leaving_early_is_not_an_error(self):
        self.assertEqual(self.shown("classes", PAGER="head -n 1"), "Machine type: 6203\n")
        bad = self.write("bad.mof", "class A : B {};\n")
        self.assertEqual(self.shown("check", bad, PAGER="head -n 1", status=65).count("\n"), 1)

    def test_leaving_ends_a_collection(self):
        shown = self.shown(*self.collect_words("late.toml"), "--record", "run.jsonl", BRIDGE, PAGER="head -n 1", status=3)
        self.assertEqual(shown.count("\n"), 1)
        self.assertTrue((self.folder / "run.jsonl").read_text().endswith("\n"))

    def test_a_collection_does_not_wait_for_its_reader(self):
        schema = self.schema({f"Register{i}": (0x1000 + 8 * i, 8) for i in range(250)}, count=150)
        pager = self.program("pager", "while [ ! -e go ]; do sleep 0.05; done; cat >paged\n")
        process, terminal = self.start_on_terminal(
            [VELHOST, "collect", "--schema", schema, "--sp", "sim:./server.toml", "--record", "run.jsonl", BRIDGE],
            {"PAGER": pager})
        self.wait_for_exchanges(process, "run.jsonl", 150 * 252)  # far more text than a pipe holds
        self.write("go", "")
        self.assertEqual((terminal.read(), process.wait(timeout=60)), ("", 0))
        headings = [line for line in self.paged().splitlines() if BRIDGE in line and "node0" in line]
        self.assertEqual(len(headings), 150)
        self.assertTrue(self.paged().endswith("Result        complete\n  Findings      unknown\n"))

    def test_an_interrupt_ends_the_collection_and_not_its_pager(self):
        process, terminal = self.start_on_terminal(
            [VELHOST, *self.collect_words("late.toml"), "--record", "run.jsonl", BRIDGE],
            {"PAGER": self.program("pager", "trap '' INT; cat\n"), "NO_COLOR": "1"})
        self.wait_for_exchanges(process, "run.jsonl", 5)
        terminal.write(b"\x03")
        shown = terminal.read()
        self.assertEqual(process.wait(timeout=60), 3)
        self.assertIn("Result        partial", shown)
        self.assertIn(f"velhost: partial: {BRIDGE}: interrupted", shown)

    def test_an_interrupt_while_reading_is_for_the_pager(self):
        pager = self.program("pager", 'trap "echo interrupted >go" INT; while [ ! -e go ]; do sleep 0.05; done; cat\n')
        process, terminal = self.start_on_terminal([VELHOST, "classes"], {"PAGER": pager})
        self.wait_until(lambda: self.is_waiting(process), "velhost does not wait")
        terminal.write(b"\x03")
        self.assertIn("Machine type: 6203", terminal.read())
        self.assertEqual(process.wait(timeout=60), 0)

    def test_a_signal_does_not_end_velhost_before_its_pager(self):
        pager = self.program("pager", "while [ ! -e go ]; do sleep 0.05; done; cat\n")
        process, terminal = self.start_on_terminal([VELHOST, "classes"], {"PAGER": pager})
        self.wait_until(lambda: self.is_waiting(process), "velhost does not wait")
        process.send_signal(signal.SIGTERM)
        self.wait_until(lambda: self.has_signal(process, "SigBlk", signal.SIGTERM), "the signal is not handled")
        self.write("go", "")
        self.assertIn("Machine type: 6203", terminal.read())
        self.assertEqual(process.wait(timeout=60), -signal.SIGTERM)

    @classmethod
    def is_waiting(cls, process):
        """Whether velhost ignores Ctrl-C, as it does while it waits for its pager."""
        return cls.has_signal(process, "SigIgn", signal.SIGINT)

    @staticmethod
    def has_signal(process, kind, number):
        """Whether the kernel lists the signal among those that the process ignores (SigIgn), or blocks now (SigBlk)."""
        status = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
        return int(status.partition(kind + ":")[2].split()[0], 16) >> (number - 1) & 1 == 1

    def test_messages_are_read_in_the_pager_too(self):
        words = self.collect_words("late.toml") + ["--timeout", "2", BRIDGE]
        self.assertEqual(self.shown(*words, "--progress", "never", PAGER=TO_FILE, status=3), "")
        message = f"velhost: partial: {BRIDGE}: deadline reached"
        self.assertIn(message, self.paged())
        shell = ['"$0" "$@" 2>errors', VELHOST, *words]
        shown, status = self.run_on_terminal(["bash", "-c", *shell], {"PAGER": TO_FILE})
        self.assertEqual((shown, status), ("", 3))
        self.assertNotIn(message, self.paged())
        self.assertIn(message, (self.folder / "errors").read_text())

    def test_the_progress_line_ends_before_the_pager_begins(self):
        shown = self.shown(*self.collect_words(), "--progress", "always", BRIDGE, PAGER=TO_FILE)
        self.assertNotIn("[1/1]", shown.split("\r")[-1])
        self.assertNotIn("[1/1]", self.paged())
        self.assertIn(f"{BRIDGE}  node0/instance2", self.paged())


if __name__ == "__main__":
    unittest.main()
