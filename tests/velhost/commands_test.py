"""The command line, the other commands, and the exit statuses of what cannot start."""

import json
import unittest

from velhostcase import SOURCE, VelhostCase


class Usage(VelhostCase):
    def fails(self, status, text, *arguments):
        done = self.run_velhost(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        self.assertIn(text, done.stderr)
        self.assertEqual(done.stdout, "")

    def test_wrong_usage(self):
        self.fails(64, "no command is given")
        self.fails(64, 'unknown command "colect"; did you mean collect?', "colect")
        self.fails(64, "unknown option --fromat; did you mean --format?", "collect", "--fromat", "json")
        self.fails(64, "auto|always|never", "collect", "--color", "sometimes")
        self.fails(64, "did you mean KROSG_VO_PCIIOBRIDGE_StatisticData?", "collect", "KROSG_VO_PCIIOBRIGE_StatisticData")
        self.fails(64, "unknown service processor", "collect", "--sp", "simm:x")
        self.fails(64, "cannot be used together", "collect", "--sp", "sim", "--sp", "inband")
        self.fails(64, "--machine-type", "collect", "--sp", "lan:192.0.2.1")

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

    def test_a_named_device_that_is_not_there(self):
        self.fails(69, "/dev/ipmi777", "collect", "--machine-type", "6203", "--sp", "inband:/dev/ipmi777")


class Commands(VelhostCase):
    def output(self, *arguments, status=0):
        done = self.run_velhost(*arguments)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout

    def test_help_fits_a_screen_and_has_an_example(self):
        for arguments in (["--help"], ["collect", "--help"], ["classes", "--help"], ["check", "--help"]):
            text = self.output(*arguments)
            self.assertIn("Example", text)
            self.assertLessEqual(text.count("\n"), 45)
            self.assertLessEqual(max(map(len, text.splitlines())), 120)
        self.assertRegex(self.output("--version"), r"^velhost \d+\.\d+\.\d+\n$")

    def test_plugin_identity(self):
        text = self.output("plugin")
        for line in ("Name:              Engineering Information Collector", "Version:           1.0",
                     "Interface version: 1.0", "Type:              0"):
            self.assertIn(line + "\n", text)

    def test_classes(self):
        lines = self.output("classes", "--machine-type", "4411").splitlines()
        served = {line.split()[0]: line.split(None, 4)[1:] for line in lines if line.startswith("KROSG_")}
        self.assertEqual(served["KROSG_T4_MEMCTL_StatisticData"], ["R8", "1", "10", 'yes, by "4411"'])
        self.assertEqual(served["KROSG_J2_L3Cache_StatisticData"], ["JFR", "2", "8", "no"])
        self.assertEqual(served["KROSG_DCAPFile"][0], "FFDC")
        self.assertIn("  KROSG_MEMCTL_StatisticData: no subclass serves this machine type", lines)

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
