"""Self tests of the reference model: the result document. The expected values are worked out by hand."""

import unittest

import collector_model as model
from collector_model import CimClass
from modeltest import register, served
from resulttest import EIGHT, GOOD_HEADER, NO_HEADER, X_MEM_CTL, block, collect, jfr, keys, node, r8, reasons, unread


class SmallServerTest(unittest.TestCase):
    """One class of each path: a register that is absent, a block of one byte, a file that is longer than its area."""

    CLASSES = [CimClass(X_MEM_CTL, model.MEM_CTL, served(), [register("First", Index=0, MaxLen=8)]),
               CimClass(model.VO_PCI_BRIDGE, "Root", served(count=2),
                        [register("Count", Offset=0xABCDEF, MaxLen=4), register("Log", Offset=0xABCDF0, MaxLen=8)])]
    SERVER = {"dot": {"service_processor": [
                  block(GOOD_HEADER + "0b 00 54 00 00 00 1a 3f 4c 2e 40"), block("00")]},
              "bmc_node": [{"timestamp": "12 34 56 78",
                            "register": [{"chip": 1, "address": 0xABCDEF, "value": "00 01 00 00 00 00 00 00"}],
                            "storage_area": [{"name": "cpu_err", "data": "0a ff 00", "size": 12}]}]}

    def setUp(self):
        self.document = collect(self.CLASSES, self.SERVER, [model.VO_PCI_BRIDGE, X_MEM_CTL, model.DCAP_FILE])

    def test_instances(self):
        bridge, first, second, capture = self.document["instances"]
        self.assertEqual(bridge, {
            "kind": "instance", "class": "KROSG_VO_PCIIOBRIDGE_StatisticData",
            "key": "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0",
            "origin": {"path": "r8", "node": 0, "chip": 1, "instance": 0, "time_raw": "12 34 56 78"},
            "incomplete": True, "missing": [{"property": "Log", "address": "0xABCDF0", "completion_code": 203}],
            "properties": {"InstanceID": "KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0",
                           "ElementName": "PCI I/O bridge,0", "MachineType": "6203",
                           "StatisticTime": "19700101060856.000000+000",
                           "Count": [171, 205, 239, 0, 0, 1, 1, 0, 0, 0, 239, 254, 254, 239]},
            "registers": {"Count": {"address": "0xABCDEF", "width": 32, "value": "0x00000100",
                                    "folded": "0x00000101", "fields": []}}})
        self.assertEqual(first, {
            "kind": "instance", "class": X_MEM_CTL, "key": "KROSG_X_MEMCTL_StatisticData/sp0/instance0",
            "origin": {"path": "jfr", "service_processor": 0, "instance": 0},
            "properties": {"InstanceID": "KROSG:KROSG_MEMCTL_StatisticData:6203:0",
                           "ElementName": "Memory and I/O controller,0", "MachineType": "6203",
                           "StatisticTime": "20260131113005.000000+000",
                           "First": [11, 0, 84, 32, 61, 32, 0, 0, 0, 26, 63, 76, 46, 64]},
            "registers": {"First": {"index": 0, "width": 64, "value": "0x0000001A3F4C2E40",
                                    "identification": "0B 00 54", "fields": []}}})
        self.assertEqual(second, {
            "kind": "instance", "class": X_MEM_CTL, "key": "KROSG_X_MEMCTL_StatisticData/sp1/instance0",
            "origin": {"path": "jfr", "service_processor": 1, "instance": 0}, "incomplete": True,
            "missing": [{"property": "First", "index": 0, "short": 0}, {"property": "StatisticTime", "short": 1}],
            "properties": {"InstanceID": "KROSG:KROSG_MEMCTL_StatisticData:6203:0",
                           "ElementName": "Memory and I/O controller,0", "MachineType": "6203",
                           "StatisticTime": "20484848484848.000000+000",
                           "First": [48, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48]},
            "registers": {}})
        self.assertEqual(capture, {
            "kind": "instance", "class": "KROSG_DCAPFile", "key": "KROSG_DCAPFile/node0/cpu_err",
            "origin": {"path": "ffdc", "node": 0}, "file": {"area": "cpu_err", "reported_size": 12, "received": 3},
            "incomplete": True, "missing": [{"property": "ErrRawData", "offset": 3, "short": 3}],
            "properties": {"FileName": "cpu_err", "ErrRawData": "0a ff 00 00 00 00 00 00 00 00 00 00 ",
                           "MessageTimestamp": "20260131123456.000000+060", "SourceNode": "1",
                           "CreationClassName": "KROSG_DCAPFile", "LogCreationClassName": "KROSG_DCAPFile",
                           "LogName": "KROSG_DCAPFile", "RecordID": "0"}})

    def test_failed_exchanges(self):
        bridge, capture = "KROSG_VO_PCIIOBRIDGE_StatisticData", "KROSG_DCAPFile"
        self.assertEqual(self.document["exchanges"], {"total": 15, "failed": [
            {"class": bridge, "key": bridge + "/node0/instance0", "property": "Log", "address": "0xABCDF0", "node": 0,
             "kind": "register", "completion_code": 203},
            {"class": bridge, "key": bridge + "/node0/instance1", "property": "Count", "address": "0xABCDEF", "node": 0,
             "kind": "register", "completion_code": 203},
            {"class": bridge, "key": bridge + "/node0/instance1", "property": "Log", "address": "0xABCDF0", "node": 0,
             "kind": "register", "completion_code": 203},
            {"class": X_MEM_CTL, "service_processor": 1, "kind": "dot", "short": 1},
            {"class": capture, "key": capture + "/node0/cpu_err", "property": "ErrRawData", "node": 0, "kind": "read",
             "short": 3},
            {"class": capture, "key": capture + "/node0/cpu_err", "property": "ErrRawData", "node": 0, "kind": "read",
             "short": 0},
            {"class": capture, "key": capture + "/node0/ioh_err", "node": 0, "kind": "open", "completion_code": 203},
            {"class": capture, "key": capture + "/node0/zyn_err", "node": 0, "kind": "open", "completion_code": 203}]})

    def test_the_rest(self):
        self.assertEqual(self.document["unread"], [
            {"class": "KROSG_VO_PCIIOBRIDGE_StatisticData", "key": "KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1",
             "origin": {"path": "r8", "node": 0, "chip": 2, "instance": 1}, "code": "absent"},
            {"class": "KROSG_DCAPFile", "key": "KROSG_DCAPFile/node0/ioh_err", "origin": {"path": "ffdc", "node": 0},
             "code": "absent"},
            {"class": "KROSG_DCAPFile", "key": "KROSG_DCAPFile/node0/zyn_err", "origin": {"path": "ffdc", "node": 0},
             "code": "absent"}])
        self.assertEqual(self.document["reasons"], [
            {"code": "block-short", "class": X_MEM_CTL, "count": 1, "message": "1 of 2 register blocks was too short"},
            {"code": "file-unread", "class": "KROSG_DCAPFile", "count": 1,
             "message": "1 of 3 capture files is missing or incomplete"}])
        self.assertEqual((self.document["status"], self.document["exit_status"], self.document["message"]),
                         ("partial", 3, "KROSG_X_MEMCTL_StatisticData: 1 of 2 register blocks was too short; "
                                        "KROSG_DCAPFile: 1 of 3 capture files is missing or incomplete"))


