"""Deadlines, interruptions and the progress line, with a slow service processor."""

import json
import os
import pty
import signal
import subprocess
import unittest

from velhostcase import BRIDGE, VELHOST, VelhostCase, read_terminal

SLOW = """
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
[[fault]]
on = "register"
"""
EACH_REGISTER = "delay_ms = 50"
# Fast enough to collect something before any deadline below, then too slow to collect everything.
LATE_REGISTER = "nth = 50\ndelay_ms = 3600000"
REASON = f"velhost: partial: {BRIDGE}: deadline reached; "


class Stopping(VelhostCase):
    def setUp(self):
        super().setUp()
        registers = {f"Register{i}": (0x1000 + 8 * i, 8) for i in range(100)}
        self.arguments = ["collect", "--schema", self.schema(registers, count=2), "--sp",
                          "sim:" + self.write("slow.toml", SLOW + LATE_REGISTER), "--format", "json"]

    def start(self, *arguments, **options):
        return self.run_beside([VELHOST, *self.arguments, *arguments], **options)

    def run_beside(self, words, **options):
        """Starts a program that is killed with the test, with SIGHUP not ignored even if the tests run under nohup."""
        process = subprocess.Popen(words, cwd=self.folder, text=True, **options,
                                   preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_DFL))
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def start_collecting(self, *arguments, **options):
        """Starts a collection and returns it when it has collected something."""
        (self.folder / "run.jsonl").unlink(missing_ok=True)
        process = self.start(*arguments, "--record", "run.jsonl", **options)
        self.wait_for_exchanges(process, "run.jsonl", 10)
        return process

    def check_partial(self, output, reason):
        document = json.loads(output)
        self.assertEqual((document["status"], document["exit_status"]), ("partial", 3))
        self.assertEqual(document["reasons"][0], {"code": "stopped", "class": BRIDGE, "count": 1, "message": reason})
        self.assertEqual(document["reasons"][1]["code"], "register-unread")
        instance = document["instances"][0]
        self.assertEqual(instance["missing"][-2:], [
            {"property": "Register99", "address": "0x001318", "not_sent": True},
            {"property": "StatisticTime", "not_sent": True}])
        self.assertEqual(document["unread"][0]["key"], BRIDGE + "/node0/instance1")
        self.assertIn("Register0", instance["properties"])
        self.assertNotIn("Register99", instance["properties"])

    def test_deadline(self):
        # The whole collection would take an hour. The test does not measure how soon it ended, only that it did not
        # read on.
        done = subprocess.run([VELHOST, *self.arguments, "--timeout", "2", BRIDGE], capture_output=True, text=True,
                              cwd=self.folder, timeout=60)
        self.assertEqual(done.returncode, 3)
        self.check_partial(done.stdout, "deadline reached")

    def test_interruption(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = self.start_collecting("--log", "trace.txt", BRIDGE, stdout=subprocess.PIPE,
                                            stderr=subprocess.PIPE)
            process.send_signal(number)
            output, errors = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 3, errors)
            self.check_partial(output, "interrupted")

    def test_a_run_under_nohup_outlives_its_terminal(self):
        process = self.run_beside(["nohup", VELHOST, *self.arguments, "--timeout", "5", "--record", "run.jsonl", BRIDGE],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.wait_for_exchanges(process, "run.jsonl", 10)
        process.send_signal(signal.SIGHUP)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 3)
        self.check_partial(output, "deadline reached")
        self.assertIn(REASON, errors)

    def test_output_of_an_interrupted_run_is_whole(self):
        process = self.start_collecting("-o", "out.json", BRIDGE, BRIDGE, "KROSG_DCAPFile", stderr=subprocess.PIPE)
        process.send_signal(signal.SIGINT)
        self.assertRegex(process.communicate(timeout=60)[1],
                         rf"^velhost: partial: {BRIDGE}: interrupted; {BRIDGE}: \d+ of 200 registers were not read; "
                         rf"{BRIDGE}: the run was stopped before this class; and 2 more\n$")
        self.assertEqual(process.returncode, 3)
        output = (self.folder / "out.json").read_text()
        self.check_partial(output, "interrupted")
        reasons = [(reason["code"], reason["class"]) for reason in json.loads(output)["reasons"]]
        self.assertEqual(reasons[-2:], [("not-collected", BRIDGE), ("not-collected", "KROSG_DCAPFile")])

    def test_killed_run_leaves_no_output(self):
        process = self.start_collecting("-o", "out.json", BRIDGE)
        process.kill()
        process.wait(timeout=60)
        self.assertFalse((self.folder / "out.json").exists())

    INPUTS = (("the schema", "--schema", "PIPE"), ("the server file", "--sp", "sim:PIPE"),
              ("the recording", "--sp", "replay:PIPE"))

    def opened(self, *arguments):
        """Starts velhost with a pipe for PIPE; returns it and the writing end once it has opened the pipe."""
        pipe = str(self.folder / f"pipe{len(list(self.folder.iterdir()))}")
        os.mkfifo(pipe)
        process = self.run_beside([VELHOST, "collect", *(word.replace("PIPE", pipe) for word in arguments)],
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        writer = os.open(pipe, os.O_WRONLY)  # returns once there is a reader
        self.addCleanup(os.close, writer)
        return process, writer

    def ends(self, process, reason, what):
        output, errors = process.communicate(timeout=60)
        self.assertEqual((process.returncode, output, errors),
                         (3, "", f"velhost: {reason} while reading {what}; nothing was collected\n"))

    def test_a_signal_ends_the_wait_for_an_input(self):
        for what, *option in self.INPUTS:
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                process, _ = self.opened(*option, "-o", "out.json")
                process.send_signal(number)
                self.ends(process, "interrupted", what)
        self.assertFalse((self.folder / "out.json").exists())

    def test_a_deadline_ends_the_wait_for_an_input(self):
        for what, *option in self.INPUTS:
            process, _ = self.opened(*option, "--timeout", "0.5")
            self.ends(process, "deadline reached", what)

    def test_a_signal_ends_the_reading_of_a_text(self):
        # More than the pipe holds: when the write returns, velhost has started to read the text.
        process, writer = self.opened("--schema", "PIPE")
        os.write(writer, b"class A {};\n" * 20000)
        process.send_signal(signal.SIGTERM)
        self.ends(process, "interrupted", "the schema")

    def progress(self, *arguments):
        """Returns what appears on a terminal that standard error is connected to."""
        self.write("slow.toml", SLOW + EACH_REGISTER)  # slow: the line is redrawn at most ten times a second
        master, slave = pty.openpty()
        process = self.start("--timeout", "2", *arguments, BRIDGE, stdout=subprocess.DEVNULL, stderr=slave)
        os.close(slave)
        shown = read_terminal(master)
        self.assertEqual(process.wait(timeout=60), 3)
        return shown

    def test_progress_on_a_terminal(self):
        shown = self.progress()
        self.assertIn(f"[1/1] {BRIDGE}", shown)
        self.assertRegex(shown, r" reads [1-9]\d* of 200, ")
        self.assertIn("exchanges", shown)
        *drawn, last = shown[:shown.index(REASON)].rstrip("\r").split("\r")
        self.assertNotIn("\n", "".join(drawn))
        self.assertEqual(last.strip(), "", "the line is gone at the end")
        self.assertIn("\r" + REASON, shown)
        self.assertTrue(shown.endswith("\r\n"))

    def test_no_progress_when_not_wanted(self):
        shown = self.progress("--progress", "never")
        self.assertEqual((shown.find(REASON), shown.count("\r")), (0, 1), shown)
        done = subprocess.run([VELHOST, *self.arguments, "--timeout", "2", BRIDGE], capture_output=True, text=True,
                              cwd=self.folder, timeout=60)
        self.assertTrue(done.stderr.startswith(REASON), done.stderr)


if __name__ == "__main__":
    unittest.main()
