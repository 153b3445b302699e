"""Whether a result is complete, what is missing from it and why: failing servers and unfavourable runs."""

import hashlib
import json
import shutil
import unittest

from lancase import LanCase
from velhostcase import BRIDGE, SOURCE, VelhostCase

J2_BRIDGE = "KROSG_J2_PCIIOBRIDGE_StatisticData"
J2_MEMORY = "KROSG_J2_MEMCTL_StatisticData"
J2_CACHE = "KROSG_J2_L3Cache_StatisticData"
T4_MEMORY = "KROSG_T4_MEMCTL_StatisticData"
T4_BRIDGE = "KROSG_T4_PCIIOBRIDGE_StatisticData"
FILES = "KROSG_DCAPFile"
FAILING = f"sim:{SOURCE}/servers/failing.toml"

# One class of each way: a block of one record, two instances of two registers, capture files.
SMALL_SCHEMA = """
Qualifier SupportedMachineTypes : string[], Scope(class), Flavor(EnableOverride, Restricted);
Qualifier MaxInstanceCount : uint16, Scope(class), Flavor(EnableOverride, Restricted);
Qualifier Offset : uint32, Scope(property);
Qualifier MaxLen : uint32, Scope(property);
Qualifier Index : uint16, Scope(property);
class KROSG_Top { string InstanceID; string ElementName; string MachineType; datetime StatisticTime; };
class KROSG_PCIIOBRIDGE_StatisticData : KROSG_Top {};
class KROSG_L3Cache_StatisticData : KROSG_Top {};
class KROSG_MEMCTL_StatisticData : KROSG_Top { [Index(0), MaxLen(8)] uint8 First[]; };
[SupportedMachineTypes{"6203"}, MaxInstanceCount(1)]
class KROSG_X_MEMCTL_StatisticData : KROSG_MEMCTL_StatisticData {};
[SupportedMachineTypes{"6203"}, MaxInstanceCount(2)]
class KROSG_VO_PCIIOBRIDGE_StatisticData : KROSG_Top {
  [Offset(0xABCDEF), MaxLen(4)] uint8 Count[]; [Offset(0xABCDF0), MaxLen(8)] uint8 Log[]; };
class KROSG_DCAPFile {
  string FileName; string ErrRawData; datetime MessageTimestamp; string SourceNode;
  string CreationClassName; string LogCreationClassName; string LogName; string RecordID;
};
"""
BLOCK = "KROSG_X_MEMCTL_StatisticData"
GOOD_BLOCK = "00 1a 01 1f 0b 1e 05 0b 00 54 00 00 00 1a 3f 4c 2e 40"  # the header, then the record at byte 7
SMALL_SERVER = f"""
machine_type = "6203"
local_time = 2026-01-31T12:34:56+01:00
[dot]
[[dot.service_processor]]
block = "{GOOD_BLOCK}"
[[dot.service_processor]]
block = "00"
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
chip = 1
address = 0xABCDEF
value = "00 01 00 00 00 00 00 00"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "0a ff 00"
size = 12
"""


def reason(code, class_name, count, message):
    return {"code": code, "count": count, "message": message, **({"class": class_name} if class_name else {})}


