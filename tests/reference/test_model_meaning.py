"""Self tests of the reference model: fields, roles and findings. The expected values are worked out by hand."""

import unittest

import collector_model as model
import modelmeaning
import modelplan
from collector_model import CimClass, Schema
from modelmeaning import Bits, Numbering, read_fields
from modeltest import bases, register, served
from resulttest import GOOD_HEADER, block, collect, jfr, node, r8, X_MEM_CTL

BRIDGE = model.VO_PCI_BRIDGE
LSB32, MSB32, LSB64, MSB64 = (Numbering(width, msb0) for width in (32, 64) for msb0 in (False, True))


def described(elements, numbering=LSB32):
    """Bits, name and texts of the fields that are good."""
    return [((one.bits.high, one.bits.low), one.name, one.texts) for one in read_fields(elements, numbering)]


class FieldTest(unittest.TestCase):

    def test_every_form(self):
        self.assertEqual(described(["16 Unexpected completion", "5:4 Link speed", "5:4=1 2.5 GT/s", "3:0 Mode",
                                    "3:0=8-15 reserved", "3:0=0x1-0X2 x", "3:0=0x1-0x2   both ", "31:17/hex Device"]),
                         [((16, 16), "Unexpected completion", []), ((5, 4), "Link speed", [(1, 1, "2.5 GT/s")]),
                          ((3, 0), "Mode", [(8, 15, "reserved"), (1, 2, "both ")]), ((31, 17), "Device", [])])

    def test_all_after_the_blanks_is_text(self):
        for text in ("\u00a0", "a\tb\rc", "=1 x", "/hex x", "x  "):
            self.assertEqual(described(["3   " + text])[0][1], text)

    def test_the_more_significant_end_comes_first(self):
        self.assertEqual(described(["4:5 Up", "5:4 Down", "7:7 One"]), [((5, 4), "Down", []), ((7, 7), "One", [])])
        # Bit 4 from the most significant of 32 has the place 27, of 64 the place 59.
        self.assertEqual(described(["4:5 Up", "5:4 Down"], MSB32), [((27, 26), "Up", [])])
        self.assertEqual(described(["04:05 Up", "63 Last"], MSB64), [((59, 58), "Up", []), ((0, 0), "Last", [])])

    def test_what_does_not_match_is_ignored(self):
        for element in ("", "x", "16", "16Name", " 16 Name", "100 Name", "5: Name", "5:4:3 Name", "5:4/HEX Name",
                        "5:4/hex=1 Name", "3= Name", "3=1", "3=1- Name", "3=0X1 Name", "3 \tName", "3\tName", "3  ",
                        "4 \rName", "4 Name\n", "4 Na\nme"):
            self.assertEqual(described(["3 Bit", element])[1:], [], element)
            self.assertEqual(described(["3 Bit", element])[0][2], [], element)

    def test_bits_beyond_the_register(self):
        self.assertEqual(described(["32 A", "32:31 B", "99 C", "31 D"]), [((31, 31), "D", [])])
        self.assertEqual(described(["64 A", "31:32 B"], MSB64), [((32, 31), "B", [])])
        self.assertEqual(described(["31:32 B", "31 C"], MSB32), [((0, 0), "C", [])])

    def test_the_later_of_two_that_conflict_is_ignored(self):
        self.assertEqual([name for _, name, _ in described(["7:4 A", "4 B", "8:7 C", "31:0 D", "3 A", "3 a", "8 D"])],
                         ["A", "a", "D"])
        # What is ignored itself is in nothing's way.
        self.assertEqual([name for _, name, _ in described(["4:7 A", "5 A", "6 A", "7 B"])], ["A", "B"])

    def test_values(self):
        field = "2:0 Mode"
        for elements, texts in ((["2:0=7 a", "2:0=8 b", "2:0=6-8 c"], [(7, 7, "a")]),
                                (["2:0=2-4 a", "2:0=4 b", "2:0=0-7 c", "2:0=5-6 d"], [(2, 4, "a"), (5, 6, "d")]),
                                (["2:0=3-2 a", "2:0=2-2 b"], [(2, 2, "b")]),
                                (["2:0=18446744073709551617 a", "2:0=0x001 b", "2:0=010 c"], [(1, 1, "b")]),
                                (["2:0=1 same", "2:0=2 same"], [(1, 1, "same"), (2, 2, "same")]),
                                (["1:0=1 a", "2=1 b", "02:00=1 c"], [(1, 1, "c")])):
            self.assertEqual(described([field, *elements]), [((2, 0), "Mode", texts)], elements)

    def test_text_follows_the_name(self):
        self.assertEqual(described(["2:0=1 early", "2:0 Mode", "4 Other", "2:0=1 late"])[0],
                         ((2, 0), "Mode", [(1, 1, "late")]))
        self.assertEqual(described(["2:0 Mode", "3:2 Bad", "3:2=1 of a bad one"]), [((2, 0), "Mode", [])])


