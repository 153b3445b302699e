#!/usr/bin/env python3
"""velhost check: schemas, server files, recordings, and files that are none of them."""

import json
import subprocess
import unittest

from velhostcase import BRIDGE, SOURCE, VELHOST, VelhostCase

SERVER = 'machine_type = "6203"\n[[bmc_node]]\n'
BAD_SERVER = 'machine_type = "6203"\n[[bmc_node]]\ntimestamp = "12 34"\n'
BAD_SERVER_LINE = (':3:13: error: found 2 bytes in "timestamp", expected 4\n'
                   '  timestamp = "12 34"\n              ^\n')
BAD_MOF = "class A : B {};\n"
BAD_MOF_LINE = ":1:11: error: the class 'B' is not declared\n  class A : B {};\n            ^\n"
EXPECTED = ", expected a schema, server file or recording"


class Check(VelhostCase):
    def checks(self, status, text, *files):
        done = self.run_velhost("check", *files)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (status, text, ""))

    def record(self, *arguments):
        self.run_velhost("collect", "--record", "run.jsonl", *arguments)
        return (self.folder / "run.jsonl").read_bytes()

    def test_the_shipped_files_have_no_findings(self):
        servers = sorted(str(path) for path in (SOURCE / "servers").glob("*.toml"))
        self.assertIn(str(SOURCE / "servers" / "failing.toml"), servers)
        self.checks(0, "no findings\n", *servers, str(SOURCE / "schema"))

    def test_a_server_file(self):
        self.write("good.toml", SERVER)
        self.checks(0, "no findings\n", "good.toml")
        self.write("bad.toml", BAD_SERVER)
        self.checks(65, "bad.toml" + BAD_SERVER_LINE + "1 error, 0 warnings\n", "bad.toml")

    def test_a_server_file_whose_data_file_is_missing(self):
        self.write("server.toml", 'machine_type = "6203"\n[dot]\n[[dot.service_processor]]\nblock_file = "none.bin"\n')
        self.checks(65, 'server.toml:4:14: error: cannot open none.bin: No such file or directory\n'
                    '  block_file = "none.bin"\n               ^\n1 error, 0 warnings\n', "server.toml")

    def test_a_recording(self):
        recording = self.record(BRIDGE)
        self.checks(0, "no findings\n", "run.jsonl")
        header, first = recording.split(b"\n")[:2]
        (self.folder / "bad.jsonl").write_bytes(header + b'\n{"kind":"ipmy"}\n')
        done = self.run_velhost("check", "bad.jsonl")
        self.assertEqual((done.returncode, done.stdout.split(" error: ")[0]), (65, "bad.jsonl:2:9:"))
        (self.folder / "cut").write_bytes(header + b"\n" + first + b"\n{")
        self.checks(65, "cut:3:1: warning: the recording was cut in this line; it is used up to the line before\n"
                    "0 errors, 1 warning\n", "cut")

    def test_all_mof_is_one_schema_and_the_others_are_each_their_own(self):
        (self.folder / "b.text").write_text("class B {};\n")
        self.write("a.mof", BAD_MOF)
        self.write("bad.toml", BAD_SERVER)
        done = self.run_velhost("check", "bad.toml", "a.mof", "bad.toml", "b.text")
        self.assertEqual(done.returncode, 65)
        server = "bad.toml" + BAD_SERVER_LINE
        self.assertTrue(done.stdout.startswith(server + "a.mof, b.text: error: the class "), done.stdout)
        self.assertTrue(done.stdout.endswith(server + "6 errors, 0 warnings\n"), done.stdout)

    def test_a_file_of_unknown_kind_is_mof(self):
        self.write("schema.txt", BAD_MOF)
        self.checks(65, "schema.txt" + BAD_MOF_LINE + "1 error, 0 warnings\n", "schema.txt")

    def test_the_content_decides_before_the_suffix(self):
        (self.folder / "run.mof").write_bytes(self.record(BRIDGE))
        self.checks(0, "no findings\n", "run.mof")

    def test_results_are_named(self):
        for form in ("json", "jsonl", "table", "cimxml"):
            self.write(f"result.{form}", self.run_velhost("collect", "--format", form, BRIDGE).stdout)
        hint = '; "velhost collect --record FILE" makes a recording\n'
        for name, found in (("json", f"a result{EXPECTED}{hint}"), ("jsonl", f"a result{EXPECTED}{hint}"),
                            ("table", f"a result{EXPECTED}{hint}"), ("cimxml", f"a result in CIM-XML{EXPECTED}\n")):
            self.checks(65, f"result.{name}: error: found {found}1 error, 0 warnings\n", f"result.{name}")

    def test_a_result_in_mof_is_checked_with_its_schema(self):
        self.write("result.mof", self.run_velhost("collect", "--format", "mof", BRIDGE).stdout)
        self.checks(65, "result.mof: error: found a result in MOF without its schema, expected the schema's files too\n"
                    "1 error, 0 warnings\n", "result.mof")
        self.checks(0, "no findings\n", f"{SOURCE}/schema", "result.mof")

    def test_files_of_other_kinds_are_named(self):
        (self.folder / "bundle.mof").write_bytes(b"\x1f\x8b\x08\x00")
        self.checks(65, f"bundle.mof: error: found a compressed file{EXPECTED}; bundles cannot be read yet\n"
                    "1 error, 0 warnings\n", "bundle.mof")
        self.write("page", "<?xml version='1.0'?>\n<page/>\n")
        self.checks(65, f"page: error: found an XML file{EXPECTED}\n1 error, 0 warnings\n", "page")

    def test_json_has_the_place_of_each_finding(self):
        self.write("bad.toml", BAD_SERVER)
        (self.folder / "bundle").write_bytes(b"\x1f\x8b")
        done = self.run_velhost("check", "--format", "json", "bundle", "bad.toml")
        self.assertEqual(done.returncode, 65)
        self.assertEqual(json.loads(done.stdout), {
            "kind": "schemacheck", "format_version": 1, "findings": [
                {"severity": "error", "file": "bundle", "line": None, "column": None,
                 "message": f"found a compressed file{EXPECTED}; bundles cannot be read yet"},
                {"severity": "error", "file": "bad.toml", "line": 3, "column": 13,
                 "message": 'found 2 bytes in "timestamp", expected 4'}],
            "errors": 2, "warnings": 0})

    def test_a_file_that_cannot_be_read(self):
        for name in ("missing.mof", "missing.toml", "missing"):
            done = self.run_velhost("check", name)
            self.assertEqual((done.returncode, done.stdout, done.stderr),
                             (66, "", f"velhost: cannot open {name}: No such file or directory\n"))

    def test_a_pipe_is_recognised_and_read_once(self):
        recording = self.record(BRIDGE).decode()
        for text, status, output in ((recording, 0, "no findings\n"), (BAD_MOF, 65, "/dev/stdin" + BAD_MOF_LINE +
                                                                       "1 error, 0 warnings\n")):
            done = subprocess.run([VELHOST, "check", "/dev/stdin"], input=text, capture_output=True, text=True,
                                  timeout=120)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (status, output, ""))

    def test_names_that_look_like_options(self):
        self.write("--format.toml", BAD_SERVER)
        self.checks(65, "--format.toml" + BAD_SERVER_LINE + "1 error, 0 warnings\n", "--", "--format.toml")


if __name__ == "__main__":
    unittest.main()