class FailingServer(VelhostCase):
    """servers/failing.toml, whose faults are listed in its comments."""

    def setUp(self):
        super().setUp()
        self.document = self.collect("--sp", FAILING, "--record", "run.jsonl", status=3)

    def instance(self, key):
        return next(instance for instance in self.document["instances"] if instance["key"] == key)

    def test_reasons(self):
        blocks = [(code, name, 1, text) for name in (J2_BRIDGE, J2_MEMORY, J2_CACHE)
                  for code, text in (("block-unread", "1 of 3 register blocks did not come"),
                                     ("block-short", "1 of 3 register blocks was too short"),
                                     ("block-undecodable", "the register block of service processor 0 has no valid time"))]
        self.assertEqual(self.document["reasons"], [reason(*entry) for entry in (
            *blocks,
            ("register-unread", T4_MEMORY, 1, "1 of 10 registers was not read"),
            ("time-unread", T4_MEMORY, 1, "the time of 1 instance was not read"),
            ("register-unread", T4_BRIDGE, 3, "3 of 20 registers were not read"),
            ("file-unread", FILES, 5, "5 of 6 capture files are missing or incomplete"))])
        self.assertEqual(self.document["status"], "partial")
        self.assertTrue(self.document["message"].endswith("; and 10 more"), self.document["message"])

    def test_exchanges(self):
        self.assertEqual(self.document["exchanges"]["total"], 122)
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
            J2_BRIDGE + "/sp1/instance1": 11, J2_MEMORY + "/sp1/instance0": 3, J2_MEMORY + "/sp1/instance1": 9,
            J2_CACHE + "/sp1/instance0": 8, J2_CACHE + "/sp1/instance1": 8, T4_MEMORY + "/node0/instance0": 2,
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
        memory = self.instance(T4_MEMORY + "/node0/instance0")["registers"]
        # The bytes of the address, each xor 17 times its place: 20 10 2e 13 45 59 46 76 and 18 10 2e 2b 45 59 7e 76.
        # The collector ors the second byte onto the first; in the other register that changes nothing.
        self.assertEqual(memory["CorrectableErrorCount"], {
            "address": "0x0C0120", "width": 32, "value": "0x132E1020", "upper": "0x76465945", "folded": "0x132E1030"})
        self.assertEqual(memory["EccSyndrome"], {
            "address": "0x0C0118", "width": 32, "value": "0x2B2E1018", "upper": "0x767E5945"})
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
 "registers":{"Count":{"address":"0xABCDEF","width":32,"value":"0x00000100","folded":"0x00000101"}}},
{"kind":"instance","class":"KROSG_X_MEMCTL_StatisticData","key":"KROSG_X_MEMCTL_StatisticData/sp0/instance0",
 "origin":{"path":"jfr","service_processor":0,"instance":0},
 "properties":{"InstanceID":"KROSG:KROSG_MEMCTL_StatisticData:6203:0","ElementName":"Memory and I/O controller,0","MachineType":"6203",
  "StatisticTime":"20260131113005.000000+000","First":[11,0,84,32,61,32,0,0,0,26,63,76,46,64]},
 "registers":{"First":{"index":0,"width":64,"value":"0x0000001A3F4C2E40","identification":"0B 00 54"}}},
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


