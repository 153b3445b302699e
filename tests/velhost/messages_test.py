"""What velhost says on standard error if a collection is not what the user asked for."""

import json
import os
import socket
import subprocess
import unittest

from velhostcase import BRIDGE, SOURCE, VELHOST, VelhostCase


class Partial(VelhostCase):
    def test_a_failed_request_is_told_also_when_the_output_is_a_file(self):
        schema = self.write("schema.mof", "class KROSG_DCAPFile { string FileName; };\n")
        done = self.run_velhost("collect", "--schema", schema, "-o", "out.json", "KROSG_DCAPFile")
        self.assertEqual(done.returncode, 3)
        self.assertEqual(done.stderr, "velhost: partial: KROSG_DCAPFile: the collector did not find a base class or "
                         "superclass that it needs; \"velhost check\" shows what the schema lacks (assertion px != 0)\n")

    def test_a_deadline_covers_the_reading_of_the_schema(self):
        # No schema can be read in this time: the deadline has passed when the first file is opened.
        done = self.run_velhost("collect", "--timeout", "0.001", "-o", "out.json", BRIDGE, "KROSG_DCAPFile")
        self.assertEqual((done.returncode, done.stderr),
                         (3, "velhost: deadline reached while reading the schema; nothing was collected\n"))
        self.assertFalse((self.folder / "out.json").exists())


class SessionThatIsNotOpened(VelhostCase):
    """A silent BMC: a socket that never answers."""

    def setUp(self):
        super().setUp()
        self.silent = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.silent.bind(("127.0.0.1", 0))
        self.silent.setblocking(False)
        self.addCleanup(self.silent.close)
        self.arguments = [VELHOST, "collect", "--format", "json", "--schema", "example", "--machine-type", "6203",
                          "--sp", f"lan:user@127.0.0.1:{self.silent.getsockname()[1]}", BRIDGE]

    def check_empty(self, status, output, errors, reason):
        if "module" in errors:
            self.skipTest("this velhost has no LAN support")
        self.assertEqual(status, 3, errors)
        document = json.loads(output)
        self.assertEqual((document["status"], document["instances"], document["exchanges"]["total"]), ("partial", [], 0))
        before = "the run was stopped before this class"
        self.assertEqual(document["reasons"], [
            {"code": "stopped", "count": 1, "message": reason},
            {"code": "nothing-read", "count": 1, "message": "no instance was delivered"},
            {"code": "not-collected", "class": BRIDGE, "count": 1, "message": before}])
        self.assertIn(f"velhost: partial: {reason}; no instance was delivered; {BRIDGE}: {before}\n", errors)

    def was_asked(self):
        try:
            return bool(self.silent.recv(1))
        except BlockingIOError:
            return False

    def environment(self):
        return dict(os.environ, VELHOST_IPMI_PASSWORD="test")

    def test_deadline(self):
        done = subprocess.run([*self.arguments, "--timeout", "0.3"], capture_output=True, text=True, timeout=60,
                              env=self.environment())
        self.check_empty(done.returncode, done.stdout, done.stderr, "deadline reached")

    def test_deadline_before_the_machine_type_is_known(self):
        """The FRU inventory has not been read by then; that is not a usage error."""
        at = self.arguments.index("--machine-type")
        arguments = self.arguments[:at] + self.arguments[at + 2:]
        done = subprocess.run([*arguments, "--timeout", "0.3"], capture_output=True, text=True, timeout=60,
                              env=self.environment())
        self.check_empty(done.returncode, done.stdout, done.stderr, "deadline reached")
        self.assertEqual(json.loads(done.stdout)["machine_type"], "")

    def test_interruption(self):
        process = subprocess.Popen(self.arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                   env=self.environment())
        self.addCleanup(process.kill)
        # After its first request it waits for a response; without LAN support it ends at once.
        self.wait_until(lambda: self.was_asked() or process.poll() is not None, "nothing was asked")
        process.terminate()
        output, errors = process.communicate(timeout=60)
        self.check_empty(process.returncode, output, errors, "interrupted")


