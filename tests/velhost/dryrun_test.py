"""velhost collect --dry-run: the plan of a collection, for which nothing is sent."""

import json
import os
import socket
import unittest

from velhostcase import BRIDGE, VelhostCase

T4_BRIDGE = "KROSG_T4_PCIIOBRIDGE_StatisticData"
J2_MEMORY = "KROSG_J2_MEMCTL_StatisticData"


class DryRun(VelhostCase):
    def plan(self, *arguments):
        done = self.run_velhost("collect", "--dry-run", "--format", "json", *arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return json.loads(done.stdout)

    def refuses(self, status, text, *arguments):
        done = self.run_velhost("collect", "--dry-run", *arguments)
        self.assertEqual((done.returncode, done.stdout), (status, ""))
        self.assertIn(text, done.stderr)

    def counts(self, plan):
        return [len(plan[name]) for name in ("classes", "dot_commands", "areas")] + [plan["total"]]

    def test_the_demo_server(self):
        plan = self.plan()
        self.assertEqual(self.counts(plan), [8, 6, 6, 86])
        self.assertEqual(sum(len(each["instances"]) for each in plan["classes"]), 12 + 7 + 6)
        self.assertEqual(plan["machine_type"], "6203")

    def test_two_classes(self):
        plan = self.plan(T4_BRIDGE, J2_MEMORY)
        self.assertEqual(self.counts(plan), [2, 2, 0, 22])
        first, second = plan["classes"][0]["instances"]
        self.assertEqual((first["key"], first["origin"]),
                         (f"{T4_BRIDGE}/node0/instance0", {"path": "r8", "node": 0, "chip": 1, "instance": 0}))
        self.assertEqual((second["key"], second["origin"]["chip"]), (f"{T4_BRIDGE}/node0/instance1", 2))
        self.assertEqual([read["address"] for read in first["reads"]],
                         ["0x0F0000", "0x0F0008", "0x0D0100", "0x0D0108", "0x0D0110", "0x0D0118", "0x0D0120", "0x0D0128",
                          "0x0D0130", "0x0D0138"])
        self.assertEqual(first["reads"][0]["property"], "ChipIdentification")
        self.assertEqual([instance["key"] for instance in plan["classes"][1]["instances"]],
                         [f"{J2_MEMORY}/sp{s}/instance{i}" for s in (0, 1) for i in (0, 1)])
        self.assertEqual(plan["dot_commands"], [{"class": J2_MEMORY, "service_processor": s} for s in (0, 1)])

    def test_a_recording_gives_the_same_plan(self):
        self.collect("--record", "run.jsonl")
        self.assertEqual(self.plan("--sp", "replay:run.jsonl"), self.plan())

    def test_as_a_table(self):
        done = self.run_velhost("collect", "--dry-run", "--format", "table", T4_BRIDGE, J2_MEMORY)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        lines = done.stdout.splitlines()
        self.assertEqual(lines[:4], ["Machine type: 6203", "", f"{T4_BRIDGE}  node0/instance0",
                                     "  ChipIdentification          0x0F0000"])
        self.assertEqual(lines[-5:], ["Dot commands", f"  {J2_MEMORY}  service processor 0",
                                      f"  {J2_MEMORY}  service processor 1", "",
                                      "total: 20 register reads, 2 dot commands, 0 capture files"])

    def test_in_no_other_form(self):
        for form in ("jsonl", "mof", "cimxml"):
            self.refuses(64, f'velhost: --dry-run prints a table or json, not {form}\nSee "velhost collect --help".\n',
                         "--format", form)

    def test_to_a_file(self):
        done = self.run_velhost("collect", "--dry-run", "-o", "plan.json", T4_BRIDGE)
        self.assertEqual((done.returncode, done.stdout), (0, ""))
        self.assertEqual(json.loads((self.folder / "plan.json").read_text())["total"], 20)

    def test_nothing_is_recorded(self):
        done = self.run_velhost("collect", "--dry-run", "--record", "run.jsonl", "--capture-dir", "captures", "--label", "a=b",
                                "--progress", "always")
        self.assertEqual((done.returncode, done.stderr), (0, "".join(
            f"velhost: warning: {option} has no effect with --dry-run\n"
            for option in ("--label", "--record", "--capture-dir", "--progress"))))
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_nothing_is_sent_over_the_network(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as silent:
            silent.bind(("127.0.0.1", 0))
            silent.setblocking(False)
            spec = f"lan:user@127.0.0.1:{silent.getsockname()[1]}"
            plan = self.plan("--schema", "example", "--machine-type", "6203", "--sp", spec, "--sp", "lan:192.0.2.1")
            self.assertRaises(BlockingIOError, silent.recv, 1)
        self.assertEqual(self.counts(plan), [5, 0, 6, 80])
        self.assertEqual({area["node"] for area in plan["areas"]}, {0, 1})

    def test_over_the_network_the_machine_type_must_be_given(self):
        self.refuses(64, "velhost: without the machine type nothing can be planned; give it with --machine-type NNNN\n",
                     "--schema", "example", "--sp", "lan:192.0.2.1")
        self.refuses(64, "not used with real hardware", "--machine-type", "6203", "--sp", "lan:192.0.2.1")

    def test_no_device_is_opened(self):
        plan = self.plan("--schema", "example", "--machine-type", "4411", "--sp", "inband:/dev/ipmi776", "--sp",
                         "inband:/dev/ipmi777")
        self.assertEqual([each["class"] for each in plan["classes"]],
                         ["KROSG_T4_MEMCTL_StatisticData", T4_BRIDGE, "KROSG_DCAPFile"])
        self.assertEqual(self.counts(plan), [3, 0, 6, 31])

    def test_a_single_request_ends_at_the_capture_class(self):
        self.assertEqual(self.counts(self.plan("KROSG_DCAPFile", T4_BRIDGE)), [2, 0, 6, 20])

    def test_a_class_named_twice(self):
        keys = [instance["key"] for each in self.plan(T4_BRIDGE, T4_BRIDGE)["classes"] for instance in each["instances"]]
        place = f"{T4_BRIDGE}/node0/instance"
        self.assertEqual(keys, [f"{place}0", f"{place}1", f"{place}0#2", f"{place}1#2"])

    def test_patterns_and_base_classes(self):
        plan = self.plan("*_t4_*", "KROSG_MEMCTL_StatisticData")
        self.assertEqual([each["class"] for each in plan["classes"]], ["KROSG_T4_MEMCTL_StatisticData", T4_BRIDGE, J2_MEMORY])

    def test_what_is_not_served(self):
        done = self.run_velhost("collect", "--dry-run", "--machine-type", "6230", "--format", "json", BRIDGE)
        self.assertEqual((done.returncode, done.stderr),
                         (0, "velhost: warning: no register class serves the machine type 6230; did you mean 6203?\n"
                             f'velhost: warning: {BRIDGE} is not served: its machine types are "4523", "4524", "6203"; '
                             '"velhost classes" shows what is served\n'))
        self.assertEqual(json.loads(done.stdout)["classes"], [{"class": BRIDGE, "path": "r8", "instances": []}])

    def test_it_warns_as_a_collection_does(self):
        done = self.run_velhost("collect", "--dry-run", "--single-request", "--format", "json", "KROSG_DCAPFile", T4_BRIDGE)
        self.assertEqual(self.counts(json.loads(done.stdout)), [1, 0, 6, 0])
        self.assertEqual((done.returncode, done.stderr),
                         (0, "velhost: warning: the collector ends the request after KROSG_DCAPFile; not collected in a single "
                             f"request: {T4_BRIDGE}\n"))

    def test_what_a_collection_refuses(self):
        self.refuses(64, "did you mean KROSG_DCAPFile?", "KROSG_DCAPFil")
        self.refuses(64, '"X*" matches no class that this machine serves', "X*")
        self.refuses(66, "missing.so", "--plugin", "missing.so")
        self.refuses(66, "missing.mof", "--schema", "missing.mof")
        self.refuses(65, "takes 131328 register reads", "--schema", self.schema({f"R{i}": (i, 8) for i in range(256)}, 513))
        self.refuses(3, "deadline reached while reading the schema", "--timeout", "0.001")

    def test_another_plugin_than_the_collector(self):
        plan = self.plan("--plugin", os.environ["FAILING_PLUGIN"], T4_BRIDGE)
        self.assertEqual(plan["classes"], [{"class": T4_BRIDGE, "instances": []}])


if __name__ == "__main__":
    unittest.main()
