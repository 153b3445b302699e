"""Self tests of the reference model: random cases. The expected values are worked out by hand."""

import os
import subprocess
import sys
import tempfile
import tomllib
import unittest

import collector_model as model
import modelplan
import modelresult
import random_case
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

    def test_results_have_everything(self):
        """Each reason, each way to be missing and each code of what was not delivered, with and without a place."""
        codes, ways, unread, failed, kinds, statuses = set(), set(), set(), set(), set(), set()
        with tempfile.TemporaryDirectory() as directory:
            for seed in range(600):
                case = random_case.generate(seed)
                document = self.document_of(case, directory)
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
        self.assertEqual(statuses, {("complete", 0), ("partial", 3)})

    def document_of(self, case, directory):
        case.write(directory)
        server = tomllib.loads(case.toml)
        run = model.run(case.schema, server, case.calls(), case.timezone, directory)
        if case.kept is not None:
            kept = int(case.kept * len(run.exchanges))
            run = model.run(case.schema, server, case.calls(), case.timezone, directory, kept)
        return modelresult.document(modelplan.Plan(case.schema, server, case.asked), run)

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
