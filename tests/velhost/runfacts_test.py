"""What a result says of its run, and how the run ends."""

import json
import unittest

from smallserver import FAILING, FILES, SMALL_SCHEMA, SMALL_SERVER, T4_BRIDGE, reason
from velhostcase import BRIDGE, VelhostCase


class Source(VelhostCase):
    """What a result says of its run, its server and its schema."""

    def test_a_replay_is_as_simulated_as_what_was_recorded(self):
        self.collect("--record", "run.jsonl", FILES)
        header = json.loads((self.folder / "run.jsonl").read_text().splitlines()[0])
        document = self.collect("--sp", "replay:run.jsonl", FILES)
        self.assertEqual(document["source"], {"sp": ["replay:run.jsonl"], "target": "replay:run.jsonl", "simulated": True,
                                              "recorded": header["started"]})
        self.assertEqual((header["source"]["target"], header["source"]["simulated"]), ("sim", True))
        self.assertEqual((header["classes"], header["single_request"]), ([FILES], False))
        self.assertEqual(header["schema_sha256"], document["schema"]["sha256"])

    def test_a_replay_with_another_schema_is_warned_of(self):
        self.write("small.mof", SMALL_SCHEMA)
        self.write("small.toml", SMALL_SERVER.replace("size = 12", ""))
        self.collect("--schema", "small.mof", "--sp", "sim:small.toml", "--record", "run.jsonl", FILES)
        self.write("small.mof", SMALL_SCHEMA + "class Other {};\n")
        replay = ["collect", "--sp", "replay:run.jsonl", "--schema", "small.mof", "--format", "json", FILES]
        self.assertEqual(self.run_velhost(*replay).stderr, "velhost: warning: the recording was made with another schema\n")
        self.write("small.mof", SMALL_SCHEMA)
        self.assertEqual(self.run_velhost(*replay).stderr, "")

    def test_labels(self):
        document = self.collect("--label", "rack=7", "--label", "room=", FILES)
        self.assertEqual(document["run"]["labels"], {"rack": "7", "room": ""})
        self.assertTrue(document["schema"]["example"])

    def test_every_line_names_its_run(self):
        done = self.run_velhost("collect", "--format", "jsonl", "--label", "rack=7", FILES)
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual({line["run_id"] for line in lines}, {lines[-1]["run"]["id"]})
        self.assertEqual([line["labels"] for line in lines], [{"rack": "7"}] * 7)


class EndOfRun(VelhostCase):
    """The exit status is the one in the result, whatever fails at the end."""

    def run_and_read(self, *arguments):
        done = self.run_velhost("collect", "--format", "json", *arguments)
        document = json.loads(done.stdout)
        self.assertEqual(document["exit_status"], done.returncode)
        return done.returncode, document, done.stderr

    def test_a_trace_or_recording_that_cannot_be_written(self):
        for option in ("--log", "--record"):
            status, document, errors = self.run_and_read(option, "/dev/full", BRIDGE)
            self.assertEqual((status, document["status"]), (74, "complete"))
            self.assertNotIn("message", document)
            self.assertIn("/dev/full", errors)

    def test_it_stays_partial_when_something_is_missing(self):
        status, document, errors = self.run_and_read("--log", "/dev/full", "--sp", FAILING, T4_BRIDGE)
        self.assertEqual((status, document["status"]), (74, "partial"))
        self.assertIn(f"velhost: partial: {T4_BRIDGE}: ", errors)

    def test_a_mismatch_counts_less_than_a_failed_write(self):
        self.collect("--record", "run.jsonl", FILES)
        status, document, errors = self.run_and_read("--sp", "replay:run.jsonl", BRIDGE)
        self.assertEqual((status, document["status"]), (65, "failed"))
        self.assertRegex(document["message"], r"^run\.jsonl:2:1: error: found .*, expected ")
        self.assertIn(document["message"], errors)
        self.assertEqual(document["reasons"], [
            reason("nothing-read", None, 1, "no instance was delivered"),
            reason("register-unread", BRIDGE, 36, "36 of 36 registers were not read")])
        self.assertEqual({failed["not_recorded"] for failed in document["exchanges"]["failed"]}, {True})
        status, document, errors = self.run_and_read("--log", "/dev/full", "--sp", "replay:run.jsonl", BRIDGE)
        self.assertEqual((status, document["status"]), (74, "failed"))
        self.assertRegex(document["message"], r"^run\.jsonl:2:1: error: found ")
        self.assertIn("run.jsonl:2:1: error: ", errors)

    def test_what_a_recording_does_not_have_is_named_so(self):
        self.collect("--record", "run.jsonl", BRIDGE)
        lines = (self.folder / "run.jsonl").read_bytes().splitlines(keepends=True)
        (self.folder / "run.jsonl").write_bytes(b"".join(lines[:13]))
        status, document, _ = self.run_and_read("--sp", "replay:run.jsonl", BRIDGE)
        self.assertEqual((status, document["status"]), (3, "partial"))
        # Twelve registers, then nothing: neither times nor the other two bridges.
        self.assertEqual(document["reasons"], [
            reason("register-unread", BRIDGE, 24, "24 of 36 registers were not read"),
            reason("time-unread", BRIDGE, 1, "the time of 1 instance was not read")])
        self.assertEqual(document["instances"][0]["missing"], [{"property": "StatisticTime", "not_recorded": True}])


if __name__ == "__main__":
    unittest.main()
