"""A recording as an image of its server."""

import json
import unittest

from smallserver import BLOCK, FAILING, FILES, IMAGE, SMALL, SMALL_SCHEMA, SmallServerCase, reason
from velhostcase import BRIDGE


class Image(SmallServerCase):
    def test_the_same_request_gives_the_same_result(self):
        recorded = self.collect("--sp", FAILING, "--record", "run.jsonl", "--log", "first.txt", status=3)
        image = self.collect("--sp", "image:run.jsonl", "--log", "second.txt", status=3)
        self.assertEqual(self.without_run(image), self.without_run(recorded))
        self.assertEqual((self.folder / "first.txt").read_bytes(), (self.folder / "second.txt").read_bytes())
        self.assertIn("lost", str(image["exchanges"]["failed"]))

    def test_its_source_is_that_of_the_recording(self):
        self.collect(*SMALL, "--record", "run.jsonl", FILES, status=3)
        document = self.collect(*IMAGE, status=3)
        self.assertEqual(document["source"], {"sp": ["image:run.jsonl"], "target": "image:run.jsonl", "simulated": True,
                                              "recorded": self.head()["started"]})
        self.assertEqual(document["machine_type"], "6203")

    def test_classes_patterns_and_a_single_request_in_any_order(self):
        self.collect(*SMALL, "--record", "run.jsonl", status=3)
        for classes in ([FILES], [BRIDGE], [BLOCK], [FILES, BRIDGE], [BRIDGE, BRIDGE], ["*_MEMCTL_*"], ["*"],
                        ["--single-request", BRIDGE, FILES], ["--single-request", "krosg_x*", "*BRIDGE*"]):
            status = 0 if classes in ([BRIDGE], [BRIDGE, BRIDGE]) else 3
            simulated = self.collect(*SMALL, *classes, status=status)
            image = self.collect(*IMAGE, *classes, status=status)
            self.assertEqual(self.without_run(image), self.without_run(simulated), classes)
            self.assertTrue(image["instances"])

    def test_a_corrected_schema(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        self.write("small.mof", SMALL_SCHEMA.replace("[Offset(0xABCDEF), MaxLen(4)] uint8 Count[]",
                                                     "[Offset(0xABCDEF), MaxLen(8)] uint8 Errors[]"))
        done = self.run_velhost("collect", *IMAGE, "--format", "json")
        self.assertEqual((done.returncode, done.stderr), (0, "velhost: warning: the recording was made with another schema\n"))
        registers = json.loads(done.stdout)["instances"][0]["registers"]
        self.assertEqual((registers["Errors"]["width"], registers["Errors"]["value"]), (64, "0x0000000000000100"))

    def test_what_was_not_recorded_is_named_so(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        self.write("small.mof", SMALL_SCHEMA.replace("uint8 Log[];", "uint8 Log[]; [Offset(0xABCDF1), MaxLen(8)] uint8 New[];"))
        document = self.collect(*IMAGE, "*", status=3)
        self.assertEqual(document["reasons"], [
            reason("block-unread", BLOCK, 2, "2 of 2 register blocks were not received"),
            reason("register-unread", BRIDGE, 2, "2 of 6 registers were not read"),
            reason("file-unread", FILES, 3, "3 of 3 capture files are missing or incomplete")])
        self.assertEqual(document["instances"][0]["missing"], [
            {"property": "Log", "address": "0xABCDF0", "completion_code": 203},
            {"property": "New", "address": "0xABCDF1", "not_recorded": True}])
        failed = document["exchanges"]["failed"]
        self.assertEqual([each.get("not_recorded") for each in failed if each["class"] != BRIDGE], [True] * 5)

    def test_a_cut_recording_is_warned_of(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        text = (self.folder / "run.jsonl").read_text()
        self.write("run.jsonl", text[:-1])
        done = self.run_velhost("collect", *IMAGE, "--format", "json")
        count = text.count("\n")
        self.assertEqual((done.returncode, done.stderr), (
            3, f"velhost: partial: {BRIDGE}: 1 of 4 registers was not read\n"
               f"velhost: run.jsonl:{count}:1: warning: the recording was cut in this line; it is used up to the line "
               "before\n"))

    def test_from_a_pipe(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        with open(self.folder / "run.jsonl", encoding="utf-8") as recording:
            done = self.run_velhost("collect", "--schema", "small.mof", "--sp", "image:/dev/stdin", "--format", "json",
                                    stdin=recording)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_it_stands_alone_and_takes_no_time(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        done = self.run_velhost("collect", *IMAGE, "--sp", "sim")
        self.assertEqual((done.returncode, done.stderr), (
            64, "velhost: --sp image:run.jsonl and --sp sim cannot be used together; only several inband: or several "
                "lan: can\n"))
        done = self.run_velhost("collect", *IMAGE, "--replay-timing", "--format", "json")
        self.assertEqual((done.returncode, done.stderr),
                         (0, "velhost: warning: --replay-timing has no effect with --sp image\n"))

    def test_its_recording_is_an_image_too(self):
        first = self.collect(*SMALL, "--record", "run.jsonl", status=3)
        self.collect(*IMAGE, "--record", "again.jsonl", status=3)
        again = self.collect("--schema", "small.mof", "--sp", "image:again.jsonl", status=3)
        self.assertEqual(self.without_run(again), self.without_run(first))
        self.assertEqual(self.head("again.jsonl")["source"]["recorded"], self.head()["started"])


if __name__ == "__main__":
    unittest.main()
