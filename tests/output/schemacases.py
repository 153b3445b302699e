"""Tests the JSON Schema of results: each of its members accepts a right value and refuses a wrong one.

schemacases.py SCHEMA

Exit status 77: the package python3-jsonschema is missing.
"""

import copy
import json
import sys
import unittest

try:
    import jsonschema
except ImportError:
    sys.exit(77)

with open(sys.argv.pop(1), encoding="utf-8") as file:
    SCHEMA = json.load(file)
VALIDATOR = jsonschema.Draft202012Validator(SCHEMA)

UUID = "0f8fad5b-d9cb-4d9f-a165-70867728950e"
ABSENT = object()  # as a value: the member is removed

BRIDGE = "KROSG_VO_PCIIOBRIDGE_StatisticData"
MEMORY = "KROSG_X_MEMCTL_StatisticData"
R8 = {"path": "r8", "node": 0, "chip": 1, "instance": 0, "time_raw": "12 34 56 78"}
JFR = {"path": "jfr", "service_processor": 1, "instance": 0}
FFDC = {"path": "ffdc", "node": 0}

R8_INSTANCE = {
    "kind": "instance", "class": BRIDGE, "key": BRIDGE + "/node0/instance0", "origin": R8, "incomplete": True,
    "missing": [{"property": "Log", "address": "0xABCDF0", "completion_code": 203},
                {"property": "Two", "addresses": ["0xABCDF0", "0xABCDF8"], "answered": 2},
                {"property": "Three", "address": "0xABCDF0", "lost": True},
                {"property": "Four", "address": "0xABCDF0", "not_sent": True},
                {"property": "StatisticTime", "not_recorded": True}],
    "properties": {"Count": [171, None], "InstanceID": "x", "Real": 1.5, "Yes": True, "Nothing": None},
    "registers": {"Count": {"address": "0xABCDEF", "width": 32, "value": "0x00000100", "role": "errors",
                            "unit": "events", "numbering": "msb0", "upper": "0x00000001", "folded": "0x00000101",
                            "fields": [{"bits": "5:4", "name": "Link speed", "value": 1, "text": "2.5 GT/s"},
                                       {"bits": "16", "name": None, "value": "0x0000000100000000"}]}}}
JFR_INSTANCE = {
    "kind": "instance", "class": MEMORY, "key": MEMORY + "/sp1/instance0", "origin": JFR, "incomplete": True,
    "missing": [{"property": "First", "index": 0, "short": 0}], "properties": {},
    "registers": {"Last": {"index": 84, "width": 64, "value": "0x0000001A3F4C2E40", "identification": "0B 00 54",
                           "fields": []}}}
FILE_INSTANCE = {
    "kind": "instance", "class": "KROSG_DCAPFile", "key": "KROSG_DCAPFile/node0/cpu_err#2", "origin": FFDC,
    "file": {"area": "cpu_err", "reported_size": -1, "received": 3}, "incomplete": True,
    "missing": [{"property": "ErrRawData", "offset": 3, "short": 3}], "properties": {}}
UNPLACED = {"kind": "instance", "class": MEMORY, "key": MEMORY + "/?1", "properties": {}}

