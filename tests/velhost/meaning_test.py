#!/usr/bin/env python3
"""Slips in what registers mean: velhost check reports them, a collection warns of them and goes on."""

import json
import unittest

from velhostcase import BRIDGE, SCHEMA, VelhostCase

SERVER = 'machine_type = "6203"\n[[bmc_node]]\n[[bmc_node.register]]\nchip = 1\naddress = 1\nvalue = "00 00 00 00 00 00 00 01"\n'
GOOD = '[Offset(1), MaxLen(4), Role("errors"), Fields{"0 A"}] uint8 Errors[];'
BAD = '[Offset(1), MaxLen(4), Role("error"), Fields{"0 A", "32 B"}] uint8 Errors[];'
PLACES = [(15, 32, "found 'error', expected 'errors', 'mask', 'severity', 'first-error', 'counter', 'address', "
                   "'syndrome', 'log', 'state' or 'identity'"),
          (15, 56, "found bit 32, expected 0 to 31")]


def shown(places, severity, line, prefix=""):
    return "".join(f"{prefix}schema.mof:{at}:{column}: {severity}: {message}\n  {line}\n  {' ' * (column - 1)}^\n"
                   for at, column, message in places)


class Meaning(VelhostCase):
    def write_schema(self, register):
        self.write("schema.mof", SCHEMA.replace("@COUNT@", "1").replace("@REGISTERS@", register))
        self.write("server.toml", SERVER)

    def collect_with(self, *options):
        return self.run_velhost("collect", "--schema", "schema.mof", "--sp", "sim:server.toml", "--format", "json",
                                *options, BRIDGE)

    def test_a_check_reports_each_at_its_place_in_the_string(self):
        self.write_schema(BAD)
        done = self.run_velhost("check", "schema.mof")
        self.assertEqual((done.returncode, done.stdout),
                         (65, shown(PLACES, "error", "  " + BAD) + "2 errors, 0 warnings\n"))
        document = json.loads(self.run_velhost("check", "--format", "json", "schema.mof").stdout)
        self.assertEqual([(one["severity"], one["line"], one["column"]) for one in document["findings"]],
                         [("error", 15, 32), ("error", 15, 56)])

    def test_a_collection_warns_of_each_and_goes_on(self):
        self.write_schema(BAD)
        done = self.collect_with()
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(done.stderr, shown(PLACES, "warning", "  " + BAD, "velhost: "))
        self.assertEqual(len(json.loads(done.stdout)["instances"]), 1)

    def test_a_dry_run_warns_too(self):
        self.write_schema(BAD)
        self.assertEqual(self.collect_with("--dry-run").stderr, self.collect_with().stderr)

    def test_nothing_is_said_of_classes_that_are_not_collected(self):
        self.write_schema(BAD)
        done = self.run_velhost("collect", "--schema", "schema.mof", "--sp", "sim:server.toml", "KROSG_DCAPFile")
        self.assertNotIn("found", done.stderr)

    def test_neither_instances_nor_trace_depend_on_it(self):
        outputs = []
        for register in (GOOD, BAD, "[Offset(1), MaxLen(4)] uint8 Errors[];"):
            self.write_schema(register)
            done = self.collect_with("--log", "trace")
            properties = [one["properties"] for one in json.loads(done.stdout)["instances"]]
            outputs.append((properties, (self.folder / "trace").read_text()))
        self.assertEqual(outputs[0], outputs[1])
        self.assertEqual(outputs[0], outputs[2])

    def test_a_declaration_of_another_type_is_a_warning(self):
        self.write_schema(GOOD.replace('Role("errors"), ', ""))
        text = (self.folder / "schema.mof").read_text()
        self.write("schema.mof", "Qualifier Role : uint8, Scope(property);\n" + text)
        done = self.run_velhost("check", "schema.mof")
        expected = ("schema.mof:1:11: warning: the qualifier 'Role' is declared as uint8, expected string; it will not "
                    "describe registers\n  Qualifier Role : uint8, Scope(property);\n            ^\n")
        self.assertEqual((done.returncode, done.stdout), (65, expected + "0 errors, 1 warning\n"))
        self.assertEqual(self.collect_with().returncode, 0)


if __name__ == "__main__":
    unittest.main()
