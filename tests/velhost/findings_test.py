"""What is wrong with a server, from its schema to the exit status."""

import json
import unittest

from velhostcase import BRIDGE, SCHEMA, VelhostCase

FILES = "KROSG_DCAPFile"
# Bit 0 of the status is fatal, bit 1 an error, bit 2 a masked error; the counter says how many were corrected.
REGISTERS = """[Offset(0x10), MaxLen(4), Role("errors"), MaskedBy("Mask"), FatalBy("Fatal"),
   Fields{"0 Lost link", "1 Timeout", "2 Retry"}, Evidence{"Log"}] uint8 Status[];
  [Offset(0x20), MaxLen(4), Role("mask")] uint8 Mask[];
  [Offset(0x30), MaxLen(4), Role("severity")] uint8 Fatal[];
  [Offset(0x40), MaxLen(4), Role("errors"), Severity("corrected"), Fields{"7:0 Lane"}] uint8 Corrected[];
  [Offset(0x50), MaxLen(8), Role("log")] uint8 Log[];"""
MEANING = "".join(f"Qualifier {name} : {type}, Scope(property);\n" for name, type in (
    ("Role", "string"), ("Severity", "string"), ("MaskedBy", "string"), ("FatalBy", "string"), ("Fields", "string[]"),
    ("Evidence", "string[]")))
LOST = '[[fault]]\non = "register"\nnth = 5\nlost = true\n'