RESULT = {
    "format_version": 2,
    "run": {"id": UUID, "started": "2026-01-31T12:34:56.789+01:00", "elapsed_ms": 4, "host": "h", "velhost": "2.0",
            "labels": {"rack": "7"}},
    "source": {"sp": ["sim"], "target": "sim", "simulated": True, "recorded": "2026-01-31T12:34:56+01:00",
               "server": {"serial": "K12", "uuid": "00112233-4455-6677-8899-aabbccddeeff"}},
    "machine_type": "6203",
    "plugin": {"name": "n", "version": "1.0", "interface_version": "1.0"},
    "schema": {"paths": ["schema"], "sha256": "a" * 64, "example": False},
    "status": "partial", "exit_status": 3, "message": "m",
    "reasons": [{"code": "block-short", "class": MEMORY, "count": 1, "message": "m"}],
    "exchanges": {"total": 15, "failed": [
        {"class": BRIDGE, "key": BRIDGE + "/node0/instance0", "property": "Log", "address": "0xABCDF0", "node": 0,
         "kind": "register", "completion_code": 203},
        {"class": MEMORY, "service_processor": 1, "kind": "dot", "short": 1},
        {"class": BRIDGE, "node": 0, "kind": "timestamp", "lost": True},
        {"class": BRIDGE, "node": 0, "kind": "other", "index": 3, "not_recorded": True}]},
    "findings": [{"key": BRIDGE + "/node0/instance0", "class": BRIDGE, "origin": R8, "register": "Count",
                  "bits": "5:4", "name": "Link", "value": 1, "text": "t", "register_value": "0x00000010",
                  "severity": "fatal", "masked": False, "first": True, "known": False,
                  "evidence": {"Log": "0x0000000000000001", "Other": None}, "unknown": ["Mask"]}],
    "filtered": True,
    "unread": [{"class": BRIDGE, "key": BRIDGE + "/node0/instance1", "origin": {**R8, "instance": 1},
                "code": "absent"}]}
DOCUMENTS = {
    "collection": {"kind": "instancecollection", **RESULT,
                   "instances": [R8_INSTANCE, JFR_INSTANCE, FILE_INSTANCE, UNPLACED]},
    "summary": {"kind": "summary", "run_id": UUID, "labels": {}, **RESULT},
    "line": {"run_id": UUID, "labels": {"rack": "7"}, **R8_INSTANCE},
    "plan": {"kind": "plan", "format_version": 2, "machine_type": "6203",
             "classes": [{"class": BRIDGE, "path": "r8", "instances": [
                 {"key": BRIDGE + "/node0/instance0", "origin": {"path": "r8", "node": 0, "chip": 1, "instance": 0},
                  "reads": [{"property": "Count", "address": "0xABCDEF"}, {"property": "First", "index": 84}]}]}],
             "dot_commands": [{"class": MEMORY, "service_processor": 0}],
             "areas": [{"class": "KROSG_DCAPFile", "key": "KROSG_DCAPFile/node0/cpu_err", "node": 0,
                        "area": "cpu_err"}],
             "total": 3}}

HOW = [0, "missing", 0]
FAILED = ["exchanges", "failed"]
REGISTER = ["instances", 0, "registers", "Count"]
RECORD = ["instances", 1, "registers", "Last"]
FIELD = REGISTER + ["fields", 0]
FINDING = ["findings", 0]
PLANNED = ["classes", 0, "instances", 0]