class Status(VelhostCase):
    """What makes a result partial, and what does not."""

    def reasons(self, server, *arguments, status=3, schema=SMALL_SCHEMA):
        self.write("small.mof", schema)
        self.write("small.toml", server)
        self.document = self.collect("--schema", "small.mof", "--sp", "sim:small.toml", *arguments, status=status)
        return self.document["reasons"]

    def test_what_is_absent_is_not_missing_from_the_result(self):
        server = SMALL_SERVER[:SMALL_SERVER.index("[[bmc_node.register]]")].replace('timestamp = "12 34 56 78"\n', """
register = [{ chip = 1, address = 0xABCDEF, value = "01 02 03 04 05 06 07 08" }]
""")
        self.assertEqual(self.reasons(server, BRIDGE, FILES, status=0), [])
        self.assertEqual(self.document["status"], "complete")
        self.assertNotIn("message", self.document)
        self.assertEqual(self.document["instances"][0]["missing"],
                         [{"property": "Log", "address": "0xABCDF0", "completion_code": 0xCB},
                          {"property": "StatisticTime", "completion_code": 0xCB}])
        self.assertEqual({unread["code"] for unread in self.document["unread"]}, {"absent"})

    def test_any_other_code_makes_it_partial(self):
        fault = '[[fault]]\non = "register"\nnth = 2\ncompletion_code = 0xC1\n'
        self.assertEqual(self.reasons(SMALL_SERVER + fault, BRIDGE),
                         [reason("register-unread", BRIDGE, 1, "1 of 4 registers was not read")])

    def test_a_time_that_is_not_read_leaves_it_complete(self):
        for nth in (1, 2):
            fault = f'[[fault]]\non = "timestamp"\nnth = {nth}\nlost = true\n'
            self.assertEqual(self.reasons(SMALL_SERVER + fault, BRIDGE, status=0),
                             [reason("time-unread", BRIDGE, 1, "the time of 1 instance was not read")])
            self.assertEqual(self.document["status"], "complete")
            instance = self.document["instances"][0]
            self.assertEqual(instance["missing"][-1], {"property": "StatisticTime", "lost": True})
            self.assertNotIn("time_raw", instance["origin"])

    def test_everything_absent_is_nothing(self):
        server = SMALL_SERVER.replace("0xABCDEF", "0x123456")
        self.assertEqual(self.reasons(server, BRIDGE), [reason("nothing-read", None, 1, "no instance came")])
        self.assertEqual(self.document["message"], "no instance came")

    def test_no_class_at_all_is_nothing(self):
        self.assertEqual(self.reasons('machine_type = "6203"\n', schema="class A {};\n"),
                         [reason("nothing-read", None, 1, "there is no class to collect")])

    def test_a_block_without_a_time_drops_those_before_it(self):
        blank = f'[[dot.service_processor]]\nblock = "{"00 " * 4095}00"\n'
        good = f'[[dot.service_processor]]\nblock = "{GOOD_BLOCK}"\n'
        self.assertEqual(self.reasons('machine_type = "6203"\n[dot]\n' + good + blank + good, BLOCK), [
            reason("block-undecodable", BLOCK, 1, "the register block of service processor 1 has no valid time; 1 instance "
                                                  "of others was dropped with it")])
        self.assertEqual([(unread["key"], unread["code"]) for unread in self.document["unread"]],
                         [(BLOCK + "/sp0/instance0", "discarded"), (BLOCK + "/sp1/instance0", "block-undecodable")])
        self.assertEqual([instance["key"] for instance in self.document["instances"]], [BLOCK + "/sp2/instance0"])
        self.assertEqual(self.document["exchanges"]["failed"], [])

    def test_a_failed_communication_check(self):
        self.assertEqual(self.reasons(SMALL_SERVER.replace("[dot]", "[dot]\nsp_comm = false"), BLOCK), [
            reason("block-unread", BLOCK, 2, "the communication check of the service processor failed")])
        self.assertEqual(self.document["exchanges"]["total"], 0)

    def test_without_a_driver_there_are_no_capture_files(self):
        server = SMALL_SERVER.replace("[dot]", "[ipmi]\ndriver_present = false\n[dot]")
        self.assertEqual(self.reasons(server, FILES), [reason(
            "file-unread", FILES, 3, "3 of 3 capture files are missing or incomplete; the IPMI driver is not present")])

    def test_a_class_collected_twice(self):
        self.assertEqual(self.reasons(SMALL_SERVER, BRIDGE, BRIDGE.lower(), status=0), [])
        self.assertEqual([instance["key"] for instance in self.document["instances"]],
                         [BRIDGE + "/node0/instance0", BRIDGE + "/node0/instance0#2"])

    def test_four_chips_have_four_keys(self):
        document = self.collect("--sp", f"sim:{SOURCE}/servers/dot-command.toml", "KROSG_J2_MEMCTL_StatisticData")
        self.assertEqual([instance["key"] for instance in document["instances"]],
                         [f"{J2_MEMORY}/sp{owner}/instance{bank}" for owner in (0, 1) for bank in (0, 1)])

    def test_one_failed_register_leaves_the_other_instances_whole(self):
        shutil.copytree(SOURCE / "servers", self.folder / "servers")
        with (self.folder / "servers" / "demo.toml").open("a") as server:
            server.write('[[fault]]\non = "register"\nnth = 20\ncompletion_code = 0xC3\n')
        document = self.collect("--sp", "sim:servers/demo.toml", status=3)
        self.assertEqual(document["reasons"], [reason("register-unread", T4_BRIDGE, 1, "1 of 20 registers was not read")])
        self.assertEqual([instance["key"] for instance in document["instances"] if instance.get("incomplete")],
                         [T4_BRIDGE + "/node0/instance0", BRIDGE + "/node0/instance2"])

    def test_a_size_over_the_limit_is_told(self):
        server = SMALL_SERVER.replace("size = 12", "size = 2147483647")
        refused = "node 0, storage area cpu_err reports 2147483647 bytes, over the limit of 32 MiB: not read"
        self.assertEqual(self.reasons(server, FILES),
                         [reason("file-unread", FILES, 1, "1 of 3 capture files is missing or incomplete; " + refused)])

    def test_classes_after_the_capture_files_of_a_single_request(self):
        self.assertEqual(self.reasons(SMALL_SERVER.replace("size = 12", ""), "--single-request", FILES, BRIDGE, BRIDGE), [
            reason("not-collected", BRIDGE, 2, "the collector ends a request at KROSG_DCAPFile")])
        self.assertEqual(self.document["unread"], [
            {"class": FILES, "key": f"{FILES}/node0/{area}", "origin": {"path": "ffdc", "node": 0}, "code": "absent"}
            for area in ("ioh_err", "zyn_err")])

    def test_a_class_that_this_machine_does_not_serve(self):
        reasons = self.reasons(SMALL_SERVER, "--machine-type", "6230", BRIDGE, "KROSG_Top", FILES)
        self.assertEqual(reasons[:2], [
            reason("not-served", BRIDGE, 1, 'its machine types are "6203"'),
            reason("not-served", "KROSG_Top", 1, "the collector does not know the class")])

    def test_an_exception_ends_the_request_of_all_classes(self):
        # The collector sets MachineType in each instance that it makes of registers.
        schema = SMALL_SCHEMA.replace("string MachineType; ", "")
        reasons = self.reasons(SMALL_SERVER, "--single-request", BRIDGE, BLOCK, FILES, schema=schema)
        self.assertEqual([(entry["code"], entry.get("class")) for entry in reasons], [
            ("nothing-read", None), ("request-failed", BRIDGE), ("not-collected", BLOCK), ("not-collected", FILES)])
        self.assertEqual({entry["message"] for entry in reasons[2:]}, {"the request ended before it"})
        self.assertEqual([(unread["key"], unread["code"]) for unread in self.document["unread"]],
                         [(BRIDGE + "/node0/instance0", "register-unread"), (BRIDGE + "/node0/instance1", "absent")])

    def test_where_the_plan_knows_nothing_no_place_is_guessed(self):
        # A register that is not uint8[] is outside what the plan describes.
        schema = SMALL_SCHEMA.replace("uint8 First[]", "uint16 First[]")
        reasons = self.reasons(SMALL_SERVER, "--single-request", BLOCK, BRIDGE, status=0, schema=schema)
        self.assertEqual((reasons, self.document["unread"]), ([], []))
        self.assertEqual([instance["key"] for instance in self.document["instances"]],
                         [BLOCK + "/?1", BLOCK + "/?2", BRIDGE + "/?3"])
        for member in ("origin", "missing", "registers"):
            self.assertFalse(any(member in instance for instance in self.document["instances"]), member)
        # Of the exchanges after the block nobody knows the class.
        self.assertEqual(self.document["exchanges"]["failed"], [
            {"class": BLOCK, "address": address, "node": 0, "kind": "register", "completion_code": 0xCB}
            for address in ("0xABCDF0", "0xABCDEF", "0xABCDF0")])

    def test_a_machine_type_that_no_register_class_serves(self):
        done = self.run_velhost("collect", "--format", "json", "--machine-type", "6230")
        self.assertEqual((done.returncode, done.stderr), (
            0, "velhost: warning: no register class serves the machine type 6230; did you mean 6203?\n"))
        document = json.loads(done.stdout)
        self.assertEqual((document["status"], len(document["instances"])), ("complete", 6))

    def test_a_class_that_nothing_leads_to(self):
        self.assertEqual(self.reasons('machine_type = "6203"\n', BRIDGE, BLOCK, FILES)[1:], [
            reason("not-served", BRIDGE, 1, "there is no BMC node"),
            reason("not-served", BLOCK, 1, "no service processor takes dot commands"),
            reason("not-served", FILES, 1, "there is no BMC node")])
        self.assertEqual(self.document["unread"], [])


