"""The same server through the simulator, a recording and the network."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import unittest

from lancase import LanCase, free_port, is_free
from velhostcase import BRIDGE, VELHOST

SERVER = """
machine_type = "6203"
local_time = 2026-01-31T12:34:56+01:00
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
chip = 1
address = 0x00ABCDEF
value = "01 02 03 04 05 06 07 08"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16"
"""

OTHER_AREA = """
[[bmc_node.storage_area]]
name = "ioh_err"
data = "20 21 22 23 24 25 26 27 28 29 2a 2b"
"""

FAULTS = """
[[fault]]
on = "register"
nth = 2
completion_code = 0xC3
[[fault]]
on = "register"
nth = 4
truncate = 12
[[fault]]
on = "read"
nth = 2
truncate = 17
"""

SLOW = SERVER + """
[[fault]]
on = "register"
delay_ms = 20
"""


class Transports(LanCase):
    def test_a_killed_simulator_leaves_nothing(self):
        process, port = self.simulate(SERVER)
        self.assertEqual(len(list(self.folder.glob("velhost-simulate-*"))), 1)
        process.kill()
        process.wait(timeout=60)
        # Both happen soon, in either order: another process removes the folder, and the kernel ends ipmi_sim, which
        # releases its port.
        self.wait_until(lambda: not list(self.folder.glob("velhost-simulate-*")), "the private folder is still there")
        self.wait_until(lambda: is_free(port), "ipmi_sim still has its port")

    def test_simulator_recording_and_network_agree(self):
        _, port = self.simulate(SERVER)
        schema = self.schema({"Listed": (0x00ABCDEF, 8), "Folded": (0x00ABCDEF, 4), "Pattern": (0x00112233, 8)}, count=2)
        server = str(self.folder / "server.toml")
        classes = [BRIDGE, "KROSG_DCAPFile"]
        simulated = self.collect("--schema", schema, "--sp", f"sim:{server}", "--record", "run.jsonl", *classes)
        replayed = self.collect("--schema", schema, "--sp", "replay:run.jsonl", *classes)
        done = subprocess.run([VELHOST, *self.lan_arguments(port, schema)], capture_output=True, text=True,
                              cwd=self.folder, env=self.environment, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        over_network = json.loads(done.stdout)
        self.assertEqual(len(simulated["instances"]), 3)
        self.assertEqual(simulated["instances"][0]["properties"]["Listed"], [171, 205, 239, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0])
        self.assertEqual(simulated["instances"], replayed["instances"])
        for document in (simulated, over_network):
            for instance in document["instances"]:
                instance["properties"].pop("MessageTimestamp", None)  # over the network the clock is the system's
        self.assertEqual(simulated["instances"], over_network["instances"])

    def serve_and_compare(self, server, status):
        schema = self.schema({"Listed": (0x00ABCDEF, 8), "Folded": (0x00ABCDEF, 4), "Pattern": (0x00112233, 8)}, count=2)
        self.write("server.toml", server)
        self.collect("--schema", schema, "--sp", "sim:server.toml", "--record", "run.jsonl", BRIDGE, "KROSG_DCAPFile",
                     status=status)
        replayed = self.collect("--schema", schema, "--sp", "replay:run.jsonl", status=status)
        _, port = self.simulate_file("run.jsonl")
        done = self.collect_over_lan(port, schema)
        self.assertEqual(done.returncode, status, done.stderr)
        served = json.loads(done.stdout)
        self.assertEqual((served["machine_type"], served["source"]["simulated"]), ("6203", False))
        for document in (replayed, served):
            for instance in document["instances"]:
                instance["properties"].pop("MessageTimestamp", None)  # over the network the clock is the system's
        for member in ("instances", "unread", "exchanges", "reasons"):
            self.assertEqual(served[member], replayed[member])
        return served

    def test_a_recording_is_served_over_the_network(self):
        served = self.serve_and_compare(SERVER.replace('timestamp = "12 34 56 78"', "") + OTHER_AREA, 0)
        self.assertEqual(len(served["instances"]), 4)

    def test_recorded_failures_are_served_over_the_network(self):
        served = self.serve_and_compare(SERVER + OTHER_AREA + FAULTS, 3)
        how = [{name: each[name] for name in ("completion_code", "short") if name in each}
               for each in served["exchanges"]["failed"]]
        self.assertEqual(how, [{"completion_code": 195}, {"short": 3}, {"short": 3}, {"completion_code": 203}])

    def test_what_was_not_recorded_is_absent_over_the_network(self):
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        self.write("server.toml", SERVER)
        self.collect("--schema", schema, "--sp", "sim:server.toml", "--record", "run.jsonl", BRIDGE)
        schema = self.schema({"Listed": (0x00ABCDEF, 8), "New": (0x00112233, 8)})
        _, port = self.simulate_file("run.jsonl")
        done = self.collect_over_lan(port, schema)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        document = json.loads(done.stdout)
        self.assertEqual([(each.get("property"), each["kind"], each["completion_code"])
                          for each in document["exchanges"]["failed"]],
                         [("New", "register", 203), *[(None, "open", 203)] * 3])

    def test_a_recording_in_which_an_answer_was_lost_is_not_served(self):
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        self.write("server.toml", SERVER + '[[fault]]\non = "timestamp"\nlost = true\n')
        self.collect("--schema", schema, "--sp", "sim:server.toml", "--record", "run.jsonl", BRIDGE)
        done = self.run_velhost("simulate", "run.jsonl", "--port", str(free_port()))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (65, "", (
            "velhost: run.jsonl:3:1: error: found an exchange without an answer, but ipmi_sim answers every request; "
            "expected a recording in which none was lost\n")))

    def test_a_cut_recording_is_served_with_a_warning(self):
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        self.write("server.toml", SERVER)
        self.collect("--schema", schema, "--sp", "sim:server.toml", "--record", "run.jsonl", BRIDGE)
        self.write("cut.jsonl", (self.folder / "run.jsonl").read_text()[:-1])
        process, _ = self.simulate_file("cut.jsonl")
        self.stop(process)
        self.assertEqual(process.stderr.read(), "velhost: cut.jsonl:4:1: warning: the recording was cut in this line; it "
                                                "is used up to the line before\n")

    def test_the_machine_type_over_the_network_is_the_frus(self):
        _, port = self.simulate(SERVER)
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        server = str(self.folder / "server.toml")
        simulated = self.collect("--schema", schema, "--sp", f"sim:{server}", BRIDGE, "KROSG_DCAPFile")
        done = self.collect_over_lan(port, schema, "--record", "run.jsonl")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        document = json.loads(done.stdout)
        self.assertEqual(document["machine_type"], "6203")
        # Reading it is not part of the collection.
        self.assertEqual(document["exchanges"]["total"], simulated["exchanges"]["total"])
        recorded = (self.folder / "run.jsonl").read_text()
        self.assertEqual(json.loads(recorded.splitlines()[0])["machine_type"], "6203")
        self.assertNotIn('"request":"01 20 0a', recorded)

    def test_the_schema_decides_between_machine_types(self):
        _, port = self.simulate(SERVER.replace('"6203"', '"62031 9999 6203"'))
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        self.assertEqual(json.loads(self.collect_over_lan(port, schema).stdout)["machine_type"], "6203")
        pathlib.Path(schema).write_text(pathlib.Path(schema).read_text().replace('"6203"', '"6204"'))
        self.assertEqual(json.loads(self.collect_over_lan(port, schema).stdout)["machine_type"], "9999")

    def test_another_machine_type_than_the_frus_is_warned_of(self):
        _, port = self.simulate(SERVER)
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        done = self.collect_over_lan(port, schema, "--machine-type", "4411")
        self.assertEqual((done.returncode, done.stderr),
                         (0, f"velhost: warning: lan:127.0.0.1:{port}: --machine-type 4411 overrides 6203, which the FRU "
                             "inventory names\n"))
        self.assertEqual(json.loads(done.stdout)["machine_type"], "4411")
        self.assertEqual(self.collect_over_lan(port, schema, "--machine-type", "6203").stderr, "")

    def test_a_machine_type_that_nobody_gives_is_a_usage_error(self):
        _, port = self.simulate(SERVER.replace('"6203"', '"X1"'))
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        done = self.collect_over_lan(port, schema)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (64, "", (
            f'velhost: lan:127.0.0.1:{port}: the FRU inventory names no machine type: no group of four digits in the '
            'product name "Simulated server" and the part number "X1"; give it with --machine-type NNNN\n')))
        self.assertEqual(self.collect_over_lan(port, schema, "--machine-type", "6203").returncode, 0)

    def test_another_client_reads_the_bytes_of_the_server_file(self):
        if not shutil.which("ipmitool"):
            self.skipTest("ipmitool is not installed")
        _, port = self.simulate(SERVER)
        done = subprocess.run(["ipmitool", "-I", "lanplus", "-C", "3", "-H", "127.0.0.1", "-p", str(port), "-U", self.user,
                               "-P", "test", "raw", "0x3a", "0x62", "0x01", "0xab", "0xcd", "0xef"],
                              capture_output=True, text=True, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stdout.split(), "00 00 00 00 00 00 01 02 03 04 05 06 07 08".split())

    def test_nothing_is_left_of_a_simulator(self):
        process, _ = self.simulate(SERVER)
        self.assertEqual(len(list(self.folder.glob("velhost-simulate-*"))), 1)
        self.stop(process)
        self.assertEqual(list(self.folder.glob("velhost-simulate-*")), [])

    def test_a_simulator_that_is_killed_is_named_with_its_signal(self):
        process, _ = self.simulate(SERVER)
        children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()
        named = {pathlib.Path(f"/proc/{child}/comm").read_text().strip(): int(child) for child in children}
        os.kill(named["ipmi_sim"], signal.SIGKILL)
        self.assertEqual(process.wait(timeout=60), 69)
        self.assertTrue(process.stderr.read().startswith("velhost: ipmi_sim ended unexpectedly (signal 9, SIGKILL)"))

    def test_a_simulator_that_does_not_start_is_named_with_its_status(self):
        (self.folder / "bin").mkdir()
        fake = pathlib.Path(self.write("bin/ipmi_sim", "#!/bin/sh\necho no luck\nexit 3\n"))
        fake.chmod(0o755)
        done = self.run_velhost("simulate", self.write("server.toml", SERVER), "--port", str(free_port()),
                                environment={"PATH": f"{self.folder}/bin:/usr/bin:/bin"})
        self.assertEqual((done.returncode, done.stderr),
                         (69, "velhost: ipmi_sim ended during startup (exit status 3): no luck\n"))

    def test_lines_that_cannot_be_printed_end_it(self):
        server = self.write("server.toml", SERVER)
        for redirection, errors in ((">/dev/full", "velhost: cannot write standard output: No space left on device\n"),
                                    (">&-", "velhost: standard output is closed\n"), ("| true", "")):
            script = f'set -o pipefail; "$0" simulate "$1" --port "$2" {redirection}'
            done = subprocess.run(["bash", "-c", script, VELHOST, server, str(free_port())], capture_output=True, text=True,
                                  timeout=120)
            self.assertEqual((done.returncode, done.stderr), (74, errors), redirection)

    def test_wrong_password_is_refused(self):
        _, port = self.simulate(SERVER)
        self.environment["VELHOST_IPMI_PASSWORD"] = "s3cret"
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        done = subprocess.run([VELHOST, *self.lan_arguments(port, schema)], capture_output=True, text=True,
                              cwd=self.folder, env=self.environment, timeout=120)
        self.assertEqual(done.returncode, 77, done.stderr)
        self.assertNotIn("s3cret", done.stderr)

    def test_password_from_a_pipe(self):
        _, port = self.simulate(SERVER)
        del self.environment["VELHOST_IPMI_PASSWORD"]
        done = subprocess.run([VELHOST, *self.lan_arguments(port, self.schema({"Listed": (0x00ABCDEF, 8)})),
                               "--password-file", "/dev/stdin"], input="test\n", capture_output=True, text=True,
                              cwd=self.folder, env=self.environment, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(json.loads(done.stdout)["instances"]), 2)

    def test_what_a_session_leaves_open_is_warned_of(self):
        _, port = self.simulate(SERVER)
        password = pathlib.Path(self.write("password", "test\n"))
        password.chmod(0o640)
        schema = self.schema({"Listed": (0x00ABCDEF, 8)})
        arguments = [word for word in self.lan_arguments(port, schema) if word not in ("--cipher-suite", "3")]
        done = subprocess.run([VELHOST, *arguments, "--password-file", str(password)], capture_output=True, text=True,
                              cwd=self.folder, env=self.environment, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stderr, (
            f"velhost: warning: permissions 0640 for '{password}' are too open: others may read the password in it "
            "(chmod 600)\n"
            f"velhost: warning: lan:127.0.0.1:{port}: no session with cipher suite 17, so the weaker 3 is used; an "
            "attacker can cause this (--cipher-suite 17 allows no other, --cipher-suite 3 silences this warning)\n"))

    def test_details_name_the_session(self):
        _, port = self.simulate(SERVER)
        done = subprocess.run([VELHOST, *self.lan_arguments(port, self.schema({"Listed": (0x00ABCDEF, 8)})), "-v"],
                              capture_output=True, text=True, cwd=self.folder, env=self.environment, timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(f"velhost: lan:127.0.0.1:{port}: session open, cipher suite 3, privilege admin\n", done.stderr)

    def test_a_nul_in_the_password_is_bad_data(self):
        password = self.folder / "password"
        password.write_bytes(b"te\0st\n")
        password.chmod(0o600)
        done = self.run_velhost("collect", "--sp", "lan:192.0.2.1", "--machine-type", "6203", "--schema", "example",
                                "--password-file", str(password))
        self.assertEqual((done.returncode, done.stderr),
                         (65, f"velhost: {password}: the password in its first line contains a NUL character\n"))

    def test_a_password_on_the_command_line_is_refused_and_not_repeated(self):
        for arguments in (["--sp", "lan:me:s3cret@192.0.2.1"], ["--sp", "sim", "--sp", "lan:me:s3cret@192.0.2.1"]):
            done = self.run_velhost("collect", "--schema", "example", *arguments)
            self.assertEqual((done.returncode, done.stderr), (64, (
                "velhost: lan:USER@HOST: USER has a ':'; do not give a password there, because others can "
                "read it in the list of processes: set VELHOST_IPMI_PASSWORD, or use --password-file\n")))

    def test_the_password_is_not_in_the_environment_of_a_run(self):
        _, port = self.simulate(SLOW)
        schema = self.schema({f"Register{i}": (0x1000 + 8 * i, 8) for i in range(1000)}, count=1)
        process = subprocess.Popen([VELHOST, *self.lan_arguments(port, schema), "--record", "run.jsonl"], text=True,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, cwd=self.folder,
                                   env=self.environment)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.wait_for_exchanges(process, "run.jsonl", 2)
        place = pathlib.Path(f"/proc/{process.pid}/environ")
        if os.geteuid() != 0:
            self.assertRaises(PermissionError, place.read_bytes)
            return
        environment = place.read_bytes()
        self.assertIn(b"TZ=UTC0", environment)
        self.assertNotIn(b"VELHOST_IPMI_PASSWORD=t", environment)

    def test_a_bmc_that_dies_in_mid_run_leaves_what_was_complete(self):
        simulator, port = self.simulate(SLOW)
        schema = self.schema({f"Register{i}": (0x1000 + 8 * i, 8) for i in range(1000)}, count=1)
        process = subprocess.Popen([VELHOST, "--log", "trace.txt", *self.lan_arguments(port, schema),
                                    "--record", "run.jsonl"], text=True, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, cwd=self.folder, env=self.environment)
        self.addCleanup(process.kill)
        self.wait_for_exchanges(process, "run.jsonl", 5)
        simulator.send_signal(signal.SIGINT)
        simulator.wait(timeout=60)
        output, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, 3, errors)
        document = json.loads(output)
        self.assertEqual(document["status"], "partial")
        self.assertIn("Register0", document["instances"][0]["properties"])
        self.assertNotIn("Register999", document["instances"][0]["properties"])
        self.assertEqual(document["reasons"][0], {"code": "session-lost", "class": BRIDGE, "count": 1,
                                                  "message": "the connection to the service processor was lost"})
        self.assertEqual(document["instances"][0]["missing"][-2:], [
            {"property": "Register999", "address": "0x002F38", "lost": True}, {"property": "StatisticTime", "lost": True}])
        self.assertIn("127.0.0.1", errors)


if __name__ == "__main__":
    unittest.main()
