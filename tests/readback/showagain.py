#!/usr/bin/env python3
"""Whether velhost show prints what velhost collect would have printed: showagain.py VELHOST SERVERS_FOLDER.

A run has one form only, so two runs of the same simulated server are compared, without what differs from run to run.
"""
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

VELHOST, SERVERS = sys.argv.pop(1), pathlib.Path(sys.argv.pop(1))
FORMS = ["table", "json", "jsonl", "mof", "cimxml"]
OF_ONE_RUN = [
    (rb"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}", b"ID"),
    (rb"started(\W+)[0-9T:.+-]+", rb"started\1TIME"),
    (rb'"elapsed_ms":[0-9]+', b'"elapsed_ms":N'),
    (rb"([Ee]lapsed\W+)[0-9.]+ s", rb"\1N s"),
]


def velhost(*arguments, statuses=(0, 3)):
    done = subprocess.run([VELHOST, *arguments], capture_output=True, check=False)
    assert done.returncode in statuses, (arguments, done.returncode, done.stderr.decode())
    return done


def without_run(text):
    for pattern, replacement in OF_ONE_RUN:
        text = re.sub(pattern, replacement, text)
    return text


class Shown(unittest.TestCase):
    maxDiff = 2000

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def collected(self, server, form, *options):
        path = self.folder / f"{server}.{form}"
        velhost("collect", "--sp", f"sim:{SERVERS / server}", "--format", form, "-o", path, *options,
                statuses=(0, 1, 3))
        return path

    def test_each_form_is_what_collect_prints(self):
        for server in ("demo.toml", "failing.toml"):
            json_text = self.collected(server, "json", "--label", "rack=r1")
            for form in FORMS:
                with self.subTest(server=server, form=form):
                    expected = self.collected(server, form, "--label", "rack=r1").read_bytes()
                    if form != "json":
                        shown = velhost("show", json_text, "--format", form, statuses=(0,)).stdout
                        self.assertEqual(without_run(shown).decode(), without_run(expected).decode())

    def test_json_has_the_same_bytes(self):
        for server in ("demo.toml", "failing.toml"):
            for options in ([], ["--only-findings"], ["--label", "a=\u00e9\"\\"], ["KROSG_DCAPFile", "KROSG_DCAPFile"]):
                path = self.collected(server, "json", *options)
                with self.subTest(server=server, options=options):
                    self.assertEqual(velhost("show", path, statuses=(0,)).stdout, path.read_bytes())

    def test_lines_become_the_document_of_the_same_run(self):
        lines = self.collected("demo.toml", "jsonl")
        document = json.loads(velhost("show", lines, "--format", "json", statuses=(0,)).stdout)
        summary = json.loads(lines.read_text(encoding="utf-8").splitlines()[-1])
        for name in ("run", "source", "schema", "reasons", "exchanges", "unread", "findings", "status"):
            self.assertEqual(document[name], summary[name])
        again = self.folder / "again.json"
        again.write_text(json.dumps(document))
        self.assertEqual(velhost("show", again, "--format", "jsonl", statuses=(0,)).stdout, lines.read_bytes())

    def test_several_are_an_array(self):
        paths = [self.collected("demo.toml", "json"), self.collected("failing.toml", "json")]
        several = json.loads(velhost("show", *paths, "--format", "json", statuses=(0,)).stdout)
        self.assertEqual(several, [json.loads(path.read_bytes()) for path in paths])
        for form in ("mof", "cimxml"):
            velhost("show", *paths, "--format", form, statuses=(64,))

    def test_a_recording_is_replayed(self):
        recording = self.folder / "run.jsonl"
        path = self.collected("demo.toml", "json", "--record", recording)
        shown = json.loads(velhost("show", recording, "--format", "json", statuses=(0,)).stdout)
        self.assertEqual(shown["instances"], json.loads(path.read_bytes())["instances"])
        self.assertEqual(shown["source"]["sp"], [f"replay:{recording}"])

    def test_a_class_that_the_schema_lacks_is_an_error(self):
        path = self.collected("demo.toml", "json")
        document = json.loads(path.read_bytes())
        other = "warning: " + str(path) + ": the result was collected with another schema"
        document["schema"]["sha256"] = "0" * 64
        path.write_text(json.dumps(document))
        self.assertIn(other, velhost("show", path, "--format", "mof", statuses=(0,)).stderr.decode())
        path.write_text(json.dumps(document).replace("KROSG_T4_MEMCTL", "KROSG_T9_MEMCTL"))
        self.assertIn("the schema has no class", velhost("show", path, "--format", "mof", statuses=(65,)).stderr.decode())

    def test_a_cut_result_is_shown_up_to_the_cut(self):
        path = self.collected("demo.toml", "json")
        text = path.read_bytes()
        path.write_bytes(text[:len(text) // 2])
        done = velhost("show", path, "--format", "json", statuses=(0,))
        shown = json.loads(done.stdout)
        self.assertEqual((shown["status"], shown["exit_status"]), ("failed", 65))
        self.assertIn("warning: the result was cut here", done.stderr.decode())
        whole = json.loads(text)["instances"]
        self.assertEqual(shown["instances"], whole[:len(shown["instances"])])
        self.assertLess(0, len(shown["instances"]))

    def test_the_same_file_may_not_be_the_output(self):
        path = self.collected("demo.toml", "json")
        velhost("show", path, "-o", path, statuses=(64,))


if __name__ == "__main__":
    unittest.main()
