"""Self tests of the reference model: requests and plans. The expected values are worked out by hand."""

import unittest

import collector_model as model
import modelplan
from collector_model import CimClass, Property, Schema
from modeltest import bases, register, served
from resulttest import EIGHT, OTHER_MEM_CTL, X_MEM_CTL, block, collect, jfr, keys, node, r8, reasons, unread


class RequestTest(unittest.TestCase):

    NODE = {"bmc_node": [node((0, 0xABCDEF, EIGHT), (1, 0xABCDEF, EIGHT), timestamp="12 34 56 78")]}

    def test_a_class_named_twice(self):
        document = collect([r8()], self.NODE, [model.VO_PCI_BRIDGE] * 2)
        key = model.VO_PCI_BRIDGE + "/node0/instance0"
        self.assertEqual(keys(document), [key, key + "#2"])

    def test_after_the_capture_class(self):
        document = collect([r8()], self.NODE, [model.DCAP_FILE, model.VO_PCI_BRIDGE, model.VO_PCI_BRIDGE], single=True)
        self.assertEqual(document["reasons"], [
            {"code": "not-collected", "class": model.VO_PCI_BRIDGE, "count": 2,
             "message": "the collector ends the request after KROSG_DCAPFile"}])

    def test_no_class_at_all(self):
        document = collect([], {}, [])
        self.assertEqual(document["reasons"],
                         [{"code": "nothing-read", "count": 1, "message": "there are no classes to collect"}])

    def test_a_class_that_is_not_served(self):
        document = collect([CimClass(X_MEM_CTL, model.MEM_CTL, served("4411"))], {}, [X_MEM_CTL, "Root"])
        self.assertEqual([(one["code"], one["message"]) for one in document["reasons"]],
                         [("not-served", 'not served: its machine types are "4411"'),
                          ("not-served", "not served: the collector does not support this class")])

    def test_places_are_unknown_after_a_class_that_may_do_anything(self):
        scalar = Property("Reg", "uint8", False, {"Offset": 0xABCDEF, "MaxLen": 8})
        classes = [r8(model.VO_MEM_CTL), CimClass(model.T4_MEM_CTL, "Root", served(), [scalar]),
                   r8(model.VO_PCI_BRIDGE)]
        names = [model.VO_MEM_CTL, model.T4_MEM_CTL, model.VO_PCI_BRIDGE]
        document = collect(classes, {**self.NODE, "fault": [{"on": "timestamp", "node": 0, "nth": 3, "lost": True}]},
                           names, single=True)
        self.assertEqual(keys(document), [model.VO_MEM_CTL + "/node0/instance0"])
        self.assertEqual(document["exchanges"]["failed"],
                         [{"class": model.T4_MEM_CTL, "node": 0, "kind": "timestamp", "lost": True}])
        self.assertEqual(document["reasons"], [
            {"code": "request-failed", "class": model.T4_MEM_CTL, "count": 1,
             "message": "Type mismatch (status 13). property KROSG_T4_MEMCTL_StatisticData.Reg is declared as a scalar "
                        "and cannot take an array"},
            {"code": "time-unread", "class": model.T4_MEM_CTL, "count": 1, "message": "the time of 1 instance was not read"}])

    def test_a_file_that_the_host_withheld(self):
        """Nothing is known of the request, but that the host did not let the collector read the file."""
        scalar = Property("Reg", "uint16", True, {"Offset": 0xABCDEF, "MaxLen": 8})
        server = {"bmc_node": [{**self.NODE["bmc_node"][0],
                                "storage_area": [{"name": "cpu_err", "data": "", "size": 33554433}]}]}
        document = collect([CimClass(model.VO_MEM_CTL, "Root", served(), [scalar])], server,
                           [model.VO_MEM_CTL, model.DCAP_FILE], single=True)
        self.assertEqual(document["reasons"], [
            {"code": "file-unread", "class": model.VO_MEM_CTL, "count": 1,
             "message": "1 of 3 capture files is missing or incomplete; node 0, storage area cpu_err reports 33554433 "
                        "bytes, over the limit of 32 MiB: not read"}])
        self.assertEqual(document["unread"], [])

    def test_an_unknown_place_has_only_a_number(self):
        scalar = Property("Reg", "uint8", False, {"Offset": 0xABCDEF, "MaxLen": 8})
        classes = [CimClass(model.VO_MEM_CTL, "Root", served(), [Property("Reg", "uint16", True, scalar.qualifiers)])]
        document = collect(classes, self.NODE, [model.VO_MEM_CTL] * 2)
        self.assertEqual(keys(document), [model.VO_MEM_CTL + "/?1", model.VO_MEM_CTL + "/?2"])
        self.assertEqual(sorted(document["instances"][0]), ["class", "key", "kind", "properties"])
        self.assertEqual((document["status"], document["reasons"], document["unread"]), ("complete", [], []))

    def test_an_exception_at_a_commit(self):
        """Without the property StatisticTime, an instance whose time was read cannot be delivered."""
        root = CimClass("Bare", None, {}, [Property(name, "string", False)
                                           for name in ("InstanceID", "ElementName", "MachineType")])
        classes = [root, r8(model.VO_MEM_CTL, 3, superclass="Bare"), r8(model.VO_PCI_BRIDGE)]
        document = collect(classes, {**self.NODE, "fault": [{"on": "timestamp", "nth": 1, "lost": True}]},
                           [model.VO_MEM_CTL, model.VO_PCI_BRIDGE], single=True)
        key = model.VO_MEM_CTL + "/node0/instance%d"
        self.assertEqual(keys(document), [key % 0])
        self.assertEqual(unread(document), [(key % 1, "register-unread"), (key % 2, "register-unread")])
        self.assertEqual(reasons(document), [
            ("request-failed", model.VO_MEM_CTL, 1), ("time-unread", model.VO_MEM_CTL, 1),
            ("not-collected", model.VO_PCI_BRIDGE, 1)])

    def test_an_exception_before_the_first_class(self):
        """A class below a base class lacks its machine types, and each request looks at them."""
        document = collect([CimClass(X_MEM_CTL, model.MEM_CTL), r8()], self.NODE, [model.VO_PCI_BRIDGE])
        self.assertEqual(unread(document), [(model.VO_PCI_BRIDGE + "/node0/instance0", "register-unread")])
        self.assertEqual([(one["code"], one.get("class"), one["message"]) for one in document["reasons"]], [
            ("nothing-read", None, "no instance was delivered"),
            ("request-failed", model.VO_PCI_BRIDGE,
             'the collector did not find a qualifier that it needs; "velhost check" shows what the schema lacks '
             "(assertion px != 0)")])


