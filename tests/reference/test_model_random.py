"""Self tests of the reference model: random cases. The expected values are worked out by hand."""

import os
import subprocess
import sys
import tempfile
import tomllib
import unittest

import collector_model as model
import modelmeaning
import modelplan
import modelresult
import random_case
import random_meaning
from modeltest import FAILED_READ, INVALID

HERE = os.path.dirname(os.path.abspath(__file__))


class RandomCaseTest(unittest.TestCase):

    NEEDED = ["Adding class", "Calling error data", "Normal exit", "Requested class", INVALID, "begin to collect",
              "Unable to allocate memory", "IPMI driver is not installed", "No eQT/BMC", FAILED_READ,
              "Error when opening files", "completeCode:90", "completeCode:c", "close file successfully",
              "Unable to determine the timestamp", "TimeStamp Size and Value", "sendCommand CmdStatus return 0",
              "Unable to create chip instance due to caught exception No valid", "fSPInstances = 0.",
              "Unable to create chip instance due to caught exception Type", "Unable to retrieve engineering",
              "TNOVRequestTorgaReg()::SPComm", "TNOVRequestTorgaReg()::Is not", "Size of cimvalues 0",
              "Size of cimvalues 14", "Size of cimvalues 28", "Size of cimvalues 42", "Encountered exception"]

    def test_same_seed_same_case(self):
        one, two = random_case.generate(11), random_case.generate(11)
        self.assertEqual((one.mof, one.toml, one.files, one.arguments()),
                         (two.mof, two.toml, two.files, two.arguments()))

    # A stop and a lost session depend on time and network; the host's own tests have them.
    CODES = set(modelresult.CODES) - {"stopped", "session-lost"}
    WAYS = {"completion_code", "lost", "short", "answered", "not_recorded"}
    UNREAD = {"absent", "register-unread", "file-unread", "block-unread", "block-undecodable", "discarded"}

    def test_cases_run_and_reach_every_branch(self):
        missing, failures = set(self.NEEDED), set()
        with tempfile.TemporaryDirectory() as directory:
            for seed in range(600):
                case = random_case.generate(seed)
                case.write(directory)
                result = model.run(case.schema, tomllib.loads(case.toml), case.calls(), case.timezone, directory)
                lines = {text for _, text in result.trace}
                missing = {text for text in missing if not any(line.startswith(text) for line in lines)}
                failures.update(call.failure for call in result.calls)
        self.assertEqual(missing, set())
        self.assertEqual(failures, {None, "assertion", "TVELException"})

    @classmethod
    def documents(cls):
        """The results of the first cases."""
        if not cls.made:
            with tempfile.TemporaryDirectory() as directory:
                cls.made = [cls.document_of(random_case.generate(seed), directory) for seed in range(900)]
        return cls.made

    made = []

    @staticmethod
    def document_of(case, directory):
        case.write(directory)
        server = tomllib.loads(case.toml)
        run = model.run(case.schema, server, case.calls(), case.timezone, directory)
        if case.kept is not None:
            kept = int(case.kept * len(run.exchanges))
            run = model.run(case.schema, server, case.calls(), case.timezone, directory, kept)
        return modelresult.document(modelplan.Plan(case.schema, server, case.asked), run, case.fail_on)

    def test_results_have_everything(self):
        """Each reason, each way to be missing and each code of what was not delivered, with and without a place."""
        codes, ways, unread, failed, kinds, statuses = set(), set(), set(), set(), set(), set()
        for document in self.documents():
            codes |= {one["code"] for one in document["reasons"]}
            unread |= {one["code"] for one in document["unread"]}
            missing = [one for instance in document["instances"] for one in instance.get("missing", [])]
            ways |= self.WAYS & {name for one in missing for name in one}
            failed |= self.WAYS & {name for one in document["exchanges"]["failed"] for name in one}
            kinds |= {(one["kind"], "key" in one) for one in document["exchanges"]["failed"]}
            statuses |= {(document["status"], document["exit_status"])}
        self.assertEqual((codes, ways, unread, failed), (self.CODES, self.WAYS, self.UNREAD, self.WAYS - {"answered"}))
        placed = {(kind, True) for kind in ("register", "timestamp", "open", "size", "read", "close")}
        unplaced = {(kind, False) for kind in ("register", "timestamp", "open", "dot")}
        self.assertEqual(kinds & (placed | unplaced), placed | unplaced)
        self.assertEqual(statuses, {("complete", 0), ("complete", 1), ("partial", 1), ("partial", 3)})

    NUMBERINGS = [(width, numbering) for width in (32, 64) for numbering in ("lsb0", "msb0")]

    def test_registers_have_everything(self):
        """Each role, and each kind of field in registers of each width and numbering."""
        roles, fields = set(), set()
        for document in self.documents():
            for one in [register for instance in document["instances"]
                        for register in instance.get("registers", {}).values()]:
                roles |= {one.get("role", "state")} | ({"unit"} & one.keys())
                fields |= {(one["width"], one.get("numbering", "lsb0"), type(each["name"]), type(each["value"]),
                            "text" in each) for each in one["fields"]}
                fields |= {"zero" for each in one["fields"] if each["value"] == 0}
        self.assertEqual(roles, {*modelmeaning.ROLES, "unit"})
        self.assertEqual(fields, {"zero"} | {(*numbering, type(None), int, False) for numbering in self.NUMBERINGS}
                         | {(width, numbering, str, kind, text) for width, numbering in self.NUMBERINGS
                            for kind in (int, str) for text in (False, True) if width == 64 or kind is int})

    def test_findings_have_everything(self):
        kinds, unknown = set(), set()
        for one in [finding for document in self.documents() for finding in document["findings"]]:
            kinds |= {(one["severity"], one["masked"]), ("first", one["first"], one["masked"]),
                      ("text", "text" in one), ("evidence", bool(one["evidence"])),
                      ("unread evidence", None in one["evidence"].values()), ("named", one["name"] is not None)}
            kinds |= {"upper"} if one["bits"] == "63:32" and one["name"] is None else set()
            unknown.add(len(one["unknown"]))
        self.assertEqual(kinds, {"upper"} | {
            (what, flag) for what in ("text", "evidence", "unread evidence", "named") for flag in (False, True)} | {
            (severity, masked) for severity in modelmeaning.SEVERITIES for masked in (False, True)} | {
            ("first", first, masked) for first in (False, True) for masked in (False, True)})
        self.assertGreaterEqual(unknown, {0, 1, 2})

    # How elements of Fields that break a rule begin or go on.
    BREACHES = ["Reversed", "Beyond", "Across", "Again", "Inside", "Around", "Too much", "Backwards", "Perhaps twice",
                "Everything", "Of no field"]

    def test_qualifiers_break_every_rule(self):
        texts, off, bound, declared, options = set(), set(), set(), set(), set()
        for seed in range(1000):
            case = random_case.generate(seed)
            off |= case.schema.disabled
            bound |= case.schema.restricted
            declared |= {line.split()[1].lower() for line in case.mof.splitlines() if line.startswith("Qualifier ")}
            options |= {(case.fail_on, case.only_findings)}
            for qualifiers in [one.qualifiers for cls in case.schema.classes for one in (cls, *cls.properties)]:
                for name, value in qualifiers.items():
                    texts |= {(name.lower(), text) for text in (value if isinstance(value, list) else [value])}
        names = {name.lower() for name in random_meaning.TYPES}
        self.assertEqual((off, bound & names, declared & names), (names, names, names))
        self.assertEqual(len(options), 8)
        for name, values in (("BitNumbering", random_meaning.NO_NUMBERING), ("Role", random_meaning.NO_ROLE),
                             ("Severity", random_meaning.NO_SEVERITY), ("Evidence", random_meaning.NO_REGISTER),
                             ("Fields", random_meaning.NO_ELEMENT), ("Units", random_meaning.UNITS),
                             *[(name, random_meaning.NO_REGISTER) for name in ("MaskedBy", "EnabledBy", "FatalBy")]):
            self.assertEqual({value for value in values if (name.lower(), value) not in texts}, set(), name)
        elements = [text for name, text in texts if name == "fields" and isinstance(text, str)]
        parts = [text for name, text in texts if name == "firsterrorin" and isinstance(text, str)]
        self.assertEqual({one for one in self.BREACHES if not any(text.endswith(one) for text in elements)}, set())
        self.assertEqual({one for one in random_meaning.NO_PART if not any(text.endswith(one) for text in parts)},
                         set())

    def test_classes_are_asked_for_in_every_way(self):
        seen, orders = set(), set()
        for seed in range(600):
            case = random_case.generate(seed)
            names = [name for call in case.calls() for name in call]
            seen |= {"nothing"} if not case.classes else set()
            seen |= {"twice"} if len(set(names)) < len(names) else set()
            seen |= {"pattern" for one in case.classes if "*" in one or "?" in one}
            seen |= {"base" for one in case.classes if one in model.BASE_CLASSES and one not in names}
            seen |= {"case" for one in case.classes if one.startswith("krosg")}
            if case.single_request and model.DCAP_FILE in names:
                orders.add(names.index(model.DCAP_FILE))
        self.assertEqual(seen, {"nothing", "twice", "pattern", "base", "case"})
        self.assertTrue(orders >= {0, 1, 2, 3}, orders)

    def test_schemas_are_sound(self):
        """Superclasses come first; a property is either new or overrides an inherited one of the same type."""
        for seed in range(300):
            schema, declared = random_case.generate(seed).schema, set()
            for cls in schema.classes:
                self.assertTrue(cls.superclass is None or cls.superclass in declared)
                declared.add(cls.name)
                above = {prop.name: prop.type for step in schema.lineage(cls)[:-1] for prop in step.properties}
                names = [prop.name for prop in cls.properties]
                self.assertEqual(len(names), len(set(names)))
                for prop in cls.properties:
                    self.assertEqual("Override" in prop.qualifiers, prop.name in above, (seed, cls.name, prop))
                    self.assertEqual(above.get(prop.name, prop.type), prop.type)

    def test_program_writes_a_case(self):
        with tempfile.TemporaryDirectory() as directory:
            done = subprocess.run([sys.executable, os.path.join(HERE, "random_case.py"), "--seed", "3",
                                   "--out", directory], capture_output=True, text=True, check=True)
            self.assertIn("velhost collect --schema", done.stdout)
            self.assertTrue(os.path.exists(os.path.join(directory, "case.toml")))


if __name__ == "__main__":
    unittest.main()
