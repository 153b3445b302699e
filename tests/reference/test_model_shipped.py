"""Self tests of the reference model: results of the shipped servers. The expected values are worked out by hand."""

import os
import tomllib
import unittest

import collector_model as model
import modelmof
import modelplan
import modelresult

TREE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
SERVERS = os.path.join(TREE, "servers")
T4_MEM, T4_BRIDGE = "KROSG_T4_MEMCTL_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData"
J2 = ["KROSG_J2_PCIIOBRIDGE_StatisticData", "KROSG_J2_MEMCTL_StatisticData", "KROSG_J2_L3Cache_StatisticData"]
FILES = "KROSG_DCAPFile"


def collect(name):
    """A collection of everything that the server serves; returns its result and its exchanges."""
    with open(os.path.join(SERVERS, name), "rb") as stream:
        server = tomllib.load(stream)
    schema = modelmof.read_folder(os.path.join(TREE, "schema"))
    calls = [[one] for one in modelplan.asked_classes(schema, server, [])]
    plan = modelplan.Plan(schema, server, calls)
    run = model.run(schema, server, [[name for name, _ in call] for call in calls], 0, SERVERS)
    return modelresult.document(plan, run), run.exchanges


class MofTest(unittest.TestCase):

    def test_qualifiers_and_properties(self):
        reader = modelmof.MofReader()
        reader.read("""// [Comment] "
            Qualifier Role : string = null, Scope(property), Flavor(EnableOverride, Restricted);
            Qualifier Fields : string[], Scope(property), Flavor(EnableOverride, ToSubclass);
            [Abstract, Description("class C {" " // };")] class A { };
            class B : A { /* nothing */
              [Fields{"1 (x)" "]", "2 \\"y\\""}, Offset(0x10), Role("log")] uint8 First[]; datetime Second; };""")
        self.assertEqual(reader.classes, [
            model.CimClass("A", None, {"Abstract": True, "Description": "class C { // };"}, []),
            model.CimClass("B", "A", {}, [
                model.Property("First", "uint8", True, {"Fields": ["1 (x)]", '2 "y"'], "Offset": 16, "Role": "log"}),
                model.Property("Second", "datetime", False, {})])])
        self.assertEqual(reader.restricted, {"Role"})


class DemoServerTest(unittest.TestCase):

    def test_one_register_is_absent(self):
        document, exchanges = collect("demo.toml")
        self.assertEqual((len(document["instances"]), len(exchanges), document["exchanges"]["total"]), (25, 269, 269))
        bridge = "KROSG_VO_PCIIOBRIDGE_StatisticData"
        self.assertEqual(document["exchanges"]["failed"], [
            {"class": bridge, "key": bridge + "/node0/instance2", "property": "InternalErrorLog", "address": "0x2D0140",
             "node": 0, "kind": "register", "completion_code": 203}])
        self.assertEqual([one["key"] for one in document["instances"] if "missing" in one],
                         [bridge + "/node0/instance2"])
        self.assertEqual((document["status"], document["exit_status"], document["reasons"], document["unread"]),
                         ("complete", 0, [], []))


class FindingsTest(unittest.TestCase):
    """What servers/README.md says is wrong."""

    BRIDGE = "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance2"
    HEADER = {"HeaderLogLow": "0x4A00000104000004", "HeaderLogHigh": "0x001F0A1000000000"}
    MEMORY = {"FirstErrorAddress": "0x0000001A3F4C2E40", "EccSyndrome": "0x00000000000000C8",
              "CorrectableErrorCount": "0x0000001100000000"}

    def findings(self, server):
        return [tuple(one[name] for name in ("key", "bits", "name", "severity", "masked", "first", "evidence", "unknown"))
                for one in collect(server)[0]["findings"]]

    def test_demo(self):
        self.assertEqual(self.findings("demo.toml"), [
            (self.BRIDGE, "18", "Malformed TLP", "fatal", False, True, self.HEADER, []),
            (self.BRIDGE, "16", "Unexpected completion", "error", False, False, {}, []),
            (J2[1] + "/sp0/instance0", "0", "Corrected read error", "corrected", False, False, self.MEMORY, []),
            (J2[0] + "/sp1/instance1", "13", "Advisory non-fatal error", "corrected", True, False, {}, [])])

    def test_unread_first_error_register(self):
        bridge = T4_BRIDGE + "/node0/instance0"
        self.assertEqual(self.findings("failing.toml")[:2], [
            (bridge, "18", "Malformed TLP", "fatal", False, False, self.HEADER, ["FirstErrorPointer"]),
            (bridge, "16", "Unexpected completion", "error", False, False, self.HEADER, ["FirstErrorPointer"])])


class ByteOrderTest(unittest.TestCase):
    """The servers in which chip 1 has a register whose bytes are 01 to 08."""

    def register(self, server):
        document, _ = collect(server)
        instance = next(one for one in document["instances"] if one["key"] == T4_BRIDGE + "/node0/instance0")
        register = instance["registers"]["UncorrectableErrorStatus"]
        return [register[name] for name in ("address", "width", "value", "upper", "folded")]

    def test_both_families(self):
        self.assertEqual(self.register("eight-byte.toml"), ["0x0D0100", 32, "0x04030201", "0x08070605", "0x0C070605"])
        self.assertEqual(self.register("labelled.toml"), ["0x0D0100", 32, "0x04030201", "0x08070605", "0x04030203"])


