"""Deadlines, interruptions and the progress line, on a service processor that is slow."""

import json
import os
import pty
import signal
import subprocess
import time
import unittest

from velhostcase import BRIDGE, VELHOST, VelhostCase, read_terminal

SLOW = """
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
[[fault]]
on = "register"
delay_ms = 50
"""
REASON = "velhost: partial: deadline reached"


class Stopping(VelhostCase):
    def setUp(self):
        super().setUp()
        registers = {f"Register{i}": (0x1000 + 8 * i, 8) for i in range(100)}
        self.arguments = ["collect", "--schema", self.schema(registers, count=2), "--sp",
                          "sim:" + self.write("slow.toml", SLOW), "--format", "json"]

    def start(self, *arguments, **options):
        return subprocess.Popen([VELHOST, *self.arguments, *arguments], cwd=self.folder, text=True, **options)

    def check_partial(self, output, reason):
        document = json.loads(output)
        self.assertEqual(document["status"], "partial")
        instance = document["instances"][0]
        self.assertTrue(instance["incomplete"])
        self.assertIn("Register0", instance["properties"])
        self.assertNotIn("Register99", instance["properties"])

    def test_deadline(self):
        # The whole collection would take ten seconds. How soon it ends is not judged by a clock here:
        # that it did not read on is.
        done = subprocess.run([VELHOST, *self.arguments, "--timeout", "0.5", BRIDGE], capture_output=True, text=True,
                              cwd=self.folder, timeout=60)
        self.assertEqual(done.returncode, 3)
        self.check_partial(done.stdout, "deadline reached")

    def test_interruption(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = self.start("--log", "trace.txt", BRIDGE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            time.sleep(0.5)
            process.send_signal(number)
            output, errors = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 3, errors)
            self.check_partial(output, "interrupted")

    def test_a_run_under_nohup_outlives_its_terminal(self):
        process = subprocess.Popen(["nohup", VELHOST, *self.arguments, "--timeout", "1", BRIDGE], cwd=self.folder,
                                   text=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        time.sleep(0.5)
        process.send_signal(signal.SIGHUP)
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 3)
        self.check_partial(output, "deadline reached")
        self.assertIn(REASON, errors)

    def test_output_of_an_interrupted_run_is_whole(self):
        process = self.start("-o", "out.json", BRIDGE, BRIDGE, "KROSG_DCAPFile", stderr=subprocess.PIPE)
        time.sleep(0.5)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.communicate(timeout=60)[1],
                         "velhost: partial: interrupted; 2 classes not collected\n")
        self.assertEqual(process.returncode, 3)
        self.check_partial((self.folder / "out.json").read_text(), "interrupted")

    def test_killed_run_leaves_no_output(self):
        process = self.start("-o", "out.json", BRIDGE)
        time.sleep(0.3)
        process.kill()
        process.wait(timeout=60)
        self.assertFalse((self.folder / "out.json").exists())

    def progress(self, *arguments):
        """What appears on a terminal that standard error is connected to."""
        master, slave = pty.openpty()
        process = self.start("--timeout", "1", *arguments, BRIDGE, stdout=subprocess.DEVNULL, stderr=slave)
        os.close(slave)
        shown = read_terminal(master)
        self.assertEqual(process.wait(timeout=60), 3)
        return shown

    def test_progress_on_a_terminal(self):
        shown = self.progress()
        self.assertIn(f"[1/1] {BRIDGE}", shown)
        self.assertIn("exchanges", shown)
        *drawn, last = shown.removesuffix(REASON + "\r\n").rstrip("\r").split("\r")
        self.assertNotIn("\n", "".join(drawn))
        self.assertEqual(last.strip(), "", "the line is gone at the end")
        self.assertTrue(shown.endswith("\r" + REASON + "\r\n"))

    def test_no_progress_when_not_wanted(self):
        self.assertEqual(self.progress("--progress", "never"), REASON + "\r\n")
        done = subprocess.run([VELHOST, *self.arguments, "--timeout", "0.3", BRIDGE], capture_output=True, text=True,
                              cwd=self.folder, timeout=60)
        self.assertEqual(done.stderr, REASON + "\n")


if __name__ == "__main__":
    unittest.main()