class NumberingTest(unittest.TestCase):

    def test_texts(self):
        for numbering, bits, text in ((LSB32, Bits(4, 5), "5:4"), (MSB32, Bits(4, 5), "26:27"),
                                      (LSB64, Bits(63, 63), "63"), (MSB64, Bits(63, 63), "0"),
                                      (MSB64, Bits(0, 63), "0:63")):
            self.assertEqual(numbering.text(bits), text)


def at(address, name="Errors", width=4, **qualifiers):
    return register(name, Offset=address, MaxLen=width, **qualifiers)


def sent(*values, chip=1):
    """A node whose registers 1, 2, ... have these values."""
    return node(*[(chip, number, value.to_bytes(8, "little").hex(" ")) for number, value in enumerate(values, 1)
                  if value is not None])


def result(*registers, values=(), qualifiers=None, **of_schema):
    """The result of a class with the registers 1, 2, ... of the values, None for those that are absent."""
    cls = CimClass(BRIDGE, "Root", {**served(), **(qualifiers or {})}, list(registers))
    schema = Schema(bases() + [cls], **of_schema)
    return collect(schema, {"bmc_node": [sent(*values)]}, [BRIDGE])


def shown(*registers, values=(), **more):
    """The first register of the instance."""
    return list(result(*registers, values=values, **more)["instances"][0]["registers"].values())[0]


def fields(elements, value, width=4, role="state", **more):
    return shown(at(1, width=width, Fields=elements, Role=role), values=[value], **more)["fields"]


