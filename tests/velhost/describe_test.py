"""velhost describe: classes and registers of a schema, and whether the machine serves them."""

import json
import unittest

from velhostcase import BRIDGE, SCHEMA, VelhostCase

REGISTERS = """
  [Offset(0x1000), MaxLen(4), Role("errors"), MaskedBy("mask"), Fields{"31:30 Kind", "31:30=2 parity", "4/hex Bit"}]
  uint8 Status[];
  [Offset(0x1008), MaxLen(4), Role("mask")] uint8 Mask[];
"""
BLOCKS = """
[SupportedMachineTypes{"6203"}, MaxInstanceCount(2)]
class KROSG_J2 : KROSG_MEMCTL_StatisticData { [Index(80), MaxLen(8)] uint8 Count[]; };
"""


class Describe(VelhostCase):
    def setUp(self):
        super().setUp()
        self.write("schema.mof", SCHEMA.replace("@COUNT@", "3").replace("@REGISTERS@", REGISTERS) + BLOCKS)

    def describe(self, name, *arguments, machine="6203"):
        return self.run_velhost("describe", "--schema", "schema.mof", "--machine-type", machine, *arguments, name)

    def text(self, name, **options):
        done = self.describe(name, **options)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def document(self, name, machine="6203"):
        done = self.describe(name, "--format", "json", machine=machine)
        self.assertEqual(done.returncode, 0, done.stderr)
        return json.loads(done.stdout)

    def test_a_class(self):
        document = self.document(BRIDGE.upper())
        self.assertEqual((document["class"], document["path"], document["served"], document["instances"]),
                         (BRIDGE, "r8", True, 3))
        status, mask = document["registers"]
        self.assertEqual((status["name"], status["address"], status["width"], status["masked_by"]),
                         ("Status", "0x001000", 32, "Mask"))
        self.assertEqual(status["fields"], [
            {"bits": "4", "name": "Bit", "hex": True, "values": []},
            {"bits": "31:30", "name": "Kind", "hex": False, "values": [{"first": 2, "last": 2, "text": "parity"}]}])
        self.assertEqual((mask["name"], mask["role"], mask["fields"]), ("Mask", "mask", []))
        self.assertEqual([other["name"] for other in document["properties"]],
                         ["InstanceID", "ElementName", "MachineType", "StatisticTime"])

    def test_a_register(self):
        lines = self.text(f"{BRIDGE}.STATUS").splitlines()
        self.assertEqual(lines[0], f"{BRIDGE}.Status")
        self.assertIn("  Masked by        Mask, where it has a 1", lines)
        self.assertEqual(lines[-4:], ["Fields", "  4      Bit (in hex)", "  31:30  Kind", "           2  parity"])
        document = self.document(f"{BRIDGE}.status")
        self.assertEqual([one["name"] for one in document["registers"] + document["properties"]], ["Status"])

    def test_a_property_that_is_not_a_register(self):
        self.assertEqual(self.text("KROSG_DCAPFile.errrawdata").splitlines(),
                         ["KROSG_DCAPFile.ErrRawData", "", "  Type             string", "  Register         no"])

    def test_names_that_the_schema_does_not_have(self):
        for name, message in (
                ("KROSG_DCAPFil", 'the schema has no class "KROSG_DCAPFil"; did you mean KROSG_DCAPFile?'),
                (f"{BRIDGE}.Statsu", f'the class {BRIDGE} has no register "Statsu"; did you mean Status?'),
                (f"{BRIDGE}.x\x1b", f'the class {BRIDGE} has no register "x\\x1b"; "velhost describe {BRIDGE}" lists its '
                 "registers"),
                (f"{BRIDGE}.", f'the class {BRIDGE} has no register ""; "velhost describe {BRIDGE}" lists its registers')):
            done = self.describe(name)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (64, "", f"velhost: {message}\n"))
        done = self.run_velhost("describe", "a", "b")
        self.assertEqual(done.stderr.splitlines()[0],
                         'velhost: unexpected argument "b"; describe takes CLASS[.REGISTER]')
        self.assertEqual(self.run_velhost("describe").returncode, 64)

    def test_a_base_class_stands_for_the_subclass_that_is_collected(self):
        document = self.document("krosg_memctl_statisticdata")
        self.assertEqual((document["class"], document["base_class"], document["registers"][0]["index"]),
                         ("KROSG_J2", "KROSG_MEMCTL_StatisticData", 80))
        self.assertEqual(self.text("KROSG_MEMCTL_StatisticData.Count").splitlines()[0], "KROSG_J2.Count")
        unserved = self.document("KROSG_MEMCTL_StatisticData", machine="4411")
        self.assertEqual((unserved["class"], unserved["served"], unserved["why_not"], unserved["subclasses"]),
                         ("KROSG_MEMCTL_StatisticData", False, "none of its subclasses serves this machine", ["KROSG_J2"]))

    def test_a_class_of_another_machine_is_described_all_the_same(self):
        document = self.document("KROSG_J2", machine="4411")
        self.assertEqual((document["served"], document["why_not"], len(document["registers"])),
                         (False, 'its machine types are "6203"', 1))

    def test_a_class_that_is_not_collected(self):
        self.assertIn("  Served         no: the collector does not support this class\n", self.text("KROSG_Top"))

    def test_a_class_with_errors(self):
        self.write("schema.mof", SCHEMA.replace("@COUNT@", "3").replace("@REGISTERS@", "uint8 Bare[];"))
        self.assertIn('Which registers are read cannot be told: "velhost check" says what is wrong with the class.',
                      " ".join(self.text(BRIDGE).split()))

    def test_what_is_wrong_in_the_meaning_is_a_warning(self):
        self.write("schema.mof", SCHEMA.replace("@COUNT@", "3").replace("@REGISTERS@", REGISTERS.replace('"31:30 Kind"', '"31:30Kind"')))
        done = self.describe(BRIDGE)
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stderr, r"^velhost: schema\.mof:\d+:\d+: warning: ")
        self.assertIn("  Fields         4 Bit\n", done.stdout)

    def test_no_session_is_opened_for_the_machine_type(self):
        done = self.run_velhost("describe", "--schema", "schema.mof", "--sp", "lan:192.0.2.1", BRIDGE)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("  Served         unknown: give the machine type with --machine-type NNNN\n", done.stdout)
        base = self.run_velhost("describe", "--schema", "schema.mof", "--sp", "lan:192.0.2.1", "KROSG_MEMCTL_StatisticData")
        self.assertIn("no: the subclass that serves the machine type is collected in its place",
                      " ".join(base.stdout.split()))

    def test_the_server_file_names_the_machine_type_and_the_ways(self):
        server = self.write("server.toml", 'machine_type = "6203"\n')
        done = self.run_velhost("describe", "--schema", "schema.mof", "--sp", f"sim:{server}", BRIDGE)
        self.assertIn("  Served         not on machine type 6203: there is no BMC node\n", done.stdout)

    def test_a_machine_type_that_nothing_serves_is_a_warning(self):
        done = self.describe(BRIDGE, machine="6230")
        self.assertEqual((done.returncode, done.stderr), (
            0, "velhost: warning: no register class serves the machine type 6230; did you mean 6203?\n"))

    def test_every_class_of_the_example_fits_every_width(self):
        names = [entry["class"] for entry in json.loads(self.run_velhost("classes", "--format", "json").stdout)["classes"]]
        for name in names:
            for width in (40, 80, 200):
                done = self.run_velhost("describe", name, environment={"COLUMNS": str(width)})
                self.assertEqual(done.returncode, 0, done.stderr)
                self.assertLessEqual(max(map(len, done.stdout.splitlines())), width, name)

    def test_colour_is_only_for_terminals(self):
        self.assertNotIn("\x1b", self.run_velhost("describe", BRIDGE).stdout)
        self.assertTrue(self.run_velhost("describe", "--color", "always", BRIDGE).stdout.startswith("\x1b[1m"))


if __name__ == "__main__":
    unittest.main()