class AskedTest(unittest.TestCase):

    CLASSES = [jfr(OTHER_MEM_CTL), jfr(X_MEM_CTL), r8(model.VO_PCI_BRIDGE), r8(model.VO_MEM_CTL)]
    SERVER = {"machine_type": "6203", "bmc_node": [{}], "dot": {"service_processor": [block("")]}}

    def asked(self, *arguments, **server):
        found = modelplan.asked_classes(Schema(bases() + self.CLASSES), {**self.SERVER, **server}, arguments)
        return found and [name for name, _ in found]

    def test_default(self):
        self.assertEqual(self.asked(), [OTHER_MEM_CTL, model.VO_PCI_BRIDGE, model.VO_MEM_CTL, model.DCAP_FILE])
        self.assertEqual(self.asked(bmc_node=[]), [OTHER_MEM_CTL])
        self.assertEqual(self.asked(dot={}), [model.VO_PCI_BRIDGE, model.VO_MEM_CTL, model.DCAP_FILE])

    def test_patterns(self):
        self.assertEqual(self.asked("*vo_*"), [model.VO_PCI_BRIDGE, model.VO_MEM_CTL])
        self.assertEqual(self.asked(model.VO_MEM_CTL, "*vo_*"), [model.VO_MEM_CTL, model.VO_PCI_BRIDGE])
        self.assertEqual(self.asked("*vo_*", model.VO_MEM_CTL), [model.VO_PCI_BRIDGE, model.VO_MEM_CTL])
        self.assertEqual(self.asked(model.VO_MEM_CTL, model.VO_MEM_CTL, "*_mem*"),
                         [model.VO_MEM_CTL, model.VO_MEM_CTL, OTHER_MEM_CTL])
        self.assertIsNone(self.asked("*none*"))

    def test_base_classes(self):
        self.assertEqual(self.asked(model.MEM_CTL), [OTHER_MEM_CTL])
        self.assertEqual(self.asked(OTHER_MEM_CTL, model.MEM_CTL), [OTHER_MEM_CTL])
        self.assertEqual(self.asked(model.L3_CACHE), [model.L3_CACHE])


class PlanDocumentTest(unittest.TestCase):

    def test_all_paths(self):
        classes = [jfr(X_MEM_CTL, 2), r8(model.T4_PCI_BRIDGE, 1, register("Two", Offset=[0x12ABCDEF, 1], MaxLen=4))]
        server = {"machine_type": "6203", "bmc_node": [{}], "dot": {"service_processor": [block("")]}}
        schema = Schema(bases() + classes)
        calls = [[(model.T4_PCI_BRIDGE, True)], [(X_MEM_CTL, True)], [(model.DCAP_FILE, True)], [("Root", True)]]
        bridge, memory = "KROSG_T4_PCIIOBRIDGE_StatisticData", X_MEM_CTL
        self.assertEqual(modelplan.plan_document(modelplan.Plan(schema, server, calls)), {
            "kind": "plan", "format_version": 2, "machine_type": "6203", "total": 3,
            "classes": [
                {"class": bridge, "path": "r8", "instances": [
                    {"key": bridge + "/node0/instance0", "origin": {"path": "r8", "node": 0, "chip": 1, "instance": 0},
                     "reads": [{"property": "Two", "address": "0xABCDEF"},
                               {"property": "Two", "address": "0x000001"}]}]},
                {"class": memory, "path": "jfr", "instances": [
                    {"key": memory + "/sp0/instance0",
                     "origin": {"path": "jfr", "service_processor": 0, "instance": 0},
                     "reads": [{"property": "Reg", "index": 0}]},
                    {"key": memory + "/sp0/instance1",
                     "origin": {"path": "jfr", "service_processor": 0, "instance": 1},
                     "reads": [{"property": "Reg", "index": 0}]}]},
                {"class": "KROSG_DCAPFile", "path": "ffdc", "instances": [
                    {"key": "KROSG_DCAPFile/node0/cpu_err", "origin": {"path": "ffdc", "node": 0}, "reads": []},
                    {"key": "KROSG_DCAPFile/node0/ioh_err", "origin": {"path": "ffdc", "node": 0}, "reads": []},
                    {"key": "KROSG_DCAPFile/node0/zyn_err", "origin": {"path": "ffdc", "node": 0}, "reads": []}]},
                {"class": "Root", "instances": []}],
            "dot_commands": [{"class": memory, "service_processor": 0}],
            "areas": [{"class": "KROSG_DCAPFile", "key": "KROSG_DCAPFile/node0/" + name, "node": 0, "area": name}
                      for name in ("cpu_err", "ioh_err", "zyn_err")]})


if __name__ == "__main__":
    unittest.main()
