"""Results compared as a whole: of the shipped server that fails, and of a small one."""

import hashlib
import json
import unittest

from smallserver import (BLOCK, FAILING, FILES, J2_BRIDGE, J2_CACHE, J2_MEMORY, SMALL_SCHEMA, SMALL_SERVER, T4_BRIDGE,
                         T4_MEMORY, reason)
from velhostcase import BRIDGE, VelhostCase


class FailingServer(VelhostCase):
    """servers/failing.toml, whose faults are listed in its comments."""

    def setUp(self):
        super().setUp()
        self.document = self.collect("--sp", FAILING, "--record", "run.jsonl", status=3)

    def instance(self, key):
        return next(instance for instance in self.document["instances"] if instance["key"] == key)

    def test_reasons(self):
        blocks = [(code, name, 1, text) for name in (J2_BRIDGE, J2_MEMORY, J2_CACHE)
                  for code, text in (("block-unread", "1 of 3 register blocks was not received"),
                                     ("block-short", "1 of 3 register blocks was too short"),
                                     ("block-undecodable", "the register block of service processor 0 has no valid time"))]
        self.assertEqual(self.document["reasons"], [reason(*entry) for entry in (
            *blocks,
            ("register-unread", T4_MEMORY, 1, "1 of 11 registers was not read"),
            ("time-unread", T4_MEMORY, 1, "the time of 1 instance was not read"),
            ("register-unread", T4_BRIDGE, 3, "3 of 20 registers were not read"),
            ("file-unread", FILES, 5, "5 of 6 capture files are missing or incomplete"))])
        self.assertEqual(self.document["status"], "partial")
        self.assertTrue(self.document["message"].endswith("; and 10 more"), self.document["message"])

    def test_exchanges(self):
        self.assertEqual(self.document["exchanges"]["total"], 124)
        dots = [{"class": name, "service_processor": owner, "kind": "dot", **how}
                for name in (J2_BRIDGE, J2_MEMORY, J2_CACHE) for owner, how in ((1, {"short": 1024}), (2, {"lost": True}))]
        memory, bridge, files = T4_MEMORY + "/node0/instance0", T4_BRIDGE + "/node0/instance", FILES + "/node"

        def register(key, name, address, **how):
            return {"class": key.split("/")[0], "key": key, "property": name, "address": address, "node": 0,
                    "kind": "register", **how}

        def area(node, name, kind, **how):
            return {"class": FILES, "key": f"{files}{node}/{name}", "node": node, "kind": kind, **how}

        self.assertEqual(self.document["exchanges"]["failed"], [
            *dots,
            register(memory, "MemoryErrorStatus", "0x0C0100", lost=True),
            {"class": T4_MEMORY, "key": memory, "property": "StatisticTime", "node": 0, "kind": "timestamp",
             "completion_code": 0xCE},
            register(bridge + "0", "ChipIdentification", "0x0F0000", completion_code=0xD5),
            register(bridge + "0", "FirstErrorPointer", "0x0D0120", short=9),
            register(bridge + "1", "LinkStatus", "0x0D0138", completion_code=0xC0),
            area(0, "cpu_err", "read", property="ErrRawData", completion_code=0xC3),
            area(1, "cpu_err", "open", lost=True),
            area(0, "ioh_err", "size", completion_code=0xD5),
            area(1, "ioh_err", "open", lost=True),
            area(0, "zyn_err", "open", completion_code=0xCB),
            area(1, "zyn_err", "open", lost=True)])

    def test_unread(self):
        blocks = [(f"{name}/sp{owner}/instance{bank}", code) for name in (J2_BRIDGE, J2_MEMORY, J2_CACHE)
                  for owner, code in ((0, "block-undecodable"), (2, "block-unread")) for bank in (0, 1)]
        self.assertEqual([(unread["key"], unread["code"]) for unread in self.document["unread"]], [
            *blocks, (FILES + "/node1/cpu_err", "file-unread"), (FILES + "/node0/ioh_err", "file-unread"),
            (FILES + "/node1/ioh_err", "file-unread"), (FILES + "/node0/zyn_err", "absent"),
            (FILES + "/node1/zyn_err", "file-unread")])

    def test_missing(self):
        missing = {instance["key"]: instance["missing"] for instance in self.document["instances"]
                   if "missing" in instance}
        self.assertEqual({key: len(entries) for key, entries in missing.items()}, {
            J2_BRIDGE + "/sp1/instance1": 11, J2_MEMORY + "/sp1/instance0": 3, J2_MEMORY + "/sp1/instance1": 10,
            J2_CACHE + "/sp1/instance0": 10, J2_CACHE + "/sp1/instance1": 10, T4_MEMORY + "/node0/instance0": 2,
            T4_BRIDGE + "/node0/instance0": 2, T4_BRIDGE + "/node0/instance1": 1, FILES + "/node0/cpu_err": 1})
        self.assertEqual([(entry["index"], entry["short"]) for entry in missing[J2_MEMORY + "/sp1/instance0"]],
                         [(128, 0), (130, 0), (132, 0)])
        self.assertEqual(missing[T4_MEMORY + "/node0/instance0"],
                         [{"property": "MemoryErrorStatus", "address": "0x0C0100", "lost": True},
                          {"property": "StatisticTime", "completion_code": 0xCE}])
        self.assertEqual(missing[T4_BRIDGE + "/node0/instance0"],
                         [{"property": "ChipIdentification", "address": "0x0F0000", "completion_code": 0xD5},
                          {"property": "FirstErrorPointer", "address": "0x0D0120", "short": 9}])
        self.assertEqual(missing[T4_BRIDGE + "/node0/instance1"],
                         [{"property": "LinkStatus", "address": "0x0D0138", "completion_code": 0xC0}])
        self.assertEqual(missing[FILES + "/node0/cpu_err"],
                         [{"property": "ErrRawData", "offset": 120, "completion_code": 0xC3}])

    def test_values(self):
        self.assertEqual(len(self.document["instances"]), 14)
        bridge = self.instance(T4_BRIDGE + "/node0/instance0")["registers"]
        self.assertNotIn("FirstErrorPointer", bridge)
        status, header = bridge["UncorrectableErrorStatus"], bridge["HeaderLogHigh"]
        self.assertEqual((status["width"], status["value"], header["width"], header["value"]),
                         (32, "0x00050000", 64, "0x001F0A1000000000"))
        self.assertEqual(self.instance(FILES + "/node0/cpu_err")["file"],
                         {"area": "cpu_err", "reported_size": 349, "received": 120})

    def test_a_capture_file_that_was_cut_is_named_so(self):
        self.collect("--sp", FAILING, "--capture-dir", "captures", FILES, status=3)
        cut, = (self.folder / "captures").iterdir()
        self.assertEqual((cut.name, cut.stat().st_size), ("node1-cpu_err-0.bin.partial", 120))

    def test_a_recording_gives_the_same_result(self):
        replayed = self.collect("--sp", "replay:run.jsonl", status=3)
        for document in (self.document, replayed):
            del document["run"], document["source"]
        self.assertEqual(replayed, self.document)