class EndOfRun(VelhostCase):
    """The exit status is the one in the result, whatever fails at the end."""

    def run_and_read(self, *arguments):
        done = self.run_velhost("collect", "--format", "json", *arguments)
        document = json.loads(done.stdout)
        self.assertEqual(document["exit_status"], done.returncode)
        return done.returncode, document, done.stderr

    def test_a_trace_or_recording_that_cannot_be_written(self):
        for option in ("--log", "--record"):
            status, document, errors = self.run_and_read(option, "/dev/full", BRIDGE)
            self.assertEqual((status, document["status"]), (74, "complete"))
            self.assertNotIn("message", document)
            self.assertIn("/dev/full", errors)

    def test_it_stays_partial_when_something_is_missing(self):
        status, document, errors = self.run_and_read("--log", "/dev/full", "--sp", FAILING, T4_BRIDGE)
        self.assertEqual((status, document["status"]), (74, "partial"))
        self.assertIn(f"velhost: partial: {T4_BRIDGE}: ", errors)

    def test_a_mismatch_counts_less_than_a_failed_write(self):
        self.collect("--record", "run.jsonl", FILES)
        status, document, errors = self.run_and_read("--sp", "replay:run.jsonl", BRIDGE)
        self.assertEqual((status, document["status"]), (65, "failed"))
        self.assertRegex(document["message"], r"^run\.jsonl:2:1: error: found .*, expected ")
        self.assertIn(document["message"], errors)
        self.assertEqual(document["reasons"], [
            reason("nothing-read", None, 1, "no instance came"),
            reason("register-unread", BRIDGE, 36, "36 of 36 registers were not read")])
        self.assertEqual({failed["not_recorded"] for failed in document["exchanges"]["failed"]}, {True})
        status, document, errors = self.run_and_read("--log", "/dev/full", "--sp", "replay:run.jsonl", BRIDGE)
        self.assertEqual((status, document["status"]), (74, "partial"))
        self.assertIn("run.jsonl:2:1: error: ", errors)

    def test_what_a_recording_does_not_have_is_named_so(self):
        self.collect("--record", "run.jsonl", BRIDGE)
        lines = (self.folder / "run.jsonl").read_bytes().splitlines(keepends=True)
        (self.folder / "run.jsonl").write_bytes(b"".join(lines[:13]))
        status, document, _ = self.run_and_read("--sp", "replay:run.jsonl", BRIDGE)
        self.assertEqual((status, document["status"]), (3, "partial"))
        # Twelve registers, then nothing: neither times nor the other two bridges.
        self.assertEqual(document["reasons"], [
            reason("register-unread", BRIDGE, 24, "24 of 36 registers were not read"),
            reason("time-unread", BRIDGE, 1, "the time of 1 instance was not read")])
        self.assertEqual(document["instances"][0]["missing"], [{"property": "StatisticTime", "not_recorded": True}])


