#!/usr/bin/env python3
"""Checks a synthetic schema by running the program: without findings, and then with one fault in each file.

    generatedschema_test.py VELHOST
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

import makeschema

VELHOST = sys.argv.pop(1)


class GeneratedSchema(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.folder = pathlib.Path(self._folder.name)

    def write(self, files):
        for path, text in files:
            target = self.folder / path
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_text(text, encoding="utf-8")

    def check(self):
        run = subprocess.run([VELHOST, "check", "--format", "json", self.folder / "schema.mof"], capture_output=True,
                             text=True, timeout=120)
        return run.returncode, json.loads(run.stdout)

    def test_is_the_same_for_the_same_seed(self):
        self.assertEqual(makeschema.make_files(60, 3), makeschema.make_files(60, 3))
        self.assertNotEqual(makeschema.make_files(60, 3), makeschema.make_files(60, 4))

    def test_has_no_findings(self):
        for seed in (1, 2, 3):
            self.write(makeschema.make_files(100, seed))
            status, document = self.check()
            self.assertEqual((status, document["findings"]), (0, []), f"seed {seed}")

    def test_one_fault_in_each_of_ten_files_is_found_in_its_place(self):
        files = makeschema.make_files(100, 1)
        places = []
        for i in range(20, 30):
            path, text = files[i]
            line = text.count("\n") + 1
            files[i] = (path, text + "class ;\n")
            places.append((str(self.folder / path), line, 7, "found ';', expected a class name"))
        self.write(files)
        status, document = self.check()
        self.assertEqual(status, 65)
        found = [(f["file"], f["line"], f["column"], f["message"]) for f in document["findings"]]
        self.assertEqual(found, places)


if __name__ == "__main__":
    unittest.main()