class SlowServerTest(unittest.TestCase):

    def test_is_the_demo_server_with_delays(self):
        servers = []
        for name in ("demo.toml", "slow.toml"):
            with open(os.path.join(SERVERS, name), "rb") as stream:
                servers.append(tomllib.load(stream))
        demo, slow = servers
        self.assertEqual({key for fault in slow.pop("fault") for key in fault}, {"on", "delay_ms"})
        self.assertEqual(slow, demo)


class FailingServerTest(unittest.TestCase):
    """The server failing.toml, whose faults are explained in the file."""

    @classmethod
    def setUpClass(cls):
        cls.document, cls.exchanges = collect("failing.toml")
        cls.instances = {one["key"]: one for one in cls.document["instances"]}

    def missing(self, key):
        return self.instances[key].get("missing", [])

    def test_exchanges(self):
        kinds = [one.kind for one in self.exchanges]
        self.assertEqual((len(kinds), kinds.count("dot")), (124, 9))
        self.assertEqual(sum(kinds.count(kind) for kind in ("register", "timestamp")), 93)
        failed = [(one["kind"], *[one[name] for name in ("lost", "short", "completion_code") if name in one])
                  for one in self.document["exchanges"]["failed"]]
        self.assertEqual(failed[:7], [("dot", 1024), ("dot", True)] * 3 + [("register", True)])
        self.assertEqual(sorted(failed[7:], key=str), [
            ("open", 203), ("open", True), ("open", True), ("open", True), ("read", 195), ("register", 192),
            ("register", 213), ("register", 9), ("size", 213), ("timestamp", 206)])

    def test_blocks(self):
        """sp0 has no header, sp1 ends in its first bank, sp2 is lost."""
        for name, shorts in zip(J2, (0, 3, None)):
            first, second = self.missing(name + "/sp1/instance0"), self.missing(name + "/sp1/instance1")
            self.assertEqual({one["short"] for one in second}, {0})
            if shorts is not None:
                self.assertEqual(len(first), shorts)
            self.assertEqual([(one["key"], one["code"]) for one in self.document["unread"] if one["class"] == name],
                             [(name + "/sp%d/instance%d" % (owner, number), code)
                              for owner, code in ((0, "block-undecodable"), (2, "block-unread")) for number in (0, 1)])
        # Records 128, 130 and 132 of the first bank start behind byte 1023.
        self.assertEqual(self.missing(J2[1] + "/sp1/instance0"), [
            {"property": name, "index": index, "short": 0}
            for name, index in zip([one["property"] for one in self.missing(J2[1] + "/sp1/instance0")],
                                   (128, 130, 132))])
        self.assertEqual([len(self.missing(name + "/sp1/instance1")) for name in J2], [11, 10, 10])
        self.assertEqual(len(self.missing(J2[2] + "/sp1/instance0")), 10)

    def test_registers(self):
        self.assertEqual(self.missing(T4_MEM + "/node0/instance0"), [
            {"property": "MemoryErrorStatus", "address": "0x0C0100", "lost": True},
            {"property": "StatisticTime", "completion_code": 206}])
        self.assertEqual(self.missing(T4_BRIDGE + "/node0/instance0"), [
            {"property": "ChipIdentification", "address": "0x0F0000", "completion_code": 213},
            {"property": "FirstErrorPointer", "address": "0x0D0120", "short": 9}])
        self.assertEqual(self.missing(T4_BRIDGE + "/node0/instance1"), [
            {"property": "LinkStatus", "address": "0x0D0138", "completion_code": 192}])

    def test_files(self):
        self.assertEqual(self.instances[FILES + "/node0/cpu_err"]["file"],
                         {"area": "cpu_err", "reported_size": 349, "received": 120})
        self.assertEqual(self.missing(FILES + "/node0/cpu_err"),
                         [{"property": "ErrRawData", "offset": 120, "completion_code": 195}])
        self.assertEqual([(one["key"], one["code"]) for one in self.document["unread"] if one["class"] == FILES], [
            (FILES + "/node1/cpu_err", "file-unread"), (FILES + "/node0/ioh_err", "file-unread"),
            (FILES + "/node1/ioh_err", "file-unread"), (FILES + "/node0/zyn_err", "absent"),
            (FILES + "/node1/zyn_err", "file-unread")])

    def test_outcome(self):
        self.assertEqual([(one["code"], one["class"], one["count"]) for one in self.document["reasons"]],
                         [(code, name, 1) for name in J2
                          for code in ("block-unread", "block-short", "block-undecodable")]
                         + [("register-unread", T4_MEM, 1), ("time-unread", T4_MEM, 1),
                            ("register-unread", T4_BRIDGE, 3), ("file-unread", FILES, 5)])
        self.assertEqual((len(self.instances), len(self.document["unread"])), (14, 17))
        self.assertEqual((self.document["status"], self.document["exit_status"]), ("partial", 3))


if __name__ == "__main__":
    unittest.main()