# document, path of the member, another right value, wrong values
MEMBERS = [
    ("collection", ["kind"], "instancecollection", ["other", ABSENT]),
    ("collection", ["instances"], [], [{}, [1], [{**UNPLACED, "run_id": UUID, "labels": {}}], ABSENT]),
    ("summary", ["kind"], "summary", ["instance", ABSENT]),
    ("summary", ["run_id"], UUID, ["x", ABSENT]),
    ("summary", ["labels"], {"a": ""}, [{"a": 1}, ABSENT]),
    ("line", ["run_id"], UUID, [UUID.upper(), ABSENT]),
    ("line", ["labels"], {"_a1": "\u00e9 b"}, [{"1a": "b"}, {"__a": "b"}, {"a" * 65: "b"}, {"a": "b\n"}, ABSENT]),
    ("collection", ["format_version"], 2, [1, 3, "2", ABSENT]),
    ("collection", ["run"], RESULT["run"], [{}, {**RESULT["run"], "more": 1}, ABSENT]),
    ("collection", ["run", "id"], UUID, ["", UUID[:-1], "0f8fad5b-d9cb-1d9f-a165-70867728950e", ABSENT]),
    ("collection", ["run", "started"], "2026-01-31T12:34:56.789Z", ["2026-01-31T12:34:56+01:00", 1, ABSENT]),
    ("collection", ["run", "elapsed_ms"], 0, [-1, 0.5, "4", ABSENT]),
    ("collection", ["run", "host"], "", [None, ABSENT]),
    ("collection", ["run", "velhost"], "2.0.1", ["", 2, ABSENT]),
    ("collection", ["run", "labels"], {}, [[], {"a b": "c"}, ABSENT]),
    ("collection", ["source"], {"sp": ["sim"], "target": "sim", "simulated": True}, ["sim", ABSENT]),
    ("collection", ["source", "sp"], ["lan:a", "lan:b"], [[], "sim", [1], ABSENT]),
    ("collection", ["source", "target"], "lan:a,lan:b", [["sim"], ABSENT]),
    ("collection", ["source", "simulated"], False, ["no", 0, ABSENT]),
    ("collection", ["source", "recorded"], ABSENT, ["", 0]),
    ("collection", ["source", "server"], ABSENT, [{}, {"name": "x"}]),
    ("collection", ["source", "server", "serial"], ABSENT, [""]),
    ("collection", ["source", "server", "uuid"], ABSENT, ["00112233445566778899aabbccddeeff"]),
    ("collection", ["machine_type"], "", [6203, ABSENT]),
    ("collection", ["plugin"], RESULT["plugin"], [{}, ABSENT]),
    ("collection", ["plugin", "name"], "", [None, ABSENT]),
    ("collection", ["plugin", "version"], "2", [2, ABSENT]),
    ("collection", ["plugin", "interface_version"], "2", [2, ABSENT]),
    ("collection", ["schema"], RESULT["schema"], [{}, ABSENT]),
    ("collection", ["schema", "paths"], ["a", "b"], ["a", [1], ABSENT]),
    ("collection", ["schema", "sha256"], "0" * 64, ["A" * 64, "0" * 63, ABSENT]),
    ("collection", ["schema", "example"], True, [1, ABSENT]),
    ("collection", ["status"], "partial", ["Complete", None, ABSENT]),
    ("collection", ["exit_status"], 74, [2, "3", ABSENT]),
    ("collection", ["message"], "", [1, ABSENT]),
    ("collection", ["reasons"], RESULT["reasons"] * 2, [{}, [1], ABSENT]),
    ("collection", ["reasons", 0, "code"], "not-served", ["BLOCK-SHORT", "absent", ABSENT]),
    ("collection", ["reasons", 0, "class"], "A", ["", ABSENT]),
    ("collection", ["reasons", 0, "count"], 131072, [0, 1.5, ABSENT]),
    ("collection", ["reasons", 0, "message"], "x", ["", ABSENT]),
    ("collection", ["exchanges"], {"total": 0, "failed": []}, [{}, ABSENT]),
    ("collection", ["exchanges", "total"], 0, [-1, ABSENT]),
    ("collection", ["exchanges", "failed"], [], [{}, ABSENT]),
    ("collection", FAILED + [0, "class"], "A", ["", ABSENT]),
    ("collection", FAILED + [0, "key"], "A/node1/instance0#2", ["A/?1", "A", ABSENT]),
    ("collection", FAILED + [0, "property"], ABSENT, [""]),
    ("collection", FAILED + [0, "address"], "0x000000", ["0xabcdef", "0xABCDEF0", ABSENT]),
    ("collection", FAILED + [3, "index"], 65535, [65536, -1]),
    ("collection", FAILED + [0, "node"], 255, [-1, ABSENT]),
    ("collection", FAILED + [1, "service_processor"], 255, [-1, ABSENT]),
    ("collection", FAILED + [2, "kind"], "close", ["dot", "Close", ABSENT]),
    ("collection", FAILED + [0, "completion_code"], 255, [0, 256, ABSENT]),
    ("collection", FAILED + [2, "lost"], True, [False, ABSENT]),
    ("collection", FAILED + [1, "short"], 0, [-1, ABSENT]),
    ("collection", FAILED + [3, "not_recorded"], True, [False, ABSENT]),
    ("collection", ["findings"], [], [{}, ABSENT]),
    ("collection", ["filtered"], ABSENT, [False, "yes"]),
    ("collection", ["unread"], [], [{}, ABSENT]),
    ("collection", ["unread", 0, "class"], "A", ["", ABSENT]),
    ("collection", ["unread", 0, "key"], "A/sp0/instance0", ["A/?1", ABSENT]),
    ("collection", ["unread", 0, "origin"], JFR, [{"path": "r8"}, ABSENT]),
    ("collection", ["unread", 0, "code"], "discarded", ["lost", ABSENT]),
    ("collection", ["instances", 0, "kind"], "instance", ["summary", ABSENT]),
    ("collection", ["instances", 0, "class"], "A", ["", ABSENT]),
    ("collection", ["instances", 0, "key"], "A/node0/instance0#2", ["A", "A/?1", "A/?", ABSENT]),
    ("collection", ["instances", 0, "origin"], {**R8, "node": 1}, [FFDC, {}, ABSENT]),
    ("collection", ["instances", 2, "file"], FILE_INSTANCE["file"], [{}, ABSENT]),
    ("collection", ["instances", 0, "incomplete"], True, [False, ABSENT]),
    ("collection", ["instances", 0, "missing"], [{"property": "P", "lost": True}], [[], ABSENT]),
    ("collection", ["instances", 0, "properties"], {}, [[], {"P": [[1]]}, {"P": {}}, ABSENT]),
    ("collection", ["instances", 0, "registers"], {}, [[], ABSENT]),
    ("collection", ["instances", 0, "origin", "path"], "r8", ["R8", "jfr", ABSENT]),
    ("collection", ["instances", 0, "origin", "node"], 1, [-1, ABSENT]),
    ("collection", ["instances", 0, "origin", "chip"], 0, [256, ABSENT]),
    ("collection", ["instances", 0, "origin", "instance"], 65534, [-1, ABSENT]),
    ("collection", ["instances", 0, "origin", "time_raw"], ABSENT, ["12 34 56", "12 34 56 7G", "12345678"]),
    ("collection", ["instances", 1, "origin", "path"], "jfr", ["r8", ABSENT]),
    ("collection", ["instances", 1, "origin", "service_processor"], 254, [-1, ABSENT]),
    ("collection", ["instances", 1, "origin", "instance"], 1, ["1", ABSENT]),
    ("collection", ["instances", 2, "origin", "path"], "ffdc", ["FFDC", ABSENT]),
    ("collection", ["instances", 2, "origin", "node"], 1, ["1", ABSENT]),
    ("collection", ["instances", 2, "file", "area"], "zyn_err", ["other", ABSENT]),
    ("collection", ["instances", 2, "file", "reported_size"], 2147483647, [2147483648, ABSENT]),
    ("collection", ["instances", 2, "file", "received"], 0, [-1, ABSENT]),
    ("collection", ["instances", 0, "missing", 0, "property"], "P", ["", ABSENT]),
    ("collection", ["instances", 0, "missing", 0, "address"], ABSENT, ["ABCDEF", 1]),
    ("collection", ["instances", 0, "missing", 1, "addresses"], [], [["x"], ABSENT]),
    ("collection", ["instances", 1, "missing", 0, "index"], ABSENT, [65536, "0"]),
    ("collection", ["instances", 2, "missing", 0, "offset"], ABSENT, [-1]),
    ("collection", ["instances", 0, "missing", 0, "completion_code"], 1, [0, ABSENT]),
    ("collection", ["instances", 0, "missing", 2, "lost"], True, [False, ABSENT]),
    ("collection", ["instances", 1, "missing", 0, "short"], 13, [-1, ABSENT]),
    ("collection", ["instances", 0, "missing", 3, "not_sent"], True, [False, ABSENT]),
    ("collection", ["instances", 0, "missing", 4, "not_recorded"], True, [False, ABSENT]),
    ("collection", ["instances", 0, "missing", 1, "answered"], 0, [-1, ABSENT]),
    ("collection", REGISTER + ["address"], "0x000000", ["0x00", ABSENT]),
    ("collection", RECORD + ["index"], 0, [-1, ABSENT]),
    ("collection", REGISTER + ["width"], 32, [16, 64, ABSENT]),
    ("collection", REGISTER + ["value"], "0xFFFFFFFF", ["0xffffffff", "0x0000000000000100", 256, ABSENT]),
    ("collection", REGISTER + ["role"], ABSENT, ["state", "ERRORS"]),
    ("collection", REGISTER + ["unit"], ABSENT, [""]),
    ("collection", REGISTER + ["numbering"], ABSENT, ["lsb0"]),
    ("collection", RECORD + ["identification"], "FF FF FF", ["0b 00 54", "0B0054", "0B 00", ABSENT]),
    ("collection", REGISTER + ["upper"], ABSENT, ["0x0000000000000001"]),
    ("collection", REGISTER + ["folded"], ABSENT, ["0x0101"]),
    ("collection", REGISTER + ["fields"], [], [{}, ABSENT]),
    ("collection", FIELD + ["bits"], "63:32", ["5-4", "", ABSENT]),
    ("collection", FIELD + ["name"], None, [1, "", ABSENT]),
    ("collection", FIELD + ["value"], 4294967295, [4294967296, -1, "1", "0x00000001", ABSENT]),
    ("collection", FIELD + ["text"], ABSENT, [None, ""]),
    ("collection", FINDING + ["key"], "A/sp0/instance0", ["A/?1", "", ABSENT]),
    ("collection", FINDING + ["class"], "A", ["", ABSENT]),
    ("collection", FINDING + ["origin"], JFR, [{}, ABSENT]),
    ("collection", FINDING + ["register"], "R", ["", ABSENT]),
    ("collection", FINDING + ["bits"], "63:32", [63, ABSENT]),
    ("collection", FINDING + ["name"], None, [1, "", ABSENT]),
    ("collection", FINDING + ["value"], "0x0000000100000000", ["x", ABSENT]),
    ("collection", FINDING + ["text"], ABSENT, [None, ""]),
    ("collection", FINDING + ["register_value"], "0x0000000000000010", ["16", ABSENT]),
    ("collection", FINDING + ["severity"], "corrected", ["warning", ABSENT]),
    ("collection", FINDING + ["masked"], True, [1, ABSENT]),
    ("collection", FINDING + ["first"], False, [0, ABSENT]),
    ("collection", FINDING + ["known"], True, [None, ABSENT]),
    ("collection", FINDING + ["evidence"], {}, [[], {"Log": 1}, ABSENT]),
    ("collection", FINDING + ["unknown"], [], [{}, [1], ABSENT]),
    ("plan", ["kind"], "plan", ["dry-run", ABSENT]),
    ("plan", ["format_version"], 2, [1, ABSENT]),
    ("plan", ["machine_type"], "x", ["", ABSENT]),
    ("plan", ["classes"], [], [{}, ABSENT]),
    ("plan", ["dot_commands"], [], [{}, ABSENT]),
    ("plan", ["areas"], [], [{}, ABSENT]),
    ("plan", ["total"], 0, [-1, ABSENT]),
    ("plan", ["classes", 0, "class"], "A", ["", ABSENT]),
    ("plan", ["classes", 0, "path"], ABSENT, ["none"]),
    ("plan", ["classes", 0, "instances"], [], [{}, ABSENT]),
    ("plan", PLANNED + ["key"], "A/sp0/instance1", ["A/?1", ABSENT]),
    ("plan", PLANNED + ["origin"], JFR, [{}, ABSENT]),
    ("plan", PLANNED + ["reads"], [], [{}, ABSENT]),
    ("plan", PLANNED + ["reads", 0, "property"], "P", ["", ABSENT]),
    ("plan", PLANNED + ["reads", 0, "address"], "0x000000", ["0x0", ABSENT]),
    ("plan", PLANNED + ["reads", 1, "index"], 0, ["0", ABSENT]),
    ("plan", ["dot_commands", 0, "class"], "A", ["", ABSENT]),
    ("plan", ["dot_commands", 0, "service_processor"], 1, [-1, ABSENT]),
    ("plan", ["areas", 0, "class"], "A", ["", ABSENT]),
    ("plan", ["areas", 0, "key"], "A/node1/ioh_err", ["A", ABSENT]),
    ("plan", ["areas", 0, "node"], 1, [-1, ABSENT]),
    ("plan", ["areas", 0, "area"], "ioh_err", ["x", ABSENT]),
]


