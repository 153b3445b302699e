"""Standard output that is full, closed or without a reader: the exit status of every command shows it."""

import os
import subprocess
import unittest

from velhostcase import SOURCE, VELHOST, VelhostCase

COMMANDS = (["--version"], ["--help"], ["collect", "--help"], ["classes"], ["plugin"], ["check", str(SOURCE / "schema")],
            ["collect", "--format", "json"])


class StandardOutput(VelhostCase):
    def run_shell(self, redirection, arguments):
        script = f'"$0" "$@" {redirection}'
        return subprocess.run(["bash", "-c", script, VELHOST, *arguments], stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True, timeout=120, cwd=self.folder)

    def test_full_disk(self):
        for arguments in COMMANDS:
            done = self.run_shell(">/dev/full", arguments)
            self.assertEqual((done.returncode, done.stderr),
                             (74, "velhost: cannot write standard output: No space left on device\n"), arguments)

    def test_closed(self):
        for arguments in COMMANDS:
            done = self.run_shell(">&-", arguments)
            self.assertEqual((done.returncode, done.stderr), (74, "velhost: standard output is closed\n"), arguments)

    def test_closed_streams_are_not_taken_by_files(self):
        done = self.run_shell("<&- >&- 2>&-", ["collect", "--format", "json", "-o", "out.json", "--log", "trace.txt"])
        self.assertEqual(done.returncode, 0)
        self.assertTrue((self.folder / "out.json").read_text().startswith("{"))
        self.assertTrue((self.folder / "trace.txt").read_text().startswith("debug Initializing"))

    def test_pipe_that_nobody_reads(self):
        for arguments in COMMANDS:
            read, write = os.pipe()
            os.close(read)
            done = subprocess.run([VELHOST, *arguments], stdout=write, stderr=subprocess.PIPE, text=True, timeout=120)
            os.close(write)
            self.assertEqual((done.returncode, done.stderr), (74, ""), arguments)

    def test_larger_than_a_file_may_be(self):
        script = 'ulimit -f 1; "$0" collect --format json >out.json'
        done = subprocess.run(["bash", "-c", script, VELHOST], stderr=subprocess.PIPE, text=True, timeout=120,
                              cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr),
                         (74, "velhost: cannot write standard output: File too large\n"))

    def test_a_dash_is_standard_output(self):
        done = self.run_velhost("collect", "--format", "json", "-o", "-")
        self.assertTrue(done.stdout.startswith("{"))
        self.assertEqual(os.listdir(self.folder), [])


if __name__ == "__main__":
    unittest.main()