class RegisterTest(unittest.TestCase):

    def test_fields_from_the_least_significant(self):
        # 0x35 is 110101: bits 0, 2, 4 and 5.
        self.assertEqual(fields(["5:4 High", "5:4=3 both", "1:0 Low", "3 Off", "3=0 it is off", "7 Zero"], 0x35), [
            {"bits": "1:0", "name": "Low", "value": 1}, {"bits": "2", "name": None, "value": 1},
            {"bits": "3", "name": "Off", "value": 0, "text": "it is off"},
            {"bits": "5:4", "name": "High", "value": 3, "text": "both"}])

    def test_bits_that_no_field_describes(self):
        for role in modelmeaning.ROLES:
            expected = [{"bits": "2", "name": None, "value": 1}] if role in ("errors", "mask", "severity") else []
            self.assertEqual(fields([], 4, role=role), expected)
            self.assertEqual(fields(["32 Beyond"], 4, role=role), expected)
            self.assertEqual(len(fields(["31 Top"], 4, role=role)), 1)

    def test_most_significant_bit_first(self):
        self.assertEqual(fields(["0:1 Top"], 0x40000001, qualifiers={"BitNumbering": "MSB0"}),
                         [{"bits": "31", "name": None, "value": 1}, {"bits": "0:1", "name": "Top", "value": 1}])

    def test_wide_values_are_texts(self):
        value = 0x0000000500000007
        self.assertEqual(fields(["63:33 A", "32:0 B", "32:0=0x100000007 x"], value, 8),
                         [{"bits": "32:0", "name": "B", "value": "0x0000000100000007", "text": "x"},
                          {"bits": "63:33", "name": "A", "value": 2}])
        self.assertEqual(fields(["63:0 All"], 1, 8), [{"bits": "63:0", "name": "All", "value": "0x0000000000000001"}])

    def test_the_upper_four_bytes_are_not_in_fields(self):
        one = shown(at(1, Fields=["0 A"]), values=[0x200000001])
        self.assertEqual(one, {"address": "0x000001", "width": 32, "value": "0x00000001", "upper": "0x00000002",
                               "fields": [{"bits": "0", "name": "A", "value": 1}]})

    def test_role_unit_and_numbering(self):
        for qualifiers, members in (({}, {}), ({"Role": "State"}, {}), ({"Role": "LOG"}, {"role": "log"}),
                                    ({"Role": "logs"}, {}), ({"Role": "log "}, {}), ({"Role": ["log"]}, {}),
                                    ({"Units": "counts"}, {}),
                                    ({"Role": "counter", "Units": "counts"}, {"role": "counter", "unit": "counts"}),
                                    ({"Role": "counter", "Units": "a", "PUnit": "b"}, {"role": "counter", "unit": "a"}),
                                    ({"Role": "counter", "Units": "", "PUnit": "b"}, {"role": "counter", "unit": "b"}),
                                    ({"Role": "counter"}, {"role": "counter"}),
                                    ({"BitNumbering": "Msb0"}, {"numbering": "msb0"}), ({"BitNumbering": "msb"}, {}),
                                    ({"BitNumbering": "LSB0"}, {})):
            self.assertEqual(shown(at(1, **qualifiers), values=[1]),
                             {"address": "0x000001", "width": 32, "value": "0x00000001", "fields": [], **members})

    def test_a_block_of_a_service_processor(self):
        document = collect([jfr(X_MEM_CTL, 1, register("First", Index=0, MaxLen=4, Role="errors", Fields=["63 Top"]))],
                           {"dot": {"service_processor": [block(GOOD_HEADER + "0b 00 54 80 00 00 00 00 00 00 02"),
                                                          block(GOOD_HEADER + "0b 00 54 80 00 00 00 00 00 00")]}},
                           [X_MEM_CTL])
        self.assertEqual(document["instances"][0]["registers"]["First"], {
            "index": 0, "width": 64, "value": "0x8000000000000002", "identification": "0B 00 54", "role": "errors",
            "fields": [{"bits": "1", "name": None, "value": 1}, {"bits": "63", "name": "Top", "value": 1}]})
        # A byte of the second block's register did not come.
        self.assertEqual([(one["key"], one["bits"]) for one in document["findings"]],
                         [(X_MEM_CTL + "/sp0/instance0", "1"), (X_MEM_CTL + "/sp0/instance0", "63")])


class InheritanceTest(unittest.TestCase):

    MIDDLE, UPPER = "KROSG_Middle", "KROSG_Upper"

    def registers(self, upper=(), middle=(), own=(), of=({}, {}, {}), **of_schema):
        classes = [CimClass(self.UPPER, "Root", of[0], list(upper)),
                   CimClass(self.MIDDLE, self.UPPER, of[1], list(middle)),
                   CimClass(BRIDGE, self.MIDDLE, {**served(), **of[2]}, list(own))]
        document = collect(Schema(bases() + classes, **of_schema), {"bmc_node": [sent(1, 3)]}, [BRIDGE])
        self.document = document
        return document["instances"][0]["registers"]

    def numbering(self, *of, own=None, **of_schema):
        classes = [{"BitNumbering": word} if word else {} for word in of]
        reg = at(1, **({"BitNumbering": own} if own else {}))
        return self.registers(middle=[reg], of=classes, **of_schema)["Errors"].get("numbering", "lsb0")

    def test_numbering_of_the_collected_class(self):
        self.assertEqual(self.numbering("msb0", None, None), "msb0")
        self.assertEqual(self.numbering("msb0", None, None, restricted=["BitNumbering"]), "lsb0")
        self.assertEqual(self.numbering(None, None, "msb0", restricted=["BitNumbering"]), "msb0")
        self.assertEqual(self.numbering("msb0", "lsb0", None), "lsb0")
        self.assertEqual(self.numbering("msb0", "lsb0", "MSB0"), "msb0")
        self.assertEqual(self.numbering("msb0", None, None, own="lsb0"), "lsb0")
        self.assertEqual(self.numbering("msb0", None, None, own="no word"), "msb0")
        self.assertEqual(self.numbering("msb0", "no word", None), "lsb0")
        self.assertEqual(self.numbering("msb0", None, "msb0", disabled=["BITNUMBERING"]), "lsb0")

    def test_overriding_registers_inherit(self):
        first = at(1, Role="errors", Fields=["0 A"], Severity="fatal")
        second = register("ERRORS", Severity="corrected", Override="Errors")
        self.registers(middle=[first], own=[second])
        self.assertEqual([(one["register"], one["name"], one["severity"]) for one in self.document["findings"]],
                         [("ERRORS", "A", "corrected")])
        self.registers(middle=[first], own=[second], restricted=["fields", "Severity"])
        self.assertEqual([(one["register"], one["name"], one["severity"]) for one in self.document["findings"]],
                         [("ERRORS", None, "corrected")])

    def test_registers_that_are_not_read_of_the_class(self):
        """A property of the superclass's superclass is not read, so it cannot mask."""
        self.registers(upper=[at(2, "Mask")], middle=[at(1, Role="errors", MaskedBy="Mask")])
        self.assertEqual([(one["masked"], one["unknown"]) for one in self.document["findings"]], [(False, [])])
        self.registers(middle=[at(2, "Mask")], own=[at(1, Role="errors", MaskedBy="mASK")])
        self.assertEqual([(one["masked"], one["unknown"]) for one in self.document["findings"]], [(True, [])])


