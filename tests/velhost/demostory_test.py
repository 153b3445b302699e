"""What is wrong with the demo server, as servers/README.md tells it; and with the failing one."""

import unittest

from smallserver import FAILING, J2_BRIDGE, J2_MEMORY, T4_BRIDGE
from velhostcase import BRIDGE, VelhostCase

HEADER = {"HeaderLogLow": "0x4A00000104000004", "HeaderLogHigh": "0x001F0A1000000000"}
MEMORY = {"FirstErrorAddress": "0x0000001A3F4C2E40", "EccSyndrome": "0x00000000000000C8",
          "CorrectableErrorCount": "0x0000001100000000"}


def told(finding):
    flags = [name for name in ("masked", "first") if finding[name]]
    return (finding["severity"], finding["key"], finding["register"], finding["bits"], finding["name"], flags,
            finding["evidence"], finding["unknown"])


class DemoStory(VelhostCase):
    def test_findings(self):
        document = self.collect()
        bridge, memory, masked = BRIDGE + "/node0/instance2", J2_MEMORY + "/sp0/instance0", J2_BRIDGE + "/sp1/instance1"
        self.assertEqual([told(finding) for finding in document["findings"]], [
            ("fatal", bridge, "UncorrectableErrorStatus", "18", "Malformed TLP", ["first"], HEADER, []),
            ("error", bridge, "UncorrectableErrorStatus", "16", "Unexpected completion", [], {}, []),
            ("corrected", memory, "MemoryErrorStatus", "0", "Corrected read error", [], MEMORY, []),
            ("corrected", masked, "CorrectableErrorStatus", "13", "Advisory non-fatal error", ["masked"], {}, [])])
        self.assertEqual(document["status"], "complete")

    def register(self, document, key, name):
        return next(instance for instance in document["instances"] if instance["key"] == key)["registers"][name]

    def test_seventeen_errors_of_rank_three(self):
        count = self.register(self.collect(), J2_MEMORY + "/sp0/instance0", "CorrectableErrorCount")
        self.assertEqual((count["role"], count["unit"], count["fields"]),
                         ("counter", "errors", [{"bits": "39:32", "name": "Rank 3", "value": 17}]))

    def test_a_link_that_trained_down(self):
        link = self.register(self.collect(), T4_BRIDGE + "/node0/instance1", "LinkStatus")
        self.assertNotIn("role", link)
        self.assertEqual([(field["name"], field.get("text", field["value"])) for field in link["fields"]], [
            ("Link 0 speed", "2.5 GT/s"), ("Link 0 width", "x4"), ("Link 0 trained down", 1),
            ("Link 0 top speed", "8 GT/s"), ("Link 0 full width", "x8"), ("Link 1 speed", "8 GT/s"),
            ("Link 1 width", "x8"), ("Link 1 top speed", "8 GT/s"), ("Link 1 full width", "x8")])

    def test_bits_of_a_cache_are_numbered_from_the_most_significant(self):
        mask = self.register(self.collect(), "KROSG_J2_L3Cache_StatisticData/sp0/instance0", "CacheErrorMask")
        self.assertEqual((mask["value"], mask["numbering"]), ("0x000000000000F000", "msb0"))
        self.assertEqual([(field["bits"], field["name"]) for field in mask["fields"]],
                         [("51", "Lookup repeated"), ("50", "Fill repeated"), ("49", "Eviction repeated"),
                          ("48", "Snoop repeated")])

    def test_which_error_was_first_cannot_be_told_without_its_register(self):
        document = self.collect("--sp", FAILING, status=3)
        bridge, memory = T4_BRIDGE + "/node0/instance0", J2_MEMORY + "/sp1/instance0"
        self.assertEqual([told(finding) for finding in document["findings"]], [
            ("fatal", bridge, "UncorrectableErrorStatus", "18", "Malformed TLP", [], HEADER, ["FirstErrorPointer"]),
            ("error", bridge, "UncorrectableErrorStatus", "16", "Unexpected completion", [], HEADER, ["FirstErrorPointer"]),
            ("corrected", memory, "MemoryErrorStatus", "0", "Corrected read error", [], MEMORY, [])])


if __name__ == "__main__":
    unittest.main()
