"""The classes that a recording is asked for."""

import json
import unittest

from smallserver import BLOCK, FILES, IMAGE, REPLAY, SMALL, SMALL_SCHEMA, T4_BRIDGE, SmallServerCase
from velhostcase import BRIDGE


class RecordedClasses(SmallServerCase):
    def asked(self, *arguments, status=3):
        """The classes that a collection asked for, in order, and whether in one request."""
        self.collect(*arguments, "--record", "again.jsonl", status=status)
        head = self.head("again.jsonl")
        return head["classes"], head["single_request"]

    def test_are_asked_for_again_in_the_recorded_way(self):
        for given in ([FILES, BRIDGE], [BRIDGE, FILES, BRIDGE], ["--single-request", BRIDGE, BLOCK, FILES], [BLOCK]):
            recorded = self.collect(*SMALL, "--record", "run.jsonl", *given, status=3)
            expected = ([word for word in given if not word.startswith("-")], "--single-request" in given)
            for source in (REPLAY, IMAGE):
                self.assertEqual(self.asked(*source), expected)
                self.assertEqual(self.without_run(self.collect(*source, status=3)), self.without_run(recorded))

    def test_unless_others_are_named(self):
        self.collect(*SMALL, "--record", "run.jsonl", "--single-request", BRIDGE, FILES, status=3)
        self.assertEqual(self.asked(*REPLAY, BRIDGE, status=0), ([BRIDGE], False))
        self.assertEqual(self.asked(*IMAGE, FILES), ([FILES], False))
        self.assertEqual(self.asked(*IMAGE, "*"), ([BLOCK, BRIDGE, FILES], False))
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE, FILES, status=3)
        self.assertEqual(self.asked(*REPLAY, "--single-request"), ([BRIDGE, FILES], True))

    def test_a_class_that_is_not_served_is_asked_for_again(self):
        recorded = self.collect("--record", "run.jsonl", "--machine-type", "6203", T4_BRIDGE, "KROSG_J1_MEMCTL_StatisticData",
                                status=3)
        replayed = self.collect("--sp", "replay:run.jsonl", status=3)
        self.assertEqual(self.without_run(replayed), self.without_run(recorded))
        self.assertEqual(replayed["reasons"][0]["code"], "not-served")

    def test_are_in_the_plan(self):
        self.collect(*SMALL, "--record", "run.jsonl", "--single-request", BRIDGE, FILES, status=3)
        self.write("small.mof", SMALL_SCHEMA + "class Other {};\n")
        for source in (REPLAY, IMAGE):
            done = self.run_velhost("collect", "--dry-run", "--format", "json", *source)
            self.assertEqual((done.returncode, done.stderr),
                             (0, "velhost: warning: the recording was made with another schema\n"))
            self.assertEqual([each["class"] for each in json.loads(done.stdout)["classes"]], [BRIDGE, FILES])

    def test_that_the_schema_lacks_are_a_usage_error(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        self.write("small.mof", SMALL_SCHEMA.replace(BRIDGE, "KROSG_T4_PCIIOBRIDGE_StatisticData"))
        for source in (REPLAY, IMAGE):
            done = self.run_velhost("collect", *source, "--format", "json")
            self.assertEqual((done.returncode, done.stdout, done.stderr), (64, "", (
                "velhost: warning: the recording was made with another schema\n"
                f'velhost: the recording was made of the class "{BRIDGE}", which the schema does not have; name the '
                "classes to collect\n")))

    def test_of_version_1_are_unknown(self):
        self.collect(*SMALL, "--record", "run.jsonl", BRIDGE)
        first, rest = (self.folder / "run.jsonl").read_text().split("\n", 1)
        head = json.loads(first)
        for name in ("source", "classes", "single_request", "schema_sha256"):
            del head[name]
        self.write("run.jsonl", json.dumps({**head, "version": 1}) + "\n" + rest)
        document = self.collect(*IMAGE, status=3)
        self.assertEqual([each["class"] for each in document["reasons"]], [BLOCK, FILES])
        self.assertEqual([each["class"] for each in document["instances"]], [BRIDGE])
        self.assertFalse(document["source"]["simulated"])


if __name__ == "__main__":
    unittest.main()