class RegisterTest(unittest.TestCase):

    def one(self, *registers, values=((1, 0xABCDEF, EIGHT),), faults=(), count=1, stamp="12 34 56 78"):
        return collect([r8(model.VO_PCI_BRIDGE, count, *registers)],
                       {"bmc_node": [node(*values, timestamp=stamp)], "fault": list(faults)}, [model.VO_PCI_BRIDGE])

    def test_values(self):
        document = self.one(register("Wide", Offset=0xABCDEF, MaxLen=8), register("Narrow", Offset=0x1ABCDEF, MaxLen=4))
        # V = 01 .. 08: narrow 04 03 02 01, above 08 07 06 05; the collector's last byte is V0 | V1.
        self.assertEqual(document["instances"][0]["registers"], {
            "Wide": {"address": "0xABCDEF", "width": 64, "value": "0x0807060504030201", "fields": []},
            "Narrow": {"address": "0xABCDEF", "width": 32, "value": "0x04030201", "upper": "0x08070605",
                       "folded": "0x04030203", "fields": []}})
        self.assertEqual((document["status"], document["exit_status"], "message" in document), ("complete", 0, False))

    def test_a_short_answer_is_not_absent(self):
        document = self.one(faults=[{"on": "register", "truncate": 22}])
        self.assertEqual(reasons(document), [("nothing-read", None, 1), ("register-unread", model.VO_PCI_BRIDGE, 1)])
        self.assertEqual(unread(document), [(model.VO_PCI_BRIDGE + "/node0/instance0", "register-unread")])
        self.assertEqual(document["exchanges"]["failed"][0]["short"], 13)
        self.assertEqual(document["message"],
                         "no instance was delivered; KROSG_VO_PCIIOBRIDGE_StatisticData: 1 of 1 register was not read")

    def test_several_addresses(self):
        listed = ((1, 0xABCDEF, EIGHT), (1, 2, EIGHT), (1, 3, EIGHT))
        document = self.one(register("Reg", Offset=[0xABCDEF, 1], MaxLen=8), register("Both", Offset=[2, 3], MaxLen=8),
                            register("None", Offset=[4, 5], MaxLen=8), values=listed)
        self.assertEqual(document["instances"][0]["registers"], {
            "Reg": {"address": "0xABCDEF", "width": 64, "value": "0x0807060504030201", "fields": []}})
        self.assertEqual(document["instances"][0]["missing"], [
            {"property": "Both", "addresses": ["0x000002", "0x000003"], "answered": 2},
            {"property": "None", "addresses": ["0x000004", "0x000005"], "completion_code": 203}])
        self.assertEqual(reasons(document), [("register-unread", model.VO_PCI_BRIDGE, 1)])

    def test_no_address(self):
        document = self.one(register("Reg", Offset=0xABCDEF, MaxLen=8), register("None", Offset=[], MaxLen=8))
        self.assertEqual(document["instances"][0]["missing"], [{"property": "None", "addresses": [], "answered": 0}])
        self.assertEqual(reasons(document), [("register-unread", model.VO_PCI_BRIDGE, 1)])
        document = self.one(register("None", Offset=[], MaxLen=8))
        self.assertEqual(unread(document), [(model.VO_PCI_BRIDGE + "/node0/instance0", "register-unread")])
        self.assertEqual((reasons(document), document["exchanges"]["total"]),
                         ([("register-unread", model.VO_PCI_BRIDGE, 1)], 0))

    def test_addresses_that_failed_in_different_ways(self):
        document = self.one(register("Reg", Offset=0xABCDEF, MaxLen=8), register("None", Offset=[4, 5], MaxLen=8),
                            faults=[{"on": "register", "nth": 2, "lost": True}])
        self.assertEqual(document["instances"][0]["missing"],
                         [{"property": "None", "addresses": ["0x000004", "0x000005"], "answered": 0}])

    def test_times(self):
        for fault, missing, expected in (
                ({"nth": 1, "completion_code": 0xCB}, {"completion_code": 203}, []),
                ({"nth": 2, "completion_code": 0xCB}, {"completion_code": 203}, []),
                ({"nth": 1, "lost": True}, {"lost": True}, [("time-unread", model.VO_PCI_BRIDGE, 1)]),
                ({"nth": 2, "truncate": 12}, {"short": 3}, [("time-unread", model.VO_PCI_BRIDGE, 1)])):
            document = self.one(faults=[{"on": "timestamp", **fault}])
            self.assertEqual(document["instances"][0]["missing"], [{"property": "StatisticTime", **missing}])
            self.assertNotIn("time_raw", document["instances"][0]["origin"])
            self.assertEqual(reasons(document), expected)
            self.assertEqual((document["status"], document["exit_status"]), ("complete", 0))

    def test_no_node_is_not_served(self):
        document = collect([r8(count=2)], {}, [model.VO_PCI_BRIDGE])
        self.assertEqual(reasons(document), [("nothing-read", None, 1), ("not-served", model.VO_PCI_BRIDGE, 1)])
        self.assertEqual(document["unread"], [])
        self.assertEqual([one["key"] for one in document["exchanges"]["failed"]],
                         [model.VO_PCI_BRIDGE + "/node0/instance0", model.VO_PCI_BRIDGE + "/node0/instance1"])

    def test_no_driver_is_not_read(self):
        document = collect([r8()], {"bmc_node": [node()], "ipmi": {"driver_present": False}}, [model.VO_PCI_BRIDGE])
        self.assertEqual(reasons(document), [("nothing-read", None, 1), ("register-unread", model.VO_PCI_BRIDGE, 1)])