class SmallServer(VelhostCase):
    """A result compared as a whole."""

    def test_the_whole_result(self):
        self.write("small.mof", SMALL_SCHEMA)
        self.write("small.toml", SMALL_SERVER)
        found = self.collect("--schema", "small.mof", "--sp", "sim:small.toml", BRIDGE, BLOCK, FILES, status=3)
        run = found.pop("run")
        self.assertRegex(run["id"], r"^[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}$")
        self.assertRegex(run["started"], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}\+00:00$")
        self.assertEqual(sorted(run), ["elapsed_ms", "host", "id", "labels", "started", "velhost"])
        expected = json.loads(SMALL_RESULT)
        expected["schema"]["sha256"] = hashlib.sha256(SMALL_SCHEMA.encode()).hexdigest()
        self.assertEqual(found, expected)


SMALL_RESULT = """
{"kind":"instancecollection","format_version":2,
"source":{"sp":["sim:small.toml"],"target":"sim:small.toml","simulated":true},
"machine_type":"6203",
"plugin":{"name":"Engineering Information Collector","version":"1.0","interface_version":"1.0"},
"schema":{"paths":["small.mof"],"sha256":"","example":false},
"instances":[
{"kind":"instance","class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0",
 "origin":{"path":"r8","node":0,"chip":1,"instance":0,"time_raw":"12 34 56 78"},
 "incomplete":true,"missing":[{"property":"Log","address":"0xABCDF0","completion_code":203}],
 "properties":{"InstanceID":"KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:0","ElementName":"PCI I/O bridge,0","MachineType":"6203",
  "StatisticTime":"19700101060856.000000+000","Count":[171,205,239,0,0,1,1,0,0,0,239,254,254,239]},
 "registers":{"Count":{"address":"0xABCDEF","width":32,"value":"0x00000100","folded":"0x00000101","fields":[]}}},
{"kind":"instance","class":"KROSG_X_MEMCTL_StatisticData","key":"KROSG_X_MEMCTL_StatisticData/sp0/instance0",
 "origin":{"path":"jfr","service_processor":0,"instance":0},
 "properties":{"InstanceID":"KROSG:KROSG_MEMCTL_StatisticData:6203:0","ElementName":"Memory and I/O controller,0","MachineType":"6203",
  "StatisticTime":"20260131113005.000000+000","First":[11,0,84,32,61,32,0,0,0,26,63,76,46,64]},
 "registers":{"First":{"index":0,"width":64,"value":"0x0000001A3F4C2E40","identification":"0B 00 54","fields":[]}}},
{"kind":"instance","class":"KROSG_X_MEMCTL_StatisticData","key":"KROSG_X_MEMCTL_StatisticData/sp1/instance0",
 "origin":{"path":"jfr","service_processor":1,"instance":0},
 "incomplete":true,"missing":[{"property":"First","index":0,"short":0},{"property":"StatisticTime","short":1}],
 "properties":{"InstanceID":"KROSG:KROSG_MEMCTL_StatisticData:6203:0","ElementName":"Memory and I/O controller,0","MachineType":"6203",
  "StatisticTime":"20484848484848.000000+000","First":[48,48,48,32,61,32,48,48,48,48,48,48,48,48]},
 "registers":{}},
{"kind":"instance","class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err",
 "origin":{"path":"ffdc","node":0},"file":{"area":"cpu_err","reported_size":12,"received":3},
 "incomplete":true,"missing":[{"property":"ErrRawData","offset":3,"short":3}],
 "properties":{"FileName":"cpu_err","ErrRawData":"0a ff 00 00 00 00 00 00 00 00 00 00 ","MessageTimestamp":"20260131123456.000000+060",
  "SourceNode":"1","CreationClassName":"KROSG_DCAPFile","LogCreationClassName":"KROSG_DCAPFile","LogName":"KROSG_DCAPFile","RecordID":"0"}}
],
"status":"partial","exit_status":3,
"message":"KROSG_X_MEMCTL_StatisticData: 1 of 2 register blocks was too short; KROSG_DCAPFile: 1 of 3 capture files is missing or incomplete",
"reasons":[
 {"code":"block-short","class":"KROSG_X_MEMCTL_StatisticData","count":1,"message":"1 of 2 register blocks was too short"},
 {"code":"file-unread","class":"KROSG_DCAPFile","count":1,"message":"1 of 3 capture files is missing or incomplete"}],
"findings":[],
"exchanges":{"total":15,"failed":[
 {"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance0","property":"Log","address":"0xABCDF0","node":0,"kind":"register","completion_code":203},
 {"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1","property":"Count","address":"0xABCDEF","node":0,"kind":"register","completion_code":203},
 {"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1","property":"Log","address":"0xABCDF0","node":0,"kind":"register","completion_code":203},
 {"class":"KROSG_X_MEMCTL_StatisticData","service_processor":1,"kind":"dot","short":1},
 {"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err","property":"ErrRawData","node":0,"kind":"read","short":3},
 {"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/cpu_err","property":"ErrRawData","node":0,"kind":"read","short":0},
 {"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/ioh_err","node":0,"kind":"open","completion_code":203},
 {"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/zyn_err","node":0,"kind":"open","completion_code":203}]},
"unread":[
 {"class":"KROSG_VO_PCIIOBRIDGE_StatisticData","key":"KROSG_VO_PCIIOBRIDGE_StatisticData/node0/instance1","origin":{"path":"r8","node":0,"chip":2,"instance":1},"code":"absent"},
 {"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/ioh_err","origin":{"path":"ffdc","node":0},"code":"absent"},
 {"class":"KROSG_DCAPFile","key":"KROSG_DCAPFile/node0/zyn_err","origin":{"path":"ffdc","node":0},"code":"absent"}]}
"""


if __name__ == "__main__":
    unittest.main()