def is_valid(document):
    return VALIDATOR.is_valid(document)


def changed(name, *changes):
    """A copy of a document in which each (path, value) is set or, if it is ABSENT, removed."""
    document = copy.deepcopy(DOCUMENTS[name])
    for path, value in changes:
        place = document
        for step in path[:-1]:
            place = place[step]
        if value is ABSENT:
            del place[path[-1]]
        else:
            place[path[-1]] = copy.deepcopy(value)
    return document


def members_of(schema):
    """The names in every "properties" of the schema, without those that only a condition has."""
    for key, value in schema.items() if isinstance(schema, dict) else []:
        if key in ("if", "then", "else", "not"):
            continue
        if key == "properties":
            yield from (name for name, rule in value.items() if rule is not False)
            for rule in value.values():
                yield from members_of(rule)
        elif isinstance(value, dict):
            yield from members_of(value)
        elif isinstance(value, list):
            for one in value:
                yield from members_of(one)


class Schema(unittest.TestCase):
    def test_is_a_schema(self):
        jsonschema.Draft202012Validator.check_schema(SCHEMA)
        self.assertEqual(SCHEMA["$id"], "urn:velhost:result:2")

    def test_accepts_documents_with_every_member(self):
        for name, document in DOCUMENTS.items():
            self.assertEqual([error.message for error in VALIDATOR.iter_errors(document)], [], name)

    def test_accepts_the_right_and_refuses_the_wrong_in_each_member(self):
        for name, path, right, wrong in MEMBERS:
            self.assertTrue(is_valid(changed(name, (path, right))), f"{name} {path}: {right}")
            for value in wrong:
                self.assertFalse(is_valid(changed(name, (path, value))), f"{name} {path}: {value}")

    def test_every_member_has_a_case(self):
        self.assertEqual(set(members_of(SCHEMA)), {path[-1] for _, path, _, _ in MEMBERS})

    def test_refuses_members_that_it_does_not_know(self):
        for name, path in (("collection", []), ("collection", ["run"]), ("collection", ["source"]),
                           ("collection", ["source", "server"]), ("collection", ["plugin"]), ("collection", ["schema"]),
                           ("collection", ["reasons", 0]), ("collection", ["exchanges"]), ("collection", FAILED + [0]),
                           ("collection", ["unread", 0]), ("collection", ["instances", 0]),
                           ("collection", ["instances", 0, "origin"]), ("collection", ["instances", 0, "missing", 0]),
                           ("collection", ["instances", 2, "file"]), ("collection", REGISTER), ("collection", FIELD),
                           ("collection", FINDING), ("summary", []), ("line", []), ("plan", []),
                           ("plan", ["classes", 0]), ("plan", PLANNED), ("plan", PLANNED + ["reads", 0]),
                           ("plan", ["dot_commands", 0]), ("plan", ["areas", 0])):
            self.assertFalse(is_valid(changed(name, (path + ["surplus"], 1))), f"{name} {path}")