class DisabledTest(unittest.TestCase):

    def test_another_type_switches_a_qualifier_off(self):
        qualifiers = {"Role": "errors", "Fields": ["0 A"], "Severity": "fatal", "Evidence": ["Errors"]}
        for name, members in (("Role", None), ("Fields", (None, "fatal", {"Errors": "0x00000001"})),
                              ("Severity", ("A", "error", {"Errors": "0x00000001"})), ("Evidence", ("A", "fatal", {}))):
            findings = result(at(1, **{**qualifiers, name: 7}), values=[1], disabled=[name])["findings"]
            self.assertEqual([(one["name"], one["severity"], one["evidence"]) for one in findings],
                             [members] if members else [])
        for other in (["errors"], "errors", 1):
            self.assertEqual(result(at(1, Role=other), values=[1], disabled=["role"])["findings"], [])


class FindingTest(unittest.TestCase):

    def findings(self, *others, values, width=4, **qualifiers):
        self.document = result(at(1, width=width, Role="errors", **qualifiers), *others, values=values)
        return self.document["findings"]

    def brief(self, *members, **more):
        others = [at(number, name, more.get("width", 4)) for number, name in enumerate(more.pop("names", ()), 2)]
        return [tuple(one[member] for member in members) for one in self.findings(*others, **more)]

    def test_members(self):
        finding, = self.findings(at(2, "Mask"), at(3, "Log", 8), values=[0x20, 0, 0xAB], MaskedBy="MASK",
                                 Fields=["5:4 Speed", "5:4=2 fast"], Evidence=["log", "mask", "Errors", "None", "LOG"])
        self.assertEqual(finding, {
            "key": BRIDGE + "/node0/instance0", "class": BRIDGE, "register": "Errors", "bits": "5:4", "name": "Speed",
            "origin": {"path": "r8", "node": 0, "chip": 1, "instance": 0}, "value": 2, "text": "fast",
            "register_value": "0x00000020", "severity": "error", "masked": False, "first": False, "known": False,
            "evidence": {"Log": "0x00000000000000AB", "Mask": "0x00000000", "Errors": "0x00000020"}, "unknown": []})

    def test_only_fields_that_are_not_zero(self):
        self.assertEqual(self.brief("bits", "name", values=[4], Fields=["0 A", "0=0 off", "31:1 B"]), [("31:1", "B")])
        self.assertEqual(self.findings(values=[0]), [])
        self.assertEqual(result(at(1, Role="log", Fields=["0 A"]), values=[1])["findings"], [])

    def test_masks(self):
        """Bits 0 to 3 are set. The mask is 0101, what is enabled 0011."""
        bits = ["3:2 High", "1 One", "0 Nil"]
        self.assertEqual(self.brief("bits", "masked", values=[15, 5], names=["M"], Fields=bits, MaskedBy="M"),
                         [("1", False), ("3:2", False), ("0", True)])
        self.assertEqual(self.brief("bits", "masked", values=[15, 3], names=["M"], Fields=bits, EnabledBy="M"),
                         [("0", False), ("1", False), ("3:2", True)])
        self.assertEqual(self.brief("bits", "masked", values=[15, 5, 3], names=["M", "E"], Fields=bits, MaskedBy="M",
                                    EnabledBy="E"), [("1", False), ("0", True), ("3:2", True)])

    def test_bits_above_the_width_do_not_mask(self):
        self.assertEqual(self.brief("bits", "masked", values=[0x100000001, 0xFFFFFFFF00000000], names=["M"],
                                    MaskedBy="M"), [("0", False), ("63:32", False)])
        self.assertEqual(self.brief("bits", "masked", values=[0x100000001, 0xFFFFFFFF00000000], names=["M"],
                                    MaskedBy="M", width=8), [("0", False), ("32", True)])

    def test_references_to_other_widths(self):
        for qualifier in ("MaskedBy", "EnabledBy", "FatalBy"):
            one, = self.findings(at(2, "Wide", 8), values=[1, 1], **{qualifier: "Wide"})
            self.assertEqual((one["masked"], one["severity"]), (False, "error"))
            one, = self.findings(at(2, "Wide", 8), values=[1, None], **{qualifier: "Wide"})
            self.assertEqual(one["unknown"], [])
        one, = self.findings(at(2, "Wide", 8), values=[1, 0], FirstErrorIn="Wide")
        self.assertTrue(one["first"])

    def test_fatal(self):
        """Bits 0 to 2 are set, of which bit 0 is masked and bits 0 and 1 are fatal."""
        self.assertEqual(self.brief("bits", "severity", "masked", values=[7, 1, 3], names=["M", "F"], MaskedBy="M",
                                    FatalBy="F"), [("1", "fatal", False), ("2", "error", False), ("0", "fatal", True)])
        # Of the field, the part that is not masked decides, unless all of it is masked.
        for mask, severity in ((1, "error"), (2, "fatal"), (3, "fatal"), (0, "fatal")):
            self.assertEqual(self.brief("severity", values=[3, mask, 1], names=["M", "F"], MaskedBy="M", FatalBy="F",
                                        Fields=["1:0 A"]), [(severity,)])

    def test_severity(self):
        for word, severity in (("FATAL", "fatal"), ("corrected", "corrected"), ("Error", "error"), ("bad", "error")):
            self.assertEqual(self.brief("severity", values=[1], Severity=word), [(severity,)])
        # What tells fatal errors wins, but not for the upper bytes, of which it says nothing.
        self.assertEqual(self.brief("severity", "bits", values=[0x100000003, 2], names=["F"], Severity="corrected",
                                    FatalBy="F"), [("fatal", "1"), ("error", "0"), ("corrected", "63:32")])
        self.assertEqual(self.brief("severity", values=[1, 0], names=["F"], Severity="corrected", FatalBy="G"),
                         [("corrected",)])

    def test_upper(self):
        finding, = self.findings(at(2, "Mask"), at(3, "First"), values=[0x8000000100000000, 0xFFFFFFFF, 32],
                                 MaskedBy="Mask", Severity="fatal", FirstErrorIn="First", Evidence=["Mask"],
                                 BitNumbering="msb0")
        self.assertEqual(finding, {
            "key": BRIDGE + "/node0/instance0", "class": BRIDGE, "register": "Errors", "bits": "63:32", "name": None,
            "origin": {"path": "r8", "node": 0, "chip": 1, "instance": 0}, "value": 0x80000001,
            "register_value": "0x00000000", "severity": "fatal", "masked": False, "first": False, "known": False,
            "evidence": {}, "unknown": []})
        self.assertEqual(self.brief("bits", "evidence", values=[0x100000000, 5], names=["Log"], Evidence=["Log"]),
                         [("63:32", {"Log": "0x00000005"})])

    def first(self, pointer, value, first, **more):
        found = self.brief("bits", "first", "evidence", values=[value, first], names=["First"], FirstErrorIn=pointer,
                           Evidence=["First"], **more)
        self.assertEqual([bool(evidence) for _, _, evidence in found], [first for _, first, _ in found])
        return [bits for bits, is_first, _ in found if is_first]

    def test_first(self):
        self.assertEqual(self.first("First", 7, 1), ["1"])
        self.assertEqual(self.first("FIRST", 0xF0, 5, Fields=["7:4 A"]), ["7:4"])
        self.assertEqual(self.first("First", 0xD0, 5, Fields=["7:4 A"]), [])
        self.assertEqual(self.first("First", 7, 3), [])
        self.assertEqual(self.first("First", 7, 32), [])
        self.assertEqual(self.first("First", 0x100000001, 32), [])
        # Bit 5 from the most significant of 32 has the place 26.
        self.assertEqual(self.first("First", 0x04000020, 5, BitNumbering="msb0"), ["5"])

    def test_part_of_the_first_error_register(self):
        # 0x0502: 5 in bits 15 to 8, 2 in bits 7 to 0, and in bits 9 to 7 binary 010.
        for pointer, place in (("First 15:8", "5"), ("First 7:0", "2"), ("first   9:7", "2"), ("First 1:1", "1")):
            self.assertEqual(self.first(pointer, 0xFF, 0x0502), [place], pointer)
        # The other register counts its bits in its own way: bits 16 to 23 are those from 15 to 8.
        document = result(at(1, Role="errors", FirstErrorIn="First 16:23"), at(2, "First", BitNumbering="msb0"),
                          values=[0xFF, 0x0502])
        self.assertEqual([one["bits"] for one in document["findings"] if one["first"]], ["5"])

    def test_parts_that_are_ignored(self):
        for pointer in ("First 5", "First 0:5", "First 32:0", "First 5:0 ", " First", "First 5-0", "First5:0",
                        "First 0x5:0", "None", ""):
            self.assertEqual(self.brief("first", "evidence", "unknown", values=[2, 1], names=["First"],
                                        FirstErrorIn=pointer, Evidence=["Errors"]),
                             [(False, {"Errors": "0x00000002"}, [])], pointer)

    def test_what_was_not_read(self):
        """It counts as zero, or as all ones where ones enable; nothing is first, and everything has its evidence."""
        names = ["F", "E", "M", "First", "Log"]
        self.assertEqual(self.brief("bits", "masked", "severity", "first", "unknown", "evidence", names=names,
                                    values=[3, None, None, None, None, None], MaskedBy="M", EnabledBy="E", FatalBy="F",
                                    FirstErrorIn="first", Evidence=["Log", "M"], Severity="fatal"),
                         [(bits, False, "error", False, ["M", "E", "F", "First"], {"Log": None, "M": None})
                          for bits in ("0", "1")])
        self.assertEqual(self.brief("unknown", "masked", names=["X"], values=[1, None], MaskedBy="x", EnabledBy="X",
                                    FatalBy="X", FirstErrorIn="X 5:0"), [(["X"], False)])
        self.assertEqual(self.brief("unknown", "masked", names=["M"], values=[1, None], MaskedBy="N"), [([], False)])

    def test_a_register_may_refer_to_itself(self):
        self.assertEqual(self.brief("masked", "severity", "first", values=[1], MaskedBy="Errors", FatalBy="errors",
                                    FirstErrorIn="Errors 1:1"), [(True, "fatal", True)])

    def test_other_roles_have_no_findings(self):
        for role in set(modelmeaning.ROLES) - {"errors"}:
            self.assertEqual(result(at(1, Role=role, Severity="fatal", MaskedBy="Errors"), values=[1])["findings"], [])


