"""Whether a result is complete, what is missing from it and why."""

import json
import shutil
import unittest

from lancase import LanCase
from smallserver import BLOCK, FILES, GOOD_BLOCK, J2_MEMORY, SMALL_SCHEMA, SMALL_SERVER, T4_BRIDGE, reason
from velhostcase import BRIDGE, SOURCE, VelhostCase


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
        self.assertEqual(self.reasons(server, BRIDGE), [reason("nothing-read", None, 1, "no instance was delivered")])
        self.assertEqual(self.document["message"], "no instance was delivered")

    def test_no_class_at_all_is_nothing(self):
        self.assertEqual(self.reasons('machine_type = "6203"\n', schema="class A {};\n"),
                         [reason("nothing-read", None, 1, "there are no classes to collect")])

    def test_a_block_without_a_time_drops_those_before_it(self):
        blank = f'[[dot.service_processor]]\nblock = "{"00 " * 4095}00"\n'
        good = f'[[dot.service_processor]]\nblock = "{GOOD_BLOCK}"\n'
        self.assertEqual(self.reasons('machine_type = "6203"\n[dot]\n' + good + blank + good, BLOCK), [
            reason("block-undecodable", BLOCK, 1, "the register block of service processor 1 has no valid time; 1 instance "
                                                  "from other service processors was discarded with it")])
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
            reason("not-collected", BRIDGE, 2, "the collector ends the request after KROSG_DCAPFile")])
        self.assertEqual(self.document["unread"], [
            {"class": FILES, "key": f"{FILES}/node0/{area}", "origin": {"path": "ffdc", "node": 0}, "code": "absent"}
            for area in ("ioh_err", "zyn_err")])

    def test_a_class_that_this_machine_does_not_serve(self):
        reasons = self.reasons(SMALL_SERVER, "--machine-type", "6230", BRIDGE, "KROSG_Top", FILES)
        self.assertEqual(reasons[:2], [
            reason("not-served", BRIDGE, 1, 'not served: its machine types are "6203"'),
            reason("not-served", "KROSG_Top", 1, "not served: the collector does not support this class")])

    def test_an_exception_ends_the_request_of_all_classes(self):
        # The collector sets MachineType in each instance that it makes of registers.
        schema = SMALL_SCHEMA.replace("string MachineType; ", "")
        reasons = self.reasons(SMALL_SERVER, "--single-request", BRIDGE, BLOCK, FILES, schema=schema)
        self.assertEqual([(entry["code"], entry.get("class")) for entry in reasons], [
            ("nothing-read", None), ("request-failed", BRIDGE), ("not-collected", BLOCK), ("not-collected", FILES)])
        self.assertEqual({entry["message"] for entry in reasons[2:]}, {"the request ended before this class"})
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
            reason("not-served", BRIDGE, 1, "not served: there is no BMC node"),
            reason("not-served", BLOCK, 1, "not served: no service processor accepts dot commands"),
            reason("not-served", FILES, 1, "not served: there is no BMC node")])
        self.assertEqual(self.document["unread"], [])


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

    def test_simulator_recording_and_network_lack_the_same(self):
        self.write("small.mof", SMALL_SCHEMA)
        nodes = SMALL_SERVER[SMALL_SERVER.index("[[bmc_node]]"):]
        _, port = self.simulate(f"""machine_type = "6203"
{nodes}
[[bmc_node.register]]
chip = 1
address = 0xABCDF0
value = "01 02 03 04 05 06 07 08"
[[fault]]
on = "register"
nth = 1
truncate = 18
[[fault]]
on = "timestamp"
completion_code = 0xCE
[[fault]]
on = "read"
nth = 2
completion_code = 0xC3
""")
        over_network = self.collect_over_lan(port, "small.mof", "--record", "run.jsonl")
        self.assertEqual(over_network.returncode, 3, over_network.stderr)
        documents = [json.loads(over_network.stdout)]
        for source in ("replay:run.jsonl", "sim:server.toml"):
            documents.append(self.collect("--schema", "small.mof", "--sp", source, BRIDGE, FILES, status=3))
        for document in documents:
            del document["run"], document["source"]
            for instance in document["instances"]:
                instance["properties"].pop("MessageTimestamp", None)  # of the system's clock
        self.assertEqual(documents[1:], documents[:1] * 2)
        self.assertEqual(documents[0]["reasons"], [
            reason("register-unread", BRIDGE, 1, "1 of 4 registers was not read"),
            reason("time-unread", BRIDGE, 1, "the time of 1 instance was not read"),
            reason("file-unread", FILES, 1, "1 of 3 capture files is missing or incomplete")])
        self.assertEqual([failed for failed in documents[0]["exchanges"]["failed"] if "short" in failed], [
            {"class": BRIDGE, "key": BRIDGE + "/node0/instance0", "property": "Count", "address": "0xABCDEF", "node": 0,
             "kind": "register", "short": 9},
            {"class": FILES, "key": FILES + "/node0/cpu_err", "property": "ErrRawData", "node": 0, "kind": "read",
             "short": 3}])

    def check_failed(self, document, how):
        self.assertEqual(document["status"], "partial")
        self.assertEqual(document["reasons"], [
            reason("nothing-read", None, 1, "no instance was delivered"),
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