class Findings(VelhostCase):
    def setUp(self):
        super().setUp()
        self.write("schema.mof", MEANING + SCHEMA.replace("@COUNT@", "2").replace("@REGISTERS@", REGISTERS))

    def serve(self, *chips, faults=""):
        """A server whose chips have these values of Status and Corrected; bit 2 is masked, and bit 0 is fatal."""
        text = 'machine_type = "6203"\n[[bmc_node]]\ntimestamp = "12 34 56 78"\n'
        for chip, (status, corrected) in enumerate(chips, 1):
            for address, value in ((0x10, status), (0x20, 4), (0x30, 1), (0x40, corrected), (0x50, 0xAB)):
                text += (f'[[bmc_node.register]]\nchip = {chip}\naddress = {address}\n'
                         f'value = "{value:02x} 00 00 00 00 00 00 00"\n')
        self.write("server.toml", text + faults)

    ARGUMENTS = ("--schema", "schema.mof", "--sp", "sim:server.toml", BRIDGE)

    def collected(self, *arguments, status=0):
        return self.collect(*self.ARGUMENTS, *arguments, status=status)

    def table(self, *arguments, status=0):
        done = self.run_velhost("collect", "--format", "table", *self.ARGUMENTS, *arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout


class Result(Findings):
    def test_has_the_findings_of_every_instance_from_the_worst(self):
        self.serve((6, 3), (1, 0))
        document = self.collected()
        self.assertEqual([(one["key"][-9:], one["register"], one["bits"], one["name"], one["value"], one["severity"],
                           one["masked"]) for one in document["findings"]],
                         [("instance1", "Status", "0", "Lost link", 1, "fatal", False),
                          ("instance0", "Status", "1", "Timeout", 1, "error", False),
                          ("instance0", "Corrected", "7:0", "Lane", 3, "corrected", False),
                          ("instance0", "Status", "2", "Retry", 1, "error", True)])
        self.assertEqual(document["findings"][0]["evidence"], {"Log": "0x00000000000000AB"})
        self.assertEqual(document["findings"][0]["origin"]["chip"], 2)
        self.assertEqual(document["instances"][0]["registers"]["Status"]["role"], "errors")
        self.assertEqual(document["instances"][0]["registers"]["Status"]["fields"],
                         [{"bits": "1", "name": "Timeout", "value": 1}, {"bits": "2", "name": "Retry", "value": 1}])

    def test_the_last_lines_of_the_table_are_the_worst_findings(self):
        self.serve((6, 3), (1, 0))
        self.assertTrue(self.table().endswith(
            "  Result        complete\n"
            "  Findings      1 fatal, 1 error, 1 corrected; 1 masked\n"
            "    FATAL      Lost link: KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance1,\n"
            "               chip 2\n"
            "    ERROR      Timeout: KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip\n"
            "               1\n"
            "    CORRECTED  Lane: 3: KROSG_VO_PCIIOBRIDGE_StatisticData node0/instance0, chip\n"
            "               1\n"))

    def test_a_sound_server_has_none(self):
        self.serve((0, 0), (0, 0))
        self.assertEqual(self.collected()["findings"], [])
        self.assertIn("No error is set in the 4 error registers that were read.\n", self.table())

    def test_a_register_that_was_not_read_has_none(self):
        self.serve((7, 3), (0, 0), faults='[[fault]]\non = "register"\nnth = 1\nlost = true\n')
        document = self.collected(status=3)
        self.assertEqual([one["register"] for one in document["findings"]], ["Corrected"])

    def test_a_mask_that_was_not_read_masks_nothing(self):
        self.serve((4, 0), (0, 0), faults='[[fault]]\non = "register"\nnth = 2\nlost = true\n')
        finding = self.collected(status=3)["findings"][0]
        self.assertEqual((finding["masked"], finding["unknown"]), (False, ["Mask"]))
        self.assertIn("judged without Mask, which could not be read\n", self.table(status=3))


class OnlyFindings(Findings):
    def test_leaves_out_instances_without_one(self):
        self.serve((0, 0), (4, 0))
        document = self.collected("--only-findings")
        self.assertIs(document["filtered"], True)
        self.assertEqual([one["key"] for one in document["instances"]], [BRIDGE + "/node0/instance1"])
        self.assertEqual([one["masked"] for one in document["findings"]], [True])
        self.assertNotIn("filtered", self.collected())
        shown = self.table("--only-findings")
        self.assertIn("node0/instance1\n", shown)
        self.assertIn("\n  Shown         only instances with a finding\n", shown)
        self.assertNotIn("node0/instance0\n", shown)

    def test_keeps_what_could_not_be_read(self):
        self.serve((0, 0), (0, 0), faults=LOST)
        document = self.collected("--only-findings", status=3)
        self.assertEqual([one["key"] for one in document["instances"]], [BRIDGE + "/node0/instance0"])
        self.assertEqual([one["property"] for one in document["exchanges"]["failed"]], ["Log"])
        self.assertEqual([one["code"] for one in document["reasons"]], ["register-unread"])
        self.assertIn("    node0/instance0  Log  0x000050  lost: no answer\n", self.table("--only-findings", status=3))

    def test_has_two_forms(self):
        for form in ("jsonl", "mof", "cimxml"):
            done = self.run_velhost("collect", "--only-findings", "--format", form)
            self.assertEqual(done.returncode, 64)
            self.assertIn(f"--only-findings prints a table or json, not {form}\n", done.stderr)

    def test_has_no_effect_on_a_plan(self):
        self.serve((0, 0), (0, 0))
        done = self.run_velhost("collect", "--dry-run", "--only-findings", "--fail-on", "error", *self.ARGUMENTS)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("--only-findings has no effect with --dry-run\n", done.stderr)
        self.assertIn("--fail-on has no effect with --dry-run\n", done.stderr)


class FailOn(Findings):
    def statuses(self):
        return [self.run_velhost("collect", "--fail-on", severity, *self.ARGUMENTS).returncode
                for severity in ("fatal", "error", "corrected")]

    def test_counts_what_is_as_severe_or_worse(self):
        for chip, expected in (((0, 0), [0, 0, 0]), ((0, 1), [0, 0, 1]), ((2, 0), [0, 1, 1]), ((1, 0), [1, 1, 1]),
                               ((4, 0), [0, 0, 0])):
            self.serve(chip, (0, 0))
            self.assertEqual(self.statuses(), expected, chip)

    def test_the_document_has_the_status_too(self):
        self.serve((2, 0), (0, 0))
        self.assertEqual(self.collected("--fail-on", "error", status=1)["status"], "complete")
        self.assertEqual(self.collected("--only-findings", "--fail-on", "error", status=1)["status"], "complete")
        self.collected("--fail-on", "fatal")
        self.collected()

    def test_says_on_standard_error_what_was_found(self):
        self.serve((2, 0), (0, 0))
        done = self.run_velhost("collect", "-o", "out.json", "--fail-on", "error", *self.ARGUMENTS)
        self.assertEqual(done.stderr, "velhost: findings: 1 error\n")
        self.assertEqual(json.loads((self.folder / "out.json").read_text())["exit_status"], 1)

    def test_a_finding_counts_more_than_what_is_missing(self):
        self.serve((2, 0), (0, 0), faults=LOST)
        self.assertEqual(self.collected("--fail-on", "error", status=1)["status"], "partial")
        self.assertEqual(self.collected("--fail-on", "fatal", status=3)["status"], "partial")

    def test_a_failure_counts_more_than_a_finding(self):
        self.serve((2, 0), (0, 0))
        self.collected("--fail-on", "error", "--log", "/dev/full", status=74)
        self.collected(FILES, "--record", "run.jsonl")
        done = self.run_velhost("collect", "--format", "json", "--schema", "schema.mof", "--sp", "replay:run.jsonl",
                                "--fail-on", "error", BRIDGE, BRIDGE)
        self.assertEqual(done.returncode, 65, done.stderr)
        self.assertEqual(json.loads(done.stdout)["exit_status"], 65)

    def test_takes_a_severity(self):
        done = self.run_velhost("collect", "--fail-on", "warning")
        self.assertEqual(done.returncode, 64)
        self.assertIn('--fail-on takes fatal|error|corrected, not "warning"\n', done.stderr)


class Baseline(Findings):
    """Chip 1 has an error that was there before; chip 2 has one that was not."""

    def setUp(self):
        super().setUp()
        self.serve((2, 0), (0, 0))
        self.write("before.json", json.dumps(self.collected()))
        self.serve((2, 0), (2, 0))

    def known(self, document):
        return [(one["key"][-9:], one["known"]) for one in document["findings"]]

    def test_marks_what_it_has_too(self):
        self.assertEqual(self.known(self.collected()), [("instance0", False), ("instance1", False)])
        document = self.collected("--baseline", "before.json", "--fail-on", "error", status=1)
        self.assertEqual(self.known(document), [("instance0", True), ("instance1", False)])

    def test_what_it_has_does_not_count(self):
        self.serve((2, 0), (0, 0))
        document = self.collected("--baseline", "before.json", "--fail-on", "error")
        self.assertEqual(self.known(document), [("instance0", True)])
        self.serve((6, 0), (0, 0))  # the second one is masked
        self.collected("--baseline", "before.json", "--fail-on", "corrected")
        self.serve((3, 0), (0, 0))
        self.collected("--baseline", "before.json", "--fail-on", "error", status=1)

    def test_has_two_forms(self):
        self.serve((2, 0), (0, 0))
        lines = self.run_velhost("collect", "--format", "jsonl", *self.ARGUMENTS).stdout
        self.write("before.jsonl", lines)
        self.collected("--baseline", "before.jsonl", "--fail-on", "error")
        self.write("filtered.json", json.dumps(self.collected("--only-findings")))
        self.collected("--baseline", "filtered.json", "--fail-on", "error")

    def test_class_and_register_may_be_spelt_in_another_case(self):
        text = (self.folder / "before.json").read_text()
        self.write("before.json", text.replace(BRIDGE, BRIDGE.lower()).replace('"Status"', '"STATUS"'))
        document = self.collected("--baseline", "before.json")
        self.assertEqual(self.known(document), [("instance0", True), ("instance1", False)])

    def test_the_table_and_the_last_message_tell_what_is_known(self):
        table = self.table("--baseline", "before.json")
        self.assertIn("Findings: 2 errors; 1 known\n", table)
        self.assertIn("Timeout (known)", table)
        done = self.run_velhost("collect", "-o", "out.json", "--baseline", "before.json", "--fail-on", "error",
                                *self.ARGUMENTS)
        self.assertEqual(done.stderr, "velhost: findings: 2 errors; 1 known\n")

    def refused(self, status, name):
        done = self.run_velhost("collect", "--baseline", name, "--record", "run.jsonl", *self.ARGUMENTS)
        self.assertEqual((done.returncode, done.stdout, (self.folder / "run.jsonl").exists()), (status, "", False))
        return done.stderr

    def test_is_read_before_anything_is_sent(self):
        self.assertEqual(self.refused(66, "absent.json"), "velhost: cannot open absent.json: No such file or directory\n")
        self.write("bad.json", '{"kind":"instancecollection"')
        self.write("old.json", '{"kind":"instancecollection","instances":[]}')
        for name in ("old.json", "schema.mof", "server.toml"):
            self.assertIn(name, self.refused(65, name))

    def test_is_not_overwritten(self):
        done = self.run_velhost("collect", "--baseline", "before.json", "-o", "before.json", *self.ARGUMENTS)
        self.assertEqual((done.returncode, done.stderr),
                         (64, "velhost: --output and a file that --baseline reads are the same file, which would be overwritten: before.json\n"))

    def test_a_cut_one_is_warned_of(self):
        text = self.run_velhost("collect", "--format", "jsonl", *self.ARGUMENTS).stdout
        self.write("cut.jsonl", text[:text.index("summary")])
        done = self.run_velhost("collect", "--format", "json", "--baseline", "cut.jsonl", *self.ARGUMENTS)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stderr, r"^velhost: cut\.jsonl:\d+:\d+: warning: ")


if __name__ == "__main__":
    unittest.main()