class OrderTest(unittest.TestCase):

    def test_order(self):
        registers = [at(1, "B", Role="errors", MaskedBy="M", Fields=["8:4 Low", "31 Top"]),
                     at(2, "A", Role="errors", Severity="corrected"), at(3, "C", Role="errors", Severity="fatal"),
                     at(4, "M", Role="mask")]
        values = (0x180000011, 1, 2, 0x10)
        bmc = node(*[(chip, number, value.to_bytes(8, "little").hex(" ")) for chip in (1, 2)
                     for number, value in enumerate(values, 1)])
        document = collect([r8(BRIDGE, 2, *registers)], {"bmc_node": [bmc]}, [BRIDGE])
        self.assertEqual([(one["origin"]["instance"], one["register"], one["bits"]) for one in document["findings"]], [
            (0, "C", "1"), (1, "C", "1"), (0, "B", "0"), (0, "B", "31"), (0, "B", "63:32"), (1, "B", "0"),
            (1, "B", "31"), (1, "B", "63:32"), (0, "A", "0"), (1, "A", "0"), (0, "B", "8:4"), (1, "B", "8:4")])
        self.assertEqual([one["masked"] for one in document["findings"]], [False] * 10 + [True] * 2)

    def test_instances_of_unknown_places_have_none(self):
        """The host does not know what a class without MaxLen makes the collector do."""
        other = CimClass(BRIDGE, "Root", served(), [register("Errors", Offset=1, Role="errors", MaxLen=4),
                                                    model.Property("Odd", "uint16", True, {"Offset": 9, "MaxLen": 4})])
        document = collect([other], {"bmc_node": [sent(1)]}, [BRIDGE])
        self.assertEqual(([one["key"] for one in document["instances"]], document["findings"]), ([BRIDGE + "/?1"], []))