class BlockTest(unittest.TestCase):

    def blocks(self, *texts, count=2, faults=(), **dot):
        server = {"dot": {"service_processor": [block(text) for text in texts], **dot}, "fault": list(faults)}
        return collect([jfr(X_MEM_CTL, count)], server, [X_MEM_CTL])

    def test_a_block_without_header_drops_what_was_before_it(self):
        whole = GOOD_HEADER + "00 " * 4089
        document = self.blocks(whole, NO_HEADER, whole)
        key = X_MEM_CTL + "/sp%d/instance%d"
        self.assertEqual(keys(document), [key % (2, 0), key % (2, 1)])
        self.assertEqual(unread(document), [(key % (0, 0), "discarded"), (key % (0, 1), "discarded"),
                                            (key % (1, 0), "block-undecodable"), (key % (1, 1), "block-undecodable")])
        self.assertEqual(document["reasons"], [
            {"code": "block-undecodable", "class": X_MEM_CTL, "count": 1,
             "message": "the register block of service processor 1 has no valid time; "
                        "2 instances from other service processors were discarded with it"}])
        self.assertEqual(document["exchanges"], {"total": 3, "failed": []})

    def test_no_instance_never_looks_at_the_header(self):
        document = self.blocks(NO_HEADER, count=0)
        self.assertEqual((reasons(document), document["unread"]), ([("nothing-read", None, 1)], []))

    def test_blocks_that_did_not_come(self):
        document = self.blocks(GOOD_HEADER, "", count=1, faults=[{"on": "dot", "node": 0, "lost": True}])
        self.assertEqual(reasons(document), [("nothing-read", None, 1), ("block-unread", X_MEM_CTL, 2)])
        self.assertEqual([one["code"] for one in document["unread"]], ["block-unread"] * 2)
        self.assertEqual(document["exchanges"]["failed"], [
            {"class": X_MEM_CTL, "service_processor": 0, "kind": "dot", "lost": True},
            {"class": X_MEM_CTL, "service_processor": 1, "kind": "dot", "short": 0}])

    def test_communication_check(self):
        document = self.blocks(GOOD_HEADER, GOOD_HEADER, sp_comm=False)
        self.assertEqual(reasons(document), [("block-unread", X_MEM_CTL, 2)])
        self.assertEqual([one["code"] for one in document["unread"]], ["block-unread"] * 4)
        self.assertEqual(document["exchanges"], {"total": 0, "failed": []})

    def test_short_blocks(self):
        # Record 0 of the first instance is bytes 7 to 17, that of the second 2055 to 2065.
        whole = GOOD_HEADER + "00 " * 2059
        self.assertEqual(self.blocks(whole)["reasons"], [])
        document = self.blocks(whole[:-3])
        self.assertEqual(document["instances"][1]["missing"], [{"property": "Reg", "index": 0, "short": 10}])
        self.assertNotIn("missing", document["instances"][0])
        self.assertEqual(document["exchanges"]["failed"][0]["short"], 2065)

    def test_second_header(self):
        # Without a valid month in the first header the second one counts, at byte 2040, and records start at byte 0.
        text = "00 " * 4 + "ab " * 4 + "00 " * 2032 + GOOD_HEADER
        document = self.blocks(text[:-3], count=1)
        one = document["instances"][0]
        self.assertEqual(one["registers"]["Reg"]["value"], "0x00ABABABAB000000")
        self.assertEqual(one["missing"], [{"property": "StatisticTime", "short": 6}])

    def test_no_dot_commands(self):
        document = collect([jfr()], {}, [X_MEM_CTL])
        self.assertEqual([(one["code"], one["message"]) for one in document["reasons"]],
                         [("not-served", "not served: no service processor accepts dot commands")])