class Source(VelhostCase):
    """What a result says of its run, its server and its schema."""

    def test_a_replay_is_as_simulated_as_what_was_recorded(self):
        self.collect("--record", "run.jsonl", FILES)
        header = json.loads((self.folder / "run.jsonl").read_text().splitlines()[0])
        document = self.collect("--sp", "replay:run.jsonl", FILES)
        self.assertEqual(document["source"], {"sp": ["replay:run.jsonl"], "target": "replay:run.jsonl", "simulated": True,
                                              "recorded": header["started"]})
        self.assertEqual((header["source"]["target"], header["source"]["simulated"]), ("sim", True))
        self.assertEqual((header["classes"], header["single_request"]), ([FILES], False))
        self.assertEqual(header["schema_sha256"], document["schema"]["sha256"])

    def test_a_replay_with_another_schema_is_warned_of(self):
        self.write("small.mof", SMALL_SCHEMA)
        self.write("small.toml", SMALL_SERVER.replace("size = 12", ""))
        self.collect("--schema", "small.mof", "--sp", "sim:small.toml", "--record", "run.jsonl", FILES)
        self.write("small.mof", SMALL_SCHEMA + "class Other {};\n")
        replay = ["collect", "--sp", "replay:run.jsonl", "--schema", "small.mof", "--format", "json", FILES]
        self.assertEqual(self.run_velhost(*replay).stderr, "velhost: warning: the recording was made with another schema\n")
        self.write("small.mof", SMALL_SCHEMA)
        self.assertEqual(self.run_velhost(*replay).stderr, "")

    def test_labels(self):
        document = self.collect("--label", "rack=7", "--label", "room=", FILES)
        self.assertEqual(document["run"]["labels"], {"rack": "7", "room": ""})
        self.assertTrue(document["schema"]["example"])

    def test_every_line_names_its_run(self):
        done = self.run_velhost("collect", "--format", "jsonl", "--label", "rack=7", FILES)
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual({line["run_id"] for line in lines}, {lines[-1]["run"]["id"]})
        self.assertEqual([line["labels"] for line in lines], [{"rack": "7"}] * 7)