class OptionTest(unittest.TestCase):

    def status(self, fail_on, *registers, values):
        cls = CimClass(BRIDGE, "Root", served(), list(registers))
        return collect([cls], {"bmc_node": [sent(*values)]}, [BRIDGE], fail_on=fail_on)

    def test_exit_status(self):
        for severity, statuses in (("fatal", (1, 1, 1)), ("error", (0, 1, 1)), ("corrected", (0, 0, 1))):
            found = [self.status(word, at(1, Role="errors", Severity=severity), values=[1])["exit_status"]
                     for word in ("fatal", "error", "corrected")]
            self.assertEqual(tuple(found), statuses)
        self.assertEqual(self.status(None, at(1, Role="errors", Severity="fatal"), values=[1])["exit_status"], 0)
        self.assertEqual(self.status("corrected", at(1, Role="errors"), values=[0])["exit_status"], 0)

    def test_masked_findings_do_not_count(self):
        document = self.status("corrected", at(1, Role="errors", Severity="fatal", MaskedBy="Errors"), values=[1])
        self.assertEqual((len(document["findings"]), document["exit_status"]), (1, 0))

    def test_a_finding_is_more_certain_than_what_is_missing(self):
        registers = (at(1, Role="errors"), register("Twice", Offset=[1, 1], MaxLen=4))
        for fail_on, status in (("error", 1), ("fatal", 3)):
            document = self.status(fail_on, *registers, values=[1])
            self.assertEqual((document["status"], document["exit_status"]), ("partial", status))

    def test_filter(self):
        classes = [r8(BRIDGE, 3, at(1, Role="errors", MaskedBy="Mask"), at(2, "Mask"), at(3, "Log"))]
        bmc = node((1, 1, "00 " * 8), (1, 2, "00 " * 8), (2, 1, "01" + " 00" * 7), (2, 2, "01" + " 00" * 7),
                   (2, 3, "00 " * 8), (3, 3, "00 " * 8))
        whole = collect(classes, {"bmc_node": [bmc]}, [BRIDGE])
        part = modelmeaning.filtered(whole)
        self.assertEqual(part["instances"], [whole["instances"][1]])
        self.assertEqual({**part, "instances": None}, {**whole, "instances": None, "filtered": True})
        self.assertNotIn("filtered", whole)


class PlanTest(unittest.TestCase):

    def test_bad_meaning_does_not_hinder_the_plan(self):
        cls = CimClass(BRIDGE, "Root", served(), [at(1, Role="none", Fields=["x"], MaskedBy="y", FirstErrorIn="z 1")])
        plan = modelplan.Plan(Schema(bases() + [cls]), {"machine_type": "6203", "bmc_node": [{}]},
                              [[(BRIDGE, True)]])
        self.assertEqual(plan.turns[0].of.kind, modelplan.PLANNED)


if __name__ == "__main__":
    unittest.main()
