"""Collections: values, output formats, files, failures, recordings."""

import json
import pathlib
import re
import unittest

from velhostcase import BRIDGE, SOURCE, VelhostCase

SERVER = """
machine_type = "@TYPE@"
[[bmc_node]]
[[bmc_node.register]]
chip = 1
address = 0x00ABCDEF
value = "01 02 03 04 05 06 07 08"
"""

# Address AB CD EF, then the value bytes 08 to 01, then zeros.
WIDE = [0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0]
NARROW_EIGHT_BYTE = [0xAB, 0xCD, 0xEF, 0x0C, 7, 6, 5, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF]
NARROW_LABELLED = [0xAB, 0xCD, 0xEF, 4, 3, 2, 3, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF]


class Values(VelhostCase):
    def value(self, machine_type, length):
        schema = self.schema({"Register": (0x00ABCDEF, length)})
        server = self.write("server.toml", SERVER.replace("@TYPE@", machine_type))
        document = self.collect("--schema", schema, "--sp", f"sim:{server}", BRIDGE)
        self.assertEqual(len(document["instances"]), 1)
        return document["instances"][0]["properties"]["Register"]

    def test_eight_byte_family(self):
        self.assertEqual(self.value("4411", 8), WIDE)
        self.assertEqual(self.value("4411", 4), NARROW_EIGHT_BYTE)

    def test_labelled_family(self):
        self.assertEqual(self.value("6203", 8), WIDE)
        self.assertEqual(self.value("6203", 4), NARROW_LABELLED)

    def test_machine_type_of_the_command_line_decides(self):
        schema = self.schema({"Register": (0x00ABCDEF, 4)})
        server = self.write("server.toml", SERVER.replace("@TYPE@", "6203"))
        document = self.collect("--schema", schema, "--sp", f"sim:{server}", "--machine-type", "4411", BRIDGE)
        self.assertEqual(document["machine_type"], "4411")
        self.assertEqual(document["instances"][0]["properties"]["Register"], NARROW_EIGHT_BYTE)


class DemoServer(VelhostCase):
    def test_answers_on_every_path(self):
        document = self.collect()
        classes = {instance["class"] for instance in document["instances"]}
        self.assertEqual(document["status"], "complete")
        self.assertEqual(len(document["instances"]), 25)
        self.assertIn("KROSG_J2_MEMCTL_StatisticData", classes)
        self.assertIn(BRIDGE, classes)
        self.assertEqual(document["instances"][-1]["class"], "KROSG_DCAPFile")
        self.assertEqual(document["exchanges"]["total"], 269)
        self.assertEqual(document["reasons"], [])
        self.assertEqual(document["unread"], [])
        self.assertEqual(document["exchanges"]["failed"], [
            {"class": BRIDGE, "key": BRIDGE + "/node0/instance2", "property": "InternalErrorLog", "address": "0x2D0140",
             "node": 0, "kind": "register", "completion_code": 0xCB}])

    def test_forms_carry_the_same_instances(self):
        document = self.collect()
        lines = self.run_velhost("collect", "--format", "jsonl").stdout.splitlines()
        from_lines = [json.loads(line) for line in lines]
        self.assertEqual(from_lines[-1]["kind"], "summary")
        self.assertEqual([(i["class"], i["properties"]) for i in from_lines[:-1]],
                         [(i["class"], i["properties"]) for i in document["instances"]])
        for form, mark in (("mof", "instance of KROSG_"), ("cimxml", "<INSTANCE CLASSNAME=\"KROSG_")):
            self.assertEqual(self.run_velhost("collect", "--format", form).stdout.count(mark), 25)

    def test_single_request_warns_of_what_stands_behind_the_capture_files(self):
        done = self.run_velhost("collect", "--single-request", "KROSG_DCAPFile", BRIDGE)
        self.assertEqual(done.returncode, 3)
        self.assertIn(f"not collected in a single request: {BRIDGE}", done.stderr)
        self.assertEqual({i["class"] for i in json.loads(done.stdout)["instances"]}, {"KROSG_DCAPFile"})

    def test_capture_files_are_written_raw(self):
        self.collect("--capture-dir", "captures", "KROSG_DCAPFile")
        names = sorted(path.name for path in (self.folder / "captures").iterdir())
        self.assertEqual(names, ["node1-cpu_err-0.bin", "node1-ioh_err-2.bin", "node1-zyn_err-4.bin",
                                 "node2-cpu_err-1.bin", "node2-ioh_err-3.bin", "node2-zyn_err-5.bin"])
        written = (self.folder / "captures" / "node1-cpu_err-0.bin").read_bytes()
        self.assertEqual(len(written), 349)
        self.assertTrue(written.startswith(b"DCAP"))


