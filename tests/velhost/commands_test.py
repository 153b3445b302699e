"""The command line, the commands other than collect, and the exit statuses of commands that cannot start."""

import json
import pathlib
import unittest

from velhostcase import BRIDGE, SOURCE, VelhostCase

SERVER = """
machine_type = "6203"
unlisted_registers = "pattern"
[[bmc_node]]
timestamp = "00 00 00 01"
"""


class Usage(VelhostCase):
    def fails(self, status, text, *arguments):
        done = self.run_velhost(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        self.assertIn(text, done.stderr)
        self.assertEqual(done.stdout, "")

    def test_wrong_usage(self):
        self.fails(64, "did you mean KROSG_VO_PCIIOBRIDGE_StatisticData?", "collect", "KROSG_VO_PCIIOBRIGE_StatisticData")
        self.fails(64, "cannot be used together", "collect", "--sp", "sim", "--sp", "inband")

    def refuses(self, message, *arguments, see=""):
        done = self.run_velhost(*arguments)
        self.assertEqual((done.returncode, done.stdout), (64, ""))
        self.assertEqual(done.stderr, f'velhost: {message}\nSee "velhost {see}--help".\n')

    def test_commands(self):
        self.refuses("no command given; the commands are collect, classes, describe, plugin, check, simulate, show and diff")
        self.refuses('unknown command "colect"; did you mean collect?', "colect")
        self.refuses('unknown command "a\\x1b[2J"; the commands are collect, classes, describe, plugin, check, simulate, show and diff', "a\x1b[2J")
        self.refuses('unknown command ""; the commands are collect, classes, describe, plugin, check, simulate, show and diff', "", "classes")
        self.refuses("simulate needs FILE", "simulate", see="simulate ")
        self.refuses("simulate needs FILE", "simulate", "", see="simulate ")
        self.refuses('unexpected argument "b"; plugin takes none', "plugin", "b", see="plugin ")
        self.refuses('unexpected argument "b"; simulate takes FILE', "simulate", "a", "b", see="simulate ")

    def test_words_after_two_dashes_are_no_options(self):
        self.fails(64, 'the schema has no class "--sp"', "collect", BRIDGE, "--", "--sp")
        self.refuses('unexpected argument "--help"; plugin takes none', "plugin", "--", "--help", see="plugin ")
        self.refuses("simulate needs FILE", "simulate", "--", "", see="simulate ")

    def test_options(self):
        for message, *arguments in (
                ("unknown option --fromat; did you mean --format?", "--fromat", "json"),
                ("unknown option -x", "-x"),
                ("unknown option -format; did you mean --format?", "-format", "json"),
                ("--single-request takes no value", "--single-request=3"),
                ("--port is an option of simulate", "--port", "1"),
                ("--format is given twice", "--format", "json", "--format=mof"),
                ("--output is given twice", "-oa", "--output", "b"),
                ("--timeout needs TIME", "--timeout"),
                ("--timeout needs TIME", "--timeout="),
                ("--timeout needs TIME", "--timeout", ""),
                ("--record needs FILE", "--record", ""),
                ("--output needs FILE", "--output", ""),
                ("-o needs FILE", "-o", ""),
                ("--log needs FILE", "--log", ""),
                ("--capture-dir needs DIR", "--capture-dir", ""),
                ("--plugin needs FILE", "--plugin", ""),
                ("--schema needs PATH", "--schema", ""),
                ("--sp needs SPEC", "--sp", ""),
                ("--password-file needs FILE", "--password-file", ""),
                ("--machine-type needs NNNN", "--machine-type", ""),
                ("--timeout needs TIME", "--timeout", "--format", "json"),
                ('--timeout needs TIME, not "-5"', "--timeout", "-5"),
                ("-o needs FILE", "-vo")):
            self.refuses(message, "collect", *arguments, see="collect ")
        # The first wrong value is reported.
        self.refuses('--timeout takes TIME from 0.001 to 1000000000 seconds, such as 90, 45s, 1.5m or 2h, not "x"', "collect",
                     "--timeout", "x", "--color", "y", see="collect ")
        self.refuses("--format is an option of collect, classes, describe, plugin, check, show and diff", "simulate", "a", "--format", "json",
                     see="simulate ")
        self.refuses('--timeout must come after "collect"', "--timeout", "5", "collect", see="collect ")

    def test_a_suggestion_is_an_option_of_the_command(self):
        self.refuses("unknown option --host", "collect", "--host", "bmc7", see="collect ")
        self.refuses("unknown option --host", "--host", "bmc7", "collect")
        self.refuses("unknown option --host; did you mean --port?", "simulate", "a.toml", "--host", "1", see="simulate ")
        self.refuses("unknown option --fromat; did you mean --format?", "--fromat", "json", "check")
        self.refuses("unknown option --scheme; did you mean --schema?", "--scheme", "a")

    def test_a_service_processor_without_what_it_needs(self):
        for spec, scheme in (("replay", "replay"), ("replay:", "replay"), ("image:", "image"), ("sim:", "sim")):
            self.refuses(f"--sp {scheme} needs a file: --sp {scheme}:FILE", "collect", "--sp", spec)
        self.fails(64, "no host is given; expected lan:[USER@]HOST[:PORT]", "collect", "--schema", "example", "--sp",
                   "lan:")
        self.fails(64, "no host is given; expected lan:[USER@]HOST[:PORT]", "collect", "--schema", "example", "--sp",
                   "lan:user@")

    def test_values(self):
        for time in ("abc", "nan", "inf", "0", "0h", "2e9", "5x"):
            self.refuses("--timeout takes TIME from 0.001 to 1000000000 seconds, such as 90, 45s, 1.5m or 2h, "
                         f'not "{time}"', "collect", "--timeout", time, see="collect ")
        self.assertEqual(self.run_velhost("collect", "--timeout", "5m", "KROSG_DCAPFile").returncode, 0)
        self.refuses('--port takes PORT from 1 to 65535, not "65536"', "simulate", "a", "--port", "65536", see="simulate ")
        self.refuses('--format takes table|json|jsonl|mof|cimxml, not "jsn"; did you mean json?', "collect", "--format",
                     "jsn", see="collect ")
        self.refuses('--privilege takes user|operator|admin, not "adm"; did you mean admin?', "plugin", "--privilege",
                     "adm", see="plugin ")
        self.refuses('--color takes auto|always|never, not "foo"', "plugin", "--color", "foo", see="plugin ")
        for spec in ("simm", "simm:x"):
            self.refuses('--sp takes sim[:FILE]|replay:FILE|image:FILE|inband[:DEVICE]|lan:[USER@]HOST[:PORT], '
                         f'not "{spec}"; did you mean sim?', "collect", "--sp", spec)

    def test_labels(self):
        document = self.collect("--label", "rack=7", "--label=site=a=b ", "KROSG_DCAPFile")
        self.assertEqual(document["run"]["labels"], {"rack": "7", "site": "a=b "})
        for message, *labels in (('--label takes KEY=VALUE, not "rack"', "rack"),
                                 ("--label gives the key rack twice", "rack=7", "rack=7"),
                                 ("--label cannot use the value of the key rack: it has a control character", "rack=7\t")):
            self.refuses(message, "collect", *(word for label in labels for word in ("--label", label)), see="collect ")
        self.refuses("--label needs KEY=VALUE", "collect", "--label", "", see="collect ")

    def test_help_is_also_a_command(self):
        self.assertEqual(self.run_velhost("help").stdout, self.run_velhost("--help").stdout)
        self.assertEqual(self.run_velhost("help", "collect").stdout, self.run_velhost("collect", "--help").stdout)
        self.assertEqual(self.run_velhost("collect", "--timeout", "--help").returncode, 0)
        self.assertEqual(self.run_velhost("", "--fromat", "-h").stdout, self.run_velhost("--help").stdout)
        self.refuses('unknown command "foo"; the commands are collect, classes, describe, plugin, check, simulate, show and diff', "help", "foo")

    def test_inputs_that_cannot_be_used(self):
        self.fails(66, "missing.mof", "collect", "--schema", "missing.mof")
        self.fails(66, "missing.toml", "collect", "--sp", "sim:missing.toml")
        self.fails(66, "missing.so", "plugin", "--plugin", "missing.so")
        bad = self.write("bad.toml", "machine_type = 5\n")
        self.fails(65, "bad.toml:1:", "collect", "--sp", f"sim:{bad}")
        bad = self.write("bad.mof", "class {\n")
        self.fails(65, "bad.mof:1:7: error:", "collect", "--schema", bad)
        bad = self.write("bad.jsonl", "{}\n")
        self.fails(65, "bad.jsonl", "collect", "--sp", f"replay:{bad}")
        text = self.write("text.so", "no library\n")
        self.fails(66, "text.so", "plugin", "--plugin", text)

    def test_shipped_servers_are_found_by_name(self):
        self.assertEqual(self.collect("--sp", "sim:failing.toml", status=3)["instances"],
                         self.collect("--sp", f"sim:{SOURCE}/servers/failing.toml", status=3)["instances"])
        done = self.run_velhost("collect", "--sp", "sim:absent.toml")
        self.assertEqual(done.returncode, 66)
        self.assertRegex(done.stderr, r"^velhost: cannot open absent\.toml: no such file here or among "
                         r"the shipped servers in /\S+/share/velhost/servers\n$")
        self.fails(66, "cannot open ./failing.toml: No such file or directory", "collect", "--sp", "sim:./failing.toml")
        self.fails(66, "cannot open absent.toml: no such file here", "simulate", "absent.toml")
        # An existing file takes precedence over a shipped one, whatever it contains.
        self.write("failing.toml", 'machine_type = "here"\n')
        self.assertEqual(self.collect("--sp", "sim:failing.toml", status=3)["machine_type"], "here")

    def test_wrong_kinds_of_file_are_named(self):
        result = self.write("result.json", self.run_velhost("collect", "--record", "run.jsonl", "--format", "json").stdout)
        self.write("lines.jsonl", self.run_velhost("collect", "--format", "jsonl").stdout)
        server = self.write("server.toml", SERVER)
        schema = self.schema({"Register": (0x1000, 8)})
        (self.folder / "bundle").write_bytes(b"\x1f\x8b\x08\x00")
        recorded = '; "velhost collect --record FILE" makes a recording'
        for message, *arguments in (
                (f"{result} is a result, not a recording{recorded}", "collect", "--sp", f"replay:{result}"),
                (f"lines.jsonl is a result, not a recording{recorded}", "collect", "--sp", "replay:lines.jsonl"),
                ("run.jsonl is a recording, not a server file; give it as --sp replay:run.jsonl", "collect", "--sp",
                 "sim:run.jsonl"),
                (f"lines.jsonl is a result, not a recording{recorded}", "simulate", "lines.jsonl"),
                (f"{schema} is a schema, not a server file; give it as --schema {schema}", "collect", "--sp", f"sim:{schema}"),
                (f"{server} is a server file, not a recording; give it as --sp sim:{server}", "collect", "--sp",
                 f"replay:{server}"),
                (f"{server} is a server file, not a schema; give it as --sp sim:{server}", "collect", "--schema", server),
                ("run.jsonl is a recording, not a schema; give it as --sp replay:run.jsonl", "collect", "--schema", "run.jsonl"),
                ("bundle is a compressed file, not a recording", "collect", "--sp", "replay:bundle")):
            done = self.run_velhost(*arguments)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (65, "", f"velhost: {message}\n"))

    def test_an_include_that_cannot_be_read_includes_nothing(self):
        schema = self.write("schema.mof", '#pragma include ("missing.mof")\n' * 2)
        done = self.run_velhost("check", schema)
        self.assertEqual(done.stdout, f"{schema}:1:18: error: cannot open {self.folder}/missing.mof: No such file or directory\n"
                         '  #pragma include ("missing.mof")\n                   ^\n1 error, 0 warnings\n')

    def test_names_with_newlines_stay_on_their_line(self):
        name = "a\nvelhost: b\u202e"
        shown = "a\\nvelhost: b\\u202e"
        for status, message, *arguments in (
                (66, f"cannot open {shown}.mof: No such file or directory", "check", f"{name}.mof"),
                (66, f"cannot open ./{shown}: No such file or directory", "collect", "--sp", f"sim:./{name}"),
                (66, f"cannot open {shown}: No such file or directory", "collect", "--sp", f"replay:{name}"),
                (66, f"cannot open plugin {shown}: No such file or directory", "plugin", "--plugin", name),
                (73, f"cannot create {shown}/out: No such file or directory", "collect", "-o", f"{name}/out"),
                (73, f"cannot create {shown}/out: No such file or directory", "collect", "--record", f"{name}/out"),
                (73, f"cannot create trace file {shown}/out: No such file or directory", "collect", "--log", f"{name}/out"),
                (73, f"cannot create the folder {shown}/out: No such file or directory", "collect", "--capture-dir",
                 f"{name}/out")):
            done = self.run_velhost(*arguments)
            self.assertEqual((done.returncode, done.stderr), (status, f"velhost: {message}\n"))
        self.write(f"{name}.mof", "class A : B {};\n")
        self.assertIn(f"{shown}.mof:1:11: error: ", self.run_velhost("check", f"{name}.mof").stdout)
        self.assertEqual(self.run_velhost("collect", name).stderr.splitlines()[0],
                         f'velhost: the schema has no class "{shown}"; "velhost classes" lists those that can be collected')

    def test_a_capture_folder_that_is_a_circle_of_links(self):
        (self.folder / "a").symlink_to("a")
        self.fails(73, "cannot create the folder a: Too many levels of symbolic links", "collect", "--capture-dir", "a")

    def test_a_class_that_would_take_too_much_memory(self):
        """Nothing is sent for such a class, and no recording is created."""
        server = self.write("server.toml", SERVER)
        too_many = self.schema({f"R{i}": (i, 8) for i in range(256)}, count=513)
        for arguments in ((), (BRIDGE,), ("--single-request",)):
            self.fails(65, f"velhost: the class {BRIDGE} with a MaxInstanceCount of 513 takes 131328 register reads, "
                       "expected at most 131072\n", "collect", "--schema", too_many, "--sp", f"sim:{server}",
                       "--record", "run.jsonl", *arguments)
        self.assertFalse((self.folder / "run.jsonl").exists())
        half = self.schema({f"R{i}": (i, 8) for i in range(256)}, count=300)
        self.fails(65, "velhost: the single request for all classes takes 153600 register reads, expected at most 131072\n",
                   "collect", "--schema", half, "--sp", f"sim:{server}", "--single-request", BRIDGE, BRIDGE)

    def test_the_service_processors_of_a_block_class_count(self):
        (self.folder / "block.bin").write_bytes(bytes(4096))
        server = self.write("server.toml", 'machine_type = "6203"\n[dot]\n' +
                            '[[dot.service_processor]]\nblock_file = "block.bin"\n' * 2)
        schema = self.write("jfr.mof", pathlib.Path(self.schema({})).read_text() + """
            [SupportedMachineTypes{"6203"}, MaxInstanceCount(32768)]
            class Wide : KROSG_MEMCTL_StatisticData { [Index(1), MaxLen(8)] uint8 R[]; };""")
        self.fails(65, "velhost: the class Wide with a MaxInstanceCount of 32768 takes 65536 instances, expected at most "
                   "65535\n", "collect", "--schema", schema, "--sp", f"sim:{server}", "Wide")

    def test_inputs_may_be_pipes(self):
        server = self.write("server.toml", SERVER)
        schema = self.schema({"Register": (0x1000, 8)})
        document = self.collect("--schema", schema, "--sp", f"sim:{server}", "--record", "run.jsonl", BRIDGE)
        expected = document["instances"]
        self.assertEqual(len(expected), 1)
        for path, *arguments in ((server, "--schema", schema, "--sp", "sim:/dev/stdin"),
                                 (schema, "--schema", "/dev/stdin", "--sp", f"sim:{server}"),
                                 (self.folder / "run.jsonl", "--schema", schema, "--sp", "replay:/dev/stdin")):
            text = pathlib.Path(path).read_text()
            done = self.run_velhost("collect", "--format", "json", *arguments, BRIDGE, input=text)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(json.loads(done.stdout)["instances"], expected, arguments)
        self.assertEqual(self.run_velhost("check", "/dev/stdin", input="class A {").returncode, 65)
        refused = self.run_velhost("simulate", "/dev/stdin", input=SERVER)  # ipmi_sim must read it again
        self.assertEqual((refused.returncode, refused.stderr), (66, "velhost: cannot read /dev/stdin: not a regular file\n"))
        included = self.write("schema.mof", '#pragma include ("/dev/stdin")\n')
        refused = self.run_velhost("check", included, input="class A {};")  # an included file must not make it wait
        self.assertEqual(refused.returncode, 65)
        self.assertIn("cannot read /dev/stdin: not a regular file", refused.stdout)

    def test_an_include_that_is_missing(self):
        schema = self.write("schema.mof", '#pragma include ("missing.mof")\nclass A {};\n')
        self.fails(66, "velhost: the schema cannot be used\n", "collect", "--schema", schema)
        self.assertEqual(self.run_velhost("check", schema).returncode, 65)
        schema = self.write("schema.mof", '#pragma include ("missing.mof")\nclass A : B {};\n')
        self.fails(65, "velhost: the schema cannot be used\n", "collect", "--schema", schema)

    def test_each_diagnostic_begins_with_the_program_and_fits_the_screen(self):
        schema = self.write("schema.mof", "\t\t\tclass A : B {}; " + "// " + "x" * 200 + "\nclass C : D {};\n")
        lines = self.run_velhost("collect", "--schema", "schema.mof").stderr.splitlines()
        self.assertEqual([line.split(" ")[:2] for line in lines if line.startswith("velhost")],
                         [["velhost:", "schema.mof:1:14:"], ["velhost:", "schema.mof:2:11:"], ["velhost:", "the"]])
        self.assertEqual([line[:2] for line in lines if not line.startswith("velhost")], ["  "] * 4)
        self.assertLessEqual(max(len(line) for line in lines[1:3]), 80)
        self.assertEqual(lines[1].index("B"), lines[2].index("^"))
        self.assertEqual(self.run_velhost("check", schema).returncode, 65)

    def test_nothing_from_outside_steers_the_terminal(self):
        schema = self.schema({"Register": (0x1000, 8)})
        text = (self.folder / "schema.mof").read_text().replace('"4411"', '"44\x1b[31m11\x7f\u009b"')
        (self.folder / "schema.mof").write_text(text)
        shown = self.run_velhost("classes", "--schema", schema, "--machine-type", "44\x1b[31m11").stdout
        self.assertIn("Machine type: 44\\x1b[31m11\n", shown)
        self.assertIn("Machine type: 1\\n2\n", self.run_velhost("classes", "--machine-type", "1\n2").stdout)
        self.assertIn(" the machine type 1\\n2\n", self.run_velhost("collect", "--machine-type", "1\n2", BRIDGE).stderr)
        self.assertIn('yes, on "44\\x1b[31m11\\x7f\\x9b"', shown)
        name = "bad\x1b[31m.mof"
        self.write(name, "class A : B\x1b {};\n")
        for done in (self.run_velhost("check", name), self.run_velhost("collect", "--schema", name),
                     self.run_velhost("collect", "--sp", "sim:\x1b[31m")):
            self.assertNotIn("\x1b", done.stdout + done.stderr)
            self.assertIn("\\x1b[31m", done.stdout + done.stderr)

    def test_a_named_device_that_is_not_there(self):
        self.fails(69, "/dev/ipmi777", "collect", "--schema", "example", "--machine-type", "6203", "--sp",
                   "inband:/dev/ipmi777")