class Rules(unittest.TestCase):
    """What one member says of others."""

    def check(self, name, cases):
        for expected, *changes in cases:
            self.assertEqual(is_valid(changed(name, *changes)), expected, changes)

    def test_a_complete_result_has_no_message_and_no_reason_but_the_time(self):
        complete = [(["status"], "complete"), (["exit_status"], 0), (["message"], ABSENT), (["reasons"], [])]
        time = [{"code": "time-unread", "class": "A", "count": 1, "message": "m"}]
        self.check("collection", [
            (True, *complete), (True, *complete, (["exit_status"], 1)), (True, *complete, (["exit_status"], 73)),
            (True, *complete, (["exit_status"], 74)),
            (True, *complete, (["reasons"], time)),
            (False, *complete, (["exit_status"], 3)), (False, *complete, (["message"], "m")),
            (False, *complete, (["reasons"], RESULT["reasons"]))])
        self.check("collection", [(False, (["reasons"], [])), (False, (["reasons"], time)),
                                  (True, (["reasons"], time + RESULT["reasons"])), (False, (["exit_status"], 0)),
                                  (True, (["exit_status"], 1)), (True, (["exit_status"], 73)),
                                  (False, (["exit_status"], 70))])

    def test_unreachable_and_failed_have_their_exit_statuses(self):
        for status, right, wrong in (("unreachable", (69, 77), (3, 70)), ("failed", (65, 66, 70), (3, 69))):
            self.check("collection", [(True, (["status"], status), (["exit_status"], one), (["reasons"], []))
                                      for one in right])
            self.check("collection", [(False, (["status"], status), (["exit_status"], one)) for one in wrong])
            self.check("collection", [(False, (["status"], status), (["exit_status"], right[0]), (["message"], ABSENT))])

    def test_only_reasons_of_the_whole_run_may_lack_a_class(self):
        reason = ["reasons", 0]
        for code in ("stopped", "session-lost"):
            self.check("collection", [(True, (reason + ["code"], code)),
                                      (True, (reason + ["code"], code), (reason + ["class"], ABSENT))])
        self.check("collection", [(False, (reason + ["code"], "nothing-read")),
                                  (True, (reason + ["code"], "nothing-read"), (reason + ["class"], ABSENT))])

    def test_a_dot_command_has_a_service_processor_and_no_place(self):
        dot = FAILED + [1]
        self.check("collection", [(False, (dot + ["node"], 0)), (False, (dot + ["key"], "A/sp0/instance0")),
                                  (False, (dot + ["address"], "0x000000")), (False, (dot + ["index"], 0)),
                                  (False, (FAILED + [0, "service_processor"], 0))])

    def test_a_read_ends_in_one_way_only(self):
        self.check("collection", [(False, (FAILED + [0, "lost"], True)), (False, (FAILED + [1, "answered"], 1)),
                                  (False, (FAILED + [2, "lost"], ABSENT), (FAILED + [2, "not_sent"], True)),
                                  (False, (["instances", 0, "missing", 0, "short"], 1))])

    def test_what_was_to_be_read_is_at_one_place_only(self):
        missing = ["instances", 0, "missing", 0]
        self.check("collection", [(False, (missing + [name], value))
                                  for name, value in (("addresses", []), ("index", 0), ("offset", 0))])

    def test_origin_decides_between_registers_and_file(self):
        self.check("collection", [(False, (["instances", 2, "registers"], {})),
                                  (False, (["instances", 0, "file"], FILE_INSTANCE["file"]))])

    def test_an_unplaced_instance_has_nothing_but_properties(self):
        self.check("collection", [(False, (["instances", 3, "origin"], R8)), (False, (["instances", 3, "registers"], {})),
                                  (False, (["instances", 3, "file"], FILE_INSTANCE["file"])),
                                  (False, (["instances", 3, "incomplete"], True),
                                   (["instances", 3, "missing"], [{"property": "P", "lost": True}]))])

    def test_only_narrow_registers_have_an_upper_half_and_only_records_an_identification(self):
        wide = [(REGISTER + ["width"], 64), (REGISTER + ["value"], "0x0000000000000100")]
        self.check("collection", [(False, *wide, (REGISTER + ["upper"], ABSENT)),
                                  (False, *wide, (REGISTER + ["folded"], ABSENT)),
                                  (True, *wide, (REGISTER + ["upper"], ABSENT), (REGISTER + ["folded"], ABSENT)),
                                  (False, (REGISTER + ["identification"], "0B 00 54")),
                                  (False, (REGISTER + ["index"], 1)),
                                  (False, (RECORD + ["width"], 32), (RECORD + ["value"], "0x00000000"))])

    def test_a_planned_read_is_at_one_place_only(self):
        self.check("plan", [(False, (PLANNED + ["reads", 0, "index"], 1))])


if __name__ == "__main__":
    unittest.main()