class Files(VelhostCase):
    def test_output_is_whole(self):
        self.collect_to("out.json", status=0)
        json.loads((self.folder / "out.json").read_text())
        self.assertEqual([path.name for path in self.folder.iterdir()], ["out.json"])

    def collect_to(self, path, status):
        done = self.run_velhost("collect", "--format", "json", "-o", path)
        self.assertEqual(done.returncode, status, done.stderr)
        return done

    def test_output_that_cannot_be_created(self):
        self.assertIn("missing/out.json", self.collect_to("missing/out.json", status=73).stderr)

    def test_full_disk(self):
        self.assertIn("/dev/full", self.collect_to("/dev/full", status=74).stderr)

    def test_closed_pipe_ends_quietly(self):
        done = self.run_shell('"$VELHOST" collect --format json | head -c 10')
        self.assertEqual(done.stderr, "")

    def run_shell(self, command):
        import os
        import subprocess
        return subprocess.run(["bash", "-c", command], capture_output=True, text=True, timeout=60, cwd=self.folder,
                              env=dict(os.environ))

    def test_trace_file(self):
        self.collect("--log", "trace.txt", "KROSG_DCAPFile")
        lines = (self.folder / "trace.txt").read_text().splitlines()
        self.assertEqual(lines[0], "debug Initializing Engineering Information Collector")
        self.assertEqual(lines[-1], "debug De-Initializing Engineering Information Collector")
        self.collect("--log", "trace.jsonl", "--log-format", "jsonl", "KROSG_DCAPFile")
        first = json.loads((self.folder / "trace.jsonl").read_text().splitlines()[0])
        self.assertEqual(first, {"severity": 3, "level": "debug",
                                 "message": "Initializing Engineering Information Collector"})

    def test_severities_on_standard_error(self):
        quiet = self.run_velhost("collect", "--sp", f"sim:{SOURCE}/servers/dot-command.toml", "KROSG_DCAPFile")
        self.assertNotIn("status ", quiet.stderr)
        status = self.run_velhost("-v", "collect", "--sp", f"sim:{SOURCE}/servers/dot-command.toml", "KROSG_DCAPFile")
        # Once for each kind of capture file.
        self.assertRegex(status.stderr, "^velhost: schema: ")
        plan = self.run_velhost("-v", "collect", "--single-request", BRIDGE, "KROSG_J2_MEMCTL_StatisticData").stderr
        self.assertIn("velhost: plan: 1 request, 36 register reads, 2 dot commands\n", plan)
        trace = "".join(line for line in status.stderr.splitlines(True) if not line.startswith("velhost: "))
        self.assertEqual(trace, "status No eQT/BMC on the system. TORGA log is not available.\n" * 3)
        self.assertIn("debug ", self.run_velhost("collect", "-vv", BRIDGE).stderr)
        self.assertIn("verbose ", self.run_velhost("collect", "-vvv", BRIDGE).stderr)