class ClassesThatAreNotServed(VelhostCase):
    HINT = '; "velhost classes" shows what is served\n'

    def warnings(self, *arguments):
        done = self.run_velhost("collect", "--format", "json", *arguments)
        *warnings, last = done.stderr.splitlines(keepends=True) or [""]
        self.assertEqual((done.returncode, last.startswith("velhost: partial: ")), (3, True) if last else (0, False))
        return "".join(warnings)

    def test_on_this_machine_type(self):
        self.assertEqual(self.warnings("--machine-type", "9999", BRIDGE),
                         "velhost: warning: no register class serves the machine type 9999\n"
                         f'velhost: warning: {BRIDGE} is not served: its machine types are "4523", "4524", "6203"'
                         + self.HINT)
        self.assertEqual(self.warnings("--machine-type", "6203", BRIDGE), "")

    def test_on_any(self):
        schema = self.schema({"Register": (0x1000, 8)})
        self.assertEqual(self.warnings("--schema", schema, "--machine-type", "6203", "KROSG_Top"),
                         "velhost: warning: KROSG_Top is not served: the collector does not support this class" + self.HINT)

    def test_none_at_all(self):
        schema = self.write("empty.mof", "class A {};\n")
        self.assertEqual(self.warnings("--schema", schema, "--machine-type", "6203"),
                         "velhost: warning: there are no classes to collect" + self.HINT)


class OptionsWithoutEffect(VelhostCase):
    def warned(self, *arguments):
        done = self.run_velhost(*arguments)
        self.assertEqual(done.returncode, 0, done.stderr)
        return [line.removeprefix("velhost: warning: ").split(" has no effect with ") for line in done.stderr.splitlines()
                if line.startswith("velhost: warning: ")]

    def test_for_another_service_processor(self):
        password = self.write("password", "test")
        self.assertEqual(self.warned("collect", "--replay-timing", "--cipher-suite", "3", "--password-file", password,
                                     "--privilege", "admin", "--format", "json"),
                         [[name, "--sp sim"] for name in ("--password-file", "--cipher-suite", "--privilege",
                                                          "--replay-timing")])
        self.collect("--record", "run.jsonl", BRIDGE)
        self.assertEqual(self.warned("collect", "--sp", "replay:run.jsonl", "--replay-timing", BRIDGE), [])

    def test_the_form_of_a_trace_file_that_nobody_asked_for(self):
        text = "velhost: warning: --log-format has no effect without --log\n"
        self.assertEqual(self.run_velhost("collect", "--log-format", "jsonl", BRIDGE).stderr, text)
        self.assertEqual(self.run_velhost("plugin", "--log-format", "text").stderr, text)
        self.assertEqual(self.warned("collect", "--log-format", "jsonl", "--log", "trace.jsonl", BRIDGE), [])
        self.assertEqual(self.warned("check", "--log-format", "jsonl"), [["--log-format", "check"]])

    def test_for_another_command(self):
        self.assertEqual(self.warned("check", "--log", "trace.txt", "--sp", "sim"), [["--sp", "check"], ["--log", "check"]])
        self.assertFalse((self.folder / "trace.txt").exists())
        self.assertEqual(self.warned("plugin", "--schema", "x", "--log", "trace.txt"), [["--schema", "plugin"]])
        self.assertEqual(self.warned("classes", "--machine-type", "1", "-v", "--color", "never"), [])