class CaptureTest(unittest.TestCase):

    def file(self, data="", faults=(), **keys):
        server = {"bmc_node": [{"storage_area": [{"name": "cpu_err", "data": data, **keys}]}], "fault": list(faults)}
        document = collect([], server, [model.DCAP_FILE])
        first = document["instances"][0] if document["instances"] else {}
        return document, first.get("file"), first.get("missing")

    def test_whole_files(self):
        for data, size in (("", 0), ("00 " * 3, 3), ("00 " * 10, 10), ("00 " * 25, 25)):
            document, file, missing = self.file(data)
            self.assertEqual((file, missing), ({"area": "cpu_err", "reported_size": size, "received": size}, None))
            self.assertEqual((document["status"], reasons(document)), ("complete", []))

    def test_more_came_than_was_reported(self):
        self.assertEqual(self.file("00 " * 30, size=5)[1:],
                         ({"area": "cpu_err", "reported_size": 5, "received": 10}, None))

    def test_refused_read(self):
        document, file, missing = self.file("00 " * 25, [{"on": "read", "nth": 2, "completion_code": 0xCB}])
        self.assertEqual((file["received"], missing),
                         (10, [{"property": "ErrRawData", "offset": 10, "completion_code": 203}]))
        self.assertEqual(document["reasons"], [
            {"code": "file-unread", "class": model.DCAP_FILE, "count": 1,
             "message": "1 of 3 capture files is missing or incomplete"}])

    def test_refused_read_of_an_empty_file(self):
        """The read has failed, but no byte is missing."""
        document, file, missing = self.file("", [{"on": "read", "completion_code": 0xC3}])
        self.assertEqual((file["reported_size"], missing, document["status"]), (0, None, "complete"))
        self.assertEqual([one["kind"] for one in document["exchanges"]["failed"]], ["read", "open", "open"])

    def test_cut_read_in_the_middle(self):
        # 19 bytes in all are 10 of data: manufacturer, count, five bytes. The rest of the file comes.
        _, file, missing = self.file("00 " * 25, [{"on": "read", "nth": 2, "truncate": 19}])
        self.assertEqual((file["received"], missing), (20, [{"property": "ErrRawData", "offset": 15, "short": 5}]))

    def test_cut_handle(self):
        # The handle is zero, which no area has; once an area is open, no answer makes it absent.
        document, _, missing = self.file("00 " * 3, [{"on": "open", "nth": 1, "truncate": 12}])
        self.assertEqual(missing, [{"property": "ErrRawData", "offset": 0, "completion_code": 203}])
        self.assertEqual(reasons(document), [("file-unread", model.DCAP_FILE, 1)])
        self.assertEqual([one["kind"] for one in document["exchanges"]["failed"]], ["read", "open", "open"])

    def test_files_that_do_not_come(self):
        for fault, code in (({"on": "open", "completion_code": 0xC1}, "absent"),
                            ({"on": "open", "completion_code": 0xC3}, "file-unread"),
                            ({"on": "open", "lost": True}, "file-unread"),
                            ({"on": "size", "completion_code": 0xCB}, "file-unread"),
                            ({"on": "size", "lost": True}, "file-unread")):
            document = self.file("00", [{**fault, "nth": 1}])[0]
            self.assertEqual(unread(document)[0], ("KROSG_DCAPFile/node0/cpu_err", code))
            self.assertEqual(reasons(document), [("file-unread", model.DCAP_FILE, 1)] * (code == "file-unread"))
        self.assertEqual(unread(self.file("00", size=-1)[0])[0], ("KROSG_DCAPFile/node0/cpu_err", "file-unread"))

    def test_size_over_the_limit(self):
        document = self.file("00", size=33554433)[0]
        self.assertEqual(document["reasons"], [
            {"code": "file-unread", "class": model.DCAP_FILE, "count": 1,
             "message": "1 of 3 capture files is missing or incomplete; node 0, storage area cpu_err reports 33554433 "
                        "bytes, over the limit of 32 MiB: not read"}])
        self.assertEqual(document["exchanges"]["total"], 4)

    def test_failed_close_costs_nothing(self):
        document = self.file("00", [{"on": "close", "lost": True}])[0]
        self.assertEqual((document["status"], document["exchanges"]["failed"][0]["kind"]), ("complete", "close"))

    def test_no_driver(self):
        document = collect([], {"bmc_node": [{}, {}], "ipmi": {"driver_present": False}}, [model.DCAP_FILE])
        self.assertEqual(document["reasons"], [
            {"code": "file-unread", "class": model.DCAP_FILE, "count": 6,
             "message": "6 of 6 capture files are missing or incomplete; the IPMI driver is not present"}])


if __name__ == "__main__":
    unittest.main()
