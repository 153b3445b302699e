"""Which schema a command reads: --schema with paths, additions and the shipped example."""

import hashlib
import json
import re
import unittest

from velhostcase import BRIDGE, SOURCE, VelhostCase

ADDITION = """
[SupportedMachineTypes{"6203"}, MaxInstanceCount(1)]
class Added_MEMCTL : KROSG_MEMCTL_StatisticData { [Index(3), MaxLen(8)] uint8 Register[]; };
"""
REFUSED = ("velhost: the example schema has made-up addresses and is not used with real hardware; specify your own with "
           "--schema PATH, or pass --schema example\n")


class SchemaOptions(VelhostCase):
    def classes(self, *arguments):
        """The names that "velhost classes" lists."""
        done = self.run_velhost("classes", "--machine-type", "6203", *arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        return re.findall(r"^(\w+) +(?:R8|JFR|FFDC) ", done.stdout, re.MULTILINE)

    def refuses(self, text, *arguments):
        done = self.run_velhost(*arguments)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (64, "", text))

    def test_a_plus_adds_to_the_default(self):
        addition = self.write("addition.mof", ADDITION)
        shipped = self.classes()
        self.assertEqual(len(shipped), 12)
        self.assertEqual(set(self.classes("--schema", f"+{addition}")), {*shipped, "Added_MEMCTL"})

    def test_several_additions(self):
        self.write("one.mof", ADDITION)
        self.write("two.mof", ADDITION.replace("Added_", "Other_"))
        names = self.classes("--schema", "+one.mof", "--schema", "+two.mof")
        self.assertEqual(len(names), 14)
        self.assertLessEqual({"Added_MEMCTL", "Other_MEMCTL"}, set(names))

    def test_without_a_plus_the_default_is_not_read(self):
        self.assertEqual(self.classes("--schema", self.schema({"Register": (0x1000, 8)})), [BRIDGE, "KROSG_DCAPFile"])

    def test_example_is_the_shipped_schema(self):
        self.assertEqual(self.classes("--schema", "example"), self.classes())
        self.assertEqual(self.run_velhost("check", "--schema", "example").stdout, "no findings\n")

    def test_a_path_leads_to_a_file_of_that_name(self):
        self.schema({"Register": (0x1000, 8)})
        (self.folder / "schema.mof").rename(self.folder / "example")
        self.assertEqual(self.classes("--schema", "./example"), [BRIDGE, "KROSG_DCAPFile"])
        self.assertEqual(len(self.classes("--schema", "example")), 12)

    def test_additions_and_replacements_do_not_mix(self):
        for verb in ("collect", "classes", "check"):
            self.refuses("velhost: --schema +a.mof adds to the default schema, and --schema b.mof replaces it; give every "
                         f"path a '+', or none, or add --schema example\nSee \"velhost {verb} --help\".\n", verb,
                         "--schema", "b.mof", "--schema", "+a.mof")

    def test_the_example_mixes_with_both(self):
        self.write("addition.mof", ADDITION)
        self.write("other.mof", ADDITION.replace("Added_", "Other_"))
        names = self.classes("--schema", "example", "--schema", "+addition.mof", "--schema", "other.mof")
        self.assertEqual(len(names), 14)

    def test_a_plus_needs_a_path(self):
        self.refuses('velhost: --schema takes PATH, +PATH or example, not "+"\nSee "velhost collect --help".\n', "collect",
                     "--schema", "+")

    def test_hardware_does_not_get_the_example_unasked(self):
        addition = self.write("addition.mof", ADDITION)
        folder = json.loads(self.run_velhost("collect", "KROSG_DCAPFile").stdout)["schema"]["paths"][0]
        link = self.folder / "link"
        link.symlink_to(folder)
        by_name = [["--schema", str(path)] for path in (folder, f"{folder}/10-core.mof", link)]
        for spec in ("inband", "inband:/dev/ipmi777", "lan:192.0.2.1"):
            for schema in ([], ["--schema", f"+{addition}"], *by_name):
                for verb in (["collect", "--record", "run.jsonl", "--log", "trace.txt"], ["classes"]):
                    self.refuses(REFUSED, *verb, "--sp", spec, *schema)
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["addition.mof", "link"])

    def test_hardware_gets_it_when_asked(self):
        schemas = (["--schema", "example"], ["--schema", "example", "--schema", f"+{self.write('a.mof', ADDITION)}"],
                   ["--schema", self.schema({"Register": (0x1000, 8)})])
        for schema in schemas:
            for spec, status, said in (("inband:/dev/ipmi777", 69, "/dev/ipmi777"), ("lan:", 64, "no host is given")):
                done = self.run_velhost("collect", "--machine-type", "6203", "--sp", spec, *schema)
                self.assertEqual(done.returncode, status, done.stderr)
                self.assertIn(said, done.stderr)

    def test_an_added_file_is_not_overwritten(self):
        self.write("addition.mof", ADDITION)
        self.refuses("velhost: --output and --schema are the same file, which would be overwritten: ./addition.mof\n", "collect",
                     "--schema", "+addition.mof", "-o", "./addition.mof")

    def test_the_hash_covers_all_that_is_read_in_order(self):
        self.schema({"Register": (0x1000, 8)})
        whole = (self.folder / "schema.mof").read_text()
        start, end = whole[:whole.index("class KROSG_DCAPFile")], whole[whole.index("class KROSG_DCAPFile"):]
        (self.folder / "schema.mof").write_text("\ufeff" + '#pragma include ("sub/inner.mof")\n' + end)
        (self.folder / "sub").mkdir()
        self.write("sub/inner.mof", start)
        self.write("last.mof", ADDITION)
        done = self.run_velhost("classes", "-v", "--machine-type", "6203", "--schema", "schema.mof", "--schema", "last.mof",
                                "--schema", "schema.mof")
        self.assertEqual(done.returncode, 0, done.stderr)
        read = b"".join((self.folder / name).read_bytes() for name in ("schema.mof", "sub/inner.mof", "last.mof"))
        self.assertEqual(done.stderr, "velhost: schema: schema.mof, last.mof, schema.mof; 7 classes, SHA-256 "
                         f"{hashlib.sha256(read).hexdigest()}\n")

    def test_the_hash_of_the_example(self):
        files = sorted((SOURCE / "schema").glob("*.mof"))
        expected = hashlib.sha256(b"".join(file.read_bytes() for file in files)).hexdigest()
        self.assertIn(f"SHA-256 {expected}\n", self.run_velhost("classes", "-v", "--machine-type", "6203").stderr)


if __name__ == "__main__":
    unittest.main()