class OneFileForTwo(VelhostCase):
    def refuses(self, first, second, *arguments):
        before = {path: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}
        done = self.run_velhost("collect", "--format", "json", *arguments)
        self.assertEqual(done.returncode, 64, done.stderr)
        self.assertIn(f"{first} and {second} are the same file", done.stderr)
        self.assertEqual(done.stdout, "")
        self.assertEqual({path: path.read_bytes() for path in self.folder.iterdir() if path.is_file()}, before)

    def test_two_outputs(self):
        self.refuses("--output", "--log", "-o", "out", "--log", "./out")
        self.refuses("--record", "--log", "--record", "out", "--log", str(self.folder / "out"))
        self.refuses("--capture-dir", "--output", "-o", "out", "--capture-dir", "out")

    def test_an_input(self):
        self.collect("--record", "run.jsonl")
        self.refuses("--record", "--sp", "--record", "run.jsonl", "--sp", "replay:run.jsonl")
        server = self.write("server.toml", 'machine_type = "6203"\n')
        (self.folder / "other.toml").hardlink_to(server)
        self.refuses("--output", "--sp", "-o", "other.toml", "--sp", f"sim:{server}")
        (self.folder / "schema").mkdir()
        self.write("schema/a.mof", "class A {};\n")
        (self.folder / "link").symlink_to("schema/a.mof")
        self.refuses("--log", "--schema", "--log", "link", "--schema", "schema")
        self.refuses("--log", "--plugin", "--log", "plugin.so", "--plugin", self.write("plugin.so", ""))

    def test_what_an_input_reads(self):
        (self.folder / "data").mkdir()
        self.write("data/area.bin", "bytes")
        self.write("data/server.toml", 'machine_type = "6203"\n[[bmc_node]]\n[[bmc_node.storage_area]]\nname = "a"\n'
                   'data_file = "area.bin"\n')
        self.refuses("--output", "a file that --sp reads", "-o", "data/area.bin", "--sp", "sim:data/server.toml")
        self.write("included.mof", "class A {};\n")
        self.write("schema.mof", '#pragma include ("included.mof")\n')
        self.refuses("--log", "a file that --schema reads", "--log", "included.mof", "--schema", "schema.mof")
        (self.folder / "folder").mkdir()
        self.write("folder/A.MOF", "class A {};\n")
        self.refuses("--record", "--schema", "--record", "folder/A.MOF", "--schema", "folder")

    def test_a_data_file_that_a_capture_file_could_overwrite(self):
        (self.folder / "caps").mkdir()
        self.write("caps/node1-a-0.bin", "bytes")
        self.write("caps/server.toml", 'machine_type = "6203"\n[[bmc_node]]\n[[bmc_node.storage_area]]\nname = "a"\n'
                   'data_file = "node1-a-0.bin"\n')
        done = self.run_velhost("collect", "--sp", "sim:caps/server.toml", "--capture-dir", "caps")
        self.assertEqual((done.returncode, done.stderr),
                         (64, "velhost: a capture file of --capture-dir could overwrite caps/node1-a-0.bin "
                              "(a file that --sp reads)\n"))

    def test_standard_output_that_is_a_file(self):
        path = self.folder / "out"
        with path.open("w") as out:
            done = subprocess.run([VELHOST, "collect", "--log", str(path)], stdout=out, stderr=subprocess.PIPE, text=True)
        self.assertEqual(done.returncode, 64)
        self.assertIn("standard output and --log are the same file", done.stderr)

    def test_a_name_that_a_capture_file_could_have(self):
        done = self.run_velhost("collect", "--capture-dir", "caps", "--log", "caps/node1-cpu_err-0.bin")
        self.assertEqual(done.returncode, 64)
        self.assertIn("a capture file of --capture-dir could overwrite caps/node1-cpu_err-0.bin (--log)", done.stderr)
        done = self.run_velhost("collect", "--capture-dir", "caps", "--log", "caps/node1-cpu_err-0.bin.partial")
        self.assertEqual(done.returncode, 64)

    def test_devices_may_serve_twice(self):
        self.collect("--log", "/dev/null", "--record", "/dev/null", "KROSG_DCAPFile")

    def test_a_plugin_that_cannot_be_loaded_costs_no_file(self):
        for name in ("out", "log", "record"):
            self.write(name, "old")
        done = self.run_velhost("collect", "--plugin", self.write("plugin.so", "none"), "-o", "out", "--log", "log",
                                "--record", "record", "--capture-dir", "caps")
        self.assertEqual(done.returncode, 66)
        self.assertEqual([(self.folder / name).read_text() for name in ("out", "log", "record")], ["old"] * 3)
        self.assertFalse((self.folder / "caps").exists())


if __name__ == "__main__":
    unittest.main()