class Failures(VelhostCase):
    def test_schema_without_what_the_collector_needs(self):
        schema = self.write("schema.mof", "class KROSG_DCAPFile { string FileName; };\n")
        document = self.collect("--schema", schema, "KROSG_DCAPFile", status=3)
        self.assertEqual(document["status"], "partial")
        self.assertEqual(document["reasons"][0]["class"], "KROSG_DCAPFile")
        self.assertEqual(document["reasons"][0]["message"],
                         "the collector did not find a base class or superclass that it needs; "
                         "\"velhost check\" shows what the schema lacks (assertion px != 0)")

    def test_class_without_the_qualifier_that_the_collector_reads(self):
        base = pathlib.Path(self.schema({"Register": (0x00ABCDEF, 8)})).read_text(encoding="utf-8")
        schema = self.write("schema.mof", re.sub(r"SupportedMachineTypes *\{[^}]*\} *,", "", base))
        document = self.collect("--schema", schema, BRIDGE, status=3)
        self.assertEqual(document["reasons"],
                         [{"code": "request-failed", "class": BRIDGE, "count": 1,
                           "message": "the collector did not find a qualifier that it needs; \"velhost check\" "
                                      "shows what the schema lacks (assertion px != 0)"},
                          {"code": "not-served", "class": BRIDGE, "count": 1, "message": "not served: it lists no machine types"}])


class Recordings(VelhostCase):
    def record(self):
        return self.collect("--record", "run.jsonl", "--log", "first.txt")

    def test_replay_gives_the_same_instances_and_trace(self):
        first = self.record()
        second = self.collect("--sp", "replay:run.jsonl", "--log", "second.txt")
        self.assertEqual(first["instances"], second["instances"])
        self.assertEqual((self.folder / "first.txt").read_bytes(), (self.folder / "second.txt").read_bytes())

    def test_a_recording_describes_its_run(self):
        self.collect("--record", "run.jsonl", "--single-request", BRIDGE, BRIDGE)
        first = json.loads((self.folder / "run.jsonl").read_text().splitlines()[0])
        self.assertEqual((first["version"], first["classes"], first["single_request"]), (2, [BRIDGE, BRIDGE], True))
        self.assertEqual((first["source"]["sp"], first["source"]["simulated"]), (["sim"], True))
        self.collect("--sp", "replay:run.jsonl", "--record", "again.jsonl", "--single-request", BRIDGE, BRIDGE)
        again = json.loads((self.folder / "again.jsonl").read_text().splitlines()[0])
        self.assertEqual((again["source"]["sp"], again["source"]["simulated"]), (["replay:run.jsonl"], True))
        self.assertEqual(again["source"]["recorded"], first["started"])

    def test_a_recording_of_version_1_is_replayed_with_a_warning(self):
        self.collect("--record", "run.jsonl", BRIDGE)
        first, rest = (self.folder / "run.jsonl").read_text().split("\n", 1)
        head = json.loads(first)
        head["version"] = 1
        for name in ("source", "classes", "single_request", "schema_sha256"):
            del head[name]
        self.write("old.jsonl", json.dumps(head, separators=(",", ":")) + "\n" + rest)
        done = self.run_velhost("collect", "--sp", "replay:old.jsonl", BRIDGE)
        self.assertEqual((done.returncode, done.stderr), (
            0, "velhost: warning: old.jsonl: a version 1 recording does not say whether its service processor was "
               "simulated\n"))

    def test_another_request_is_a_mismatch_with_its_line(self):
        self.record()
        done = self.run_velhost("collect", "--sp", "replay:run.jsonl", "KROSG_DCAPFile")
        self.assertEqual(done.returncode, 65)
        self.assertIn("run.jsonl:2:", done.stderr)
        json.loads(done.stdout)

    def test_a_run_without_an_exchange_leaves_a_recording_alone(self):
        existing = pathlib.Path(self.write("old.jsonl", "old"))
        for name in ("old.jsonl", "new.jsonl"):
            # Without nodes there are no capture files.
            server = self.write("server.toml", 'machine_type = "6203"\n')
            self.run_velhost("collect", "--sp", f"sim:{server}", "--record", name, "KROSG_DCAPFile")
        self.assertEqual(existing.read_text(), "old")
        self.assertFalse((self.folder / "new.jsonl").exists())

    def test_cut_recording_replays_up_to_its_last_whole_line(self):
        self.record()
        whole = (self.folder / "run.jsonl").read_bytes()
        (self.folder / "cut.jsonl").write_bytes(whole[:len(whole) // 2])
        done = self.run_velhost("collect", "--sp", "replay:cut.jsonl")
        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertIn("warning", done.stderr)
        self.assertTrue(json.loads(done.stdout)["instances"])


if __name__ == "__main__":
    unittest.main()