class Commands(VelhostCase):
    def output(self, *arguments, status=0):
        done = self.run_velhost(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout

    def test_help_fits_a_screen_and_has_an_example(self):
        for arguments in (["--help"], *([verb, "--help"] for verb in ("collect", "classes", "describe", "plugin", "check", "simulate"))):
            text = self.output(*arguments)
            self.assertIn("Example", text)
            self.assertLessEqual(text.count("\n"), 45)
            self.assertLessEqual(max(map(len, text.splitlines())), 80)
        self.assertIn("\nUsage: velhost [OPTIONS] COMMAND\n", self.output("--help"))
        self.assertRegex(self.output("--version"), r"^velhost \d+\.\d+\.\d+\n$")

    def test_plugin_identity(self):
        text = self.output("plugin")
        for line in ("Name:              Engineering Information Collector", "Version:           1.0",
                     "Interface version: 1.0", "Type:              0"):
            self.assertIn(line + "\n", text)

    def test_classes(self):
        lines = self.output("classes", "--machine-type", "4411").splitlines()
        served = {line.split()[0]: line.split(None, 4)[1:] for line in lines if line.startswith("KROSG_")}
        self.assertEqual(served["KROSG_T4_MEMCTL_StatisticData"], ["R8", "1", "11", 'yes, on "4411"'])
        self.assertEqual(served["KROSG_J2_L3Cache_StatisticData"], ["JFR", "2", "10", 'no: its machine types are "6203", "6204", "6205"'])
        self.assertEqual(served["KROSG_DCAPFile"][0], "FFDC")
        self.assertIn("  KROSG_MEMCTL_StatisticData: no subclass serves this machine type", lines)

        self.assertEqual(served["KROSG_VO_MEMCTL_StatisticData"][3], 'no: its machine types are "4523", "4524", "6203"')

    def test_classes_say_why_not(self):
        server = self.write("server.toml", 'machine_type = "6203"\n')
        lines = self.output("classes", "--sp", f"sim:{server}", "KROSG_J?_MEMCTL*", "krosg_dcapfile", "KROSG_T4_PCIIOBRIDGE*",
                            "KROSG_MEMCTL_StatisticData", "CIM_StatisticalData").splitlines()
        self.assertEqual([line.split(None, 4) for line in lines[3:lines.index("", 3)]], [
            ["KROSG_J1_MEMCTL_StatisticData", "JFR", "2", "9", 'no: its machine types are "6101", "6102"'],
            ["KROSG_J2_MEMCTL_StatisticData", "JFR", "2", "10", "no: no service processor accepts dot commands"],
            ["KROSG_DCAPFile", "FFDC", "-", "-", "no: there is no BMC node"],
            ["KROSG_T4_PCIIOBRIDGE_StatisticData", "R8", "2", "10", "no: there is no BMC node"],
            ["KROSG_MEMCTL_StatisticData", "none", "-", "-", "no: KROSG_J2_MEMCTL_StatisticData serves this machine"],
            ["CIM_StatisticalData", "none", "-", "-", "no: the collector does not support this class"]])

    def test_classes_as_json(self):
        document = json.loads(self.output("classes", "--format", "json", "--machine-type", "4411", "KROSG_T4_MEMCTL*",
                                          "KROSG_J2_L3*", "KROSG_DCAPFile", "KROSG_L3Cache_StatisticData"))
        self.assertEqual(document, {
            "kind": "classlist", "format_version": 1, "machine_type": "4411", "classes": [
                {"class": "KROSG_T4_MEMCTL_StatisticData", "path": "r8", "served": True, "served_by": "4411", "instances": 1,
                 "registers": 11, "machine_types": ["4411", "4414", "6203"]},
                {"class": "KROSG_J2_L3Cache_StatisticData", "path": "jfr", "served": False,
                 "why_not": 'its machine types are "6203", "6204", "6205"', "instances": 2, "registers": 10,
                 "machine_types": ["6203", "6204", "6205"]},
                {"class": "KROSG_DCAPFile", "path": "ffdc", "served": True},
                {"class": "KROSG_L3Cache_StatisticData", "served": False,
                 "why_not": "none of its subclasses serves this machine"}],
            "base_classes": [{"class": "KROSG_PCIIOBRIDGE_StatisticData", "subclass": None},
                             {"class": "KROSG_MEMCTL_StatisticData", "subclass": None},
                             {"class": "KROSG_L3Cache_StatisticData", "subclass": None}]})
        document = json.loads(self.output("classes", "--format", "json", "--machine-type", "6106"))
        self.assertEqual(len(document["classes"]), 12)
        self.assertEqual(document["base_classes"][1]["subclass"], "KROSG_J1S_MEMCTL_StatisticData")

    def test_classes_that_are_not_there(self):
        for word, message in (("KROSG_DCAPFil", 'the schema has no class "KROSG_DCAPFil"; did you mean KROSG_DCAPFile?'),
                              ("X*", '"X*" matches no class that can be collected; "velhost classes" lists them')):
            done = self.run_velhost("classes", "--machine-type", "6203", word)
            self.assertEqual((done.returncode, done.stdout, done.stderr), (64, "", f"velhost: {message}\n"))

    def test_classes_warn_of_a_machine_type_that_nothing_serves(self):
        done = self.run_velhost("classes", "--machine-type", "6230")
        self.assertEqual((done.returncode, done.stderr),
                         (0, "velhost: warning: no register class serves the machine type 6230; did you mean 6203?\n"))

    def test_plugin_identity_as_json(self):
        document = json.loads(self.output("plugin", "--format", "json"))
        self.assertRegex(document.pop("library"), r"/libtorgareg\.pi\.so$")
        self.assertEqual(document, {"kind": "plugin", "format_version": 1, "name": "Engineering Information Collector",
                                    "version": "1.0", "interface_version": "1.0", "type": 0, "answers_requests": True})

    def test_check(self):
        self.assertEqual(self.output("check", f"{SOURCE}/schema"), "no findings\n")
        bad = self.write("bad.mof", "class A : B {};\n")
        self.assertIn("bad.mof:1:11: error:", self.output("check", bad, status=65))
        document = json.loads(self.output("check", "--format", "json", bad, status=65))
        self.assertEqual((document["errors"], document["findings"][0]["line"]), (1, 1))

    def test_options_stand_before_or_after_the_command(self):
        self.assertEqual(self.output("--machine-type", "4411", "classes"), self.output("classes", "--machine-type", "4411"))


if __name__ == "__main__":
    unittest.main()