class OverTheNetwork(LanCase):
    def test_where_every_exchange_fails_each_register_is_named(self):
        schema = self.schema({"Listed": (0x00ABCDEF, 8), "Other": (0x00112233, 8)}, count=2)
        server = 'machine_type = "6203"\n[[bmc_node]]\n[[fault]]\non = "ipmi"\n'
        _, port = self.simulate(server + "completion_code = 0xC3\n")
        over_network = self.collect_over_lan(port, schema, "--record", "run.jsonl")
        self.assertEqual(over_network.returncode, 3, over_network.stderr)
        documents = [json.loads(over_network.stdout)]
        documents.append(self.collect("--schema", schema, "--sp", "replay:run.jsonl", BRIDGE, FILES, status=3))
        documents.append(self.collect("--schema", schema, "--sp", "sim:server.toml", BRIDGE, FILES, status=3))
        self.write("lost.toml", server + "lost = true\n")
        documents.append(self.collect("--schema", schema, "--sp", "sim:lost.toml", BRIDGE, FILES, status=3))
        hows = [{"completion_code": 0xC3}] * 3 + [{"lost": True}]
        for document, how in zip(documents, hows, strict=True):
            self.check_failed(document, how)
        self.assertEqual([document["source"]["simulated"] for document in documents], [False, False, True, True])
        target = f"127.0.0.1:{port}"
        self.assertEqual((documents[0]["source"]["sp"], documents[0]["source"]["target"]),
                         ([f"lan:{self.user}@{target}"], f"lan:{target}"))

    def check_failed(self, document, how):
        self.assertEqual(document["status"], "partial")
        self.assertEqual(document["reasons"], [
            reason("nothing-read", None, 1, "no instance came"),
            reason("register-unread", BRIDGE, 4, "4 of 4 registers were not read"),
            reason("file-unread", FILES, 3, "3 of 3 capture files are missing or incomplete")])
        places = [f"{BRIDGE}/node0/instance{number}" for number in (0, 1)]
        self.assertEqual([failed for failed in document["exchanges"]["failed"] if failed["kind"] == "register"], [
            {"class": BRIDGE, "key": key, "property": name, "address": address, "node": 0, "kind": "register", **how}
            for key in places for name, address in (("Listed", "0xABCDEF"), ("Other", "0x112233"))])
        self.assertEqual([(unread["key"], unread["code"]) for unread in document["unread"]],
                         [(key, "register-unread") for key in places]
                         + [(f"{FILES}/node0/{area}", "file-unread") for area in ("cpu_err", "ioh_err", "zyn_err")])


if __name__ == "__main__":
    unittest.main()
