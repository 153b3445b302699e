#!/usr/bin/env python3
"""Self tests of the reference model; the expected values are worked out by hand."""

import datetime
import os
import subprocess
import sys
import tempfile
import tomllib
import unittest

import collector_model as model
import random_case
from collector_model import CimClass, Property, Schema, DEBUG, STATUS, VERBOSE

HERE = os.path.dirname(os.path.abspath(__file__))
CLOCK = datetime.datetime(2026, 1, 31, 12, 34, 56, tzinfo=datetime.timezone(datetime.timedelta(hours=1)))
IDENTITY = [("InstanceID", "string"), ("ElementName", "string"), ("MachineType", "string"),
            ("StatisticTime", "datetime")]
DELEGATE_LINES = ["Collecting delegates for class " + name for name in model.BASE_CLASSES]
INVALID = "Collector received an invalid collection request."
FAILED_READ = "Command sent to the BMC failed."


def identity():
    return [Property(name, kind, False) for name, kind in IDENTITY]


def register(name="Reg", **qualifiers):
    return Property(name, "uint8", True, qualifiers)


def served(machine_type="6203", count=1):
    return {"SupportedMachineTypes": [machine_type], "MaxInstanceCount": count}


def bases():
    """The root, the three base classes and the class of capture files."""
    capture = [Property(name, "datetime" if name == "MessageTimestamp" else "string", False)
               for name in random_case.DCAP_PROPERTIES]
    return ([CimClass("Root", None, {}, identity())] + [CimClass(name, "Root") for name in model.BASE_CLASSES]
            + [CimClass(model.DCAP_FILE, None, {}, capture)])


def run(classes, server, calls, timezone=0):
    full = {"machine_type": "6203", "local_time": CLOCK, **server}
    return model.run(Schema(bases() + classes), full, calls, timezone)


def texts(result, severity=None):
    return [text for level, text in result.trace if severity in (None, level)]


def after(result, line):
    """The line behind the first one that is, or begins with, the given text."""
    lines = texts(result)
    return lines[next(i for i, text in enumerate(lines) if text.startswith(line)) + 1]


class LifecycleTest(unittest.TestCase):

    def test_only_init_and_deinit_without_calls(self):
        self.assertEqual(run([], {}, []).trace,
                         [(DEBUG, "Initializing Engineering Information Collector"),
                          (DEBUG, "De-Initializing Engineering Information Collector")])

    def test_empty_lines_are_never_sent(self):
        log = model.Log()
        log.debug("")
        log.verbose("x")
        self.assertEqual(log.lines, [(VERBOSE, "x")])


class ValueTest(unittest.TestCase):

    def test_conversions_of_null(self):
        self.assertEqual((model.NULL.to_unsigned(32), model.NULL.to_string(), model.NULL.to_text()), (0, "", ""))

    def test_narrowing_wraps(self):
        self.assertEqual(model.int_value(65538).to_unsigned(16), 2)

    def test_number_in_text(self):
        self.assertEqual(model.string_value("4660").to_unsigned(32), 4660)

    def test_mismatches_throw_status_13(self):
        for convert in (lambda: model.string_value("none").to_unsigned(32), model.int_value(1).to_array,
                        model.array_value([]).to_string):
            with self.assertRaises(model.TvelException) as caught:
                convert()
            self.assertEqual(str(caught.exception), "Type mismatch (status 13).")

    def test_texts(self):
        self.assertEqual(model.value_of([1, 2, 255]).to_text(), "{1, 2, 255}")
        self.assertEqual(model.array_value([]).to_text(), "{}")
        self.assertEqual(model.datetime_value(2024, 12, 31, 23, 59, 58, 0).to_text(), "20241231235958.000000+000")
        self.assertEqual(model.datetime_value(1970, 1, 1, 6, 8, 56, -210).to_text(), "19700101060856.000000-210")

    def test_division_goes_toward_zero(self):
        self.assertEqual([model.quotient(n, 10) for n in (-19, -10, -1, 0, 9, 25)], [-1, -1, 0, 0, 0, 2])


class SchemaTest(unittest.TestCase):

    def setUp(self):
        self.schema = Schema([
            CimClass("A", None, {"Q": 1}, [register("One", Offset=1), register("Two", Offset=2)]),
            CimClass("C", "A"),
            CimClass("B", "C", {"q": 5}, [register("Three"), register("one", Offset=7)]),
            CimClass("D", "A")], ())

    def test_descendants_in_declaration_order(self):
        self.assertEqual([cls.name for cls in self.schema.descendants(self.schema.find("A"))], ["C", "B", "D"])

    def test_overriding_keeps_place_and_origin(self):
        found = [(one.origin, one.name) for one in self.schema.property_declarations(self.schema.find("B"))]
        self.assertEqual(found, [("A", "one"), ("A", "Two"), ("B", "Three")])
        declaration = self.schema.property_declarations(self.schema.find("b"))[0]
        self.assertEqual(declaration.qualifier("OFFSET"), model.int_value(7))
        self.assertIsNone(declaration.qualifier("MaxLen"))

    def test_class_qualifiers_are_inherited_under_their_flavor(self):
        self.assertEqual(self.schema.class_qualifier(self.schema.find("C"), "Q"), model.int_value(1))
        self.assertEqual(self.schema.class_qualifier(self.schema.find("B"), "Q"), model.int_value(5))
        restricted = Schema(self.schema.classes, ["Q"])
        self.assertIsNone(restricted.class_qualifier(restricted.find("C"), "Q"))


class DumpTest(unittest.TestCase):

    def test_last_is_inclusive(self):
        self.assertEqual(model.dump(b"\xff", 0), "\n255 \n")
        self.assertEqual(model.dump(b"\x01\x02\xff", 2), "\n1 2 255 \n")

    def test_eight_values_a_line(self):
        self.assertEqual(model.dump(bytes(9), 8), "\n0 0 0 0 0 0 0 0 \n0 \n")

    def test_257_values_of_a_command_buffer(self):
        self.assertEqual(model.dump(bytes(257), 256).count("0 "), 257)


class DispatchTest(unittest.TestCase):

    def test_no_classes(self):
        self.assertEqual(texts(run([], {}, [[]]))[1:-1], DELEGATE_LINES)

    def test_capture_files_end_the_request(self):
        other = CimClass("Other", None)
        lines = texts(run([other], {}, [[model.DCAP_FILE, "Other"]]))[4:-1]
        self.assertEqual(lines[:3], ["Entering collection for requested class KROSG_DCAPFile",
                                     INVALID + "KROSG_DCAPFile", "begin to collect KROSG_DCAPFile"])
        self.assertEqual(lines[-1], "Complete to collect KROSG_DCAPFile")
        self.assertFalse(any("Other" in line for line in lines))

    def test_classes_before_the_capture_files_are_served(self):
        lines = texts(run([CimClass("Other", None)], {}, [["Other", model.DCAP_FILE]]))
        self.assertEqual(lines[4:6], ["Entering collection for requested class Other", INVALID + "Other"])
        self.assertIn("begin to collect KROSG_DCAPFile", lines)

    def test_r8_class_by_substring_of_its_machine_types(self):
        for machine_type, collected in (("6101", True), ("610", True), ("6102", False)):
            cls = CimClass(model.VO_MEM_CTL, "Root", served("6101", 0))
            lines = texts(run([cls], {"machine_type": machine_type}, [[model.VO_MEM_CTL]]))[4:-1]
            self.assertEqual(lines[:2], ["Entering collection for requested class " + model.VO_MEM_CTL,
                                         "Requested class " + model.VO_MEM_CTL])
            self.assertEqual(lines[2:], ["Class supports 0 instances on this machine", "In buildCIMInstances.",
                                         "Completed buildCIMInstances."] if collected else [])

    def test_base_class_itself_yields_two_lines(self):
        lines = texts(run([], {}, [[model.MEM_CTL]]))[4:-1]
        self.assertEqual(lines, ["Entering collection for requested class " + model.MEM_CTL,
                                 "Collecting JFRErrorData."])

    def test_delegate_of_two_bases_goes_by_key_order(self):
        # The third base class derives from the second, so both find the same subclass; "L" comes before "M".
        classes = [CimClass("Root", None, {}, identity()), CimClass(model.PCI_BRIDGE, "Root"),
                   CimClass(model.MEM_CTL, "Root"),
                   CimClass(model.L3_CACHE, model.MEM_CTL, {"SupportedMachineTypes": ["none"]}),
                   CimClass("Sub", model.L3_CACHE, served())]
        server = {"machine_type": "6203", "dot": {"service_processor": [{"block": "00 18 0c 1f"}]}}
        result = model.run(Schema(classes), server, [["Sub"]])
        self.assertEqual(result.instances[0][1][0], ("InstanceID", "KROSG:%s:6203:0" % model.L3_CACHE))

    def test_missing_qualifier_of_an_r8_class_fails_the_call(self):
        result = run([CimClass(model.VO_MEM_CTL, "Root")], {}, [[model.VO_MEM_CTL], [model.MEM_CTL]])
        self.assertEqual([call.failure for call in result.calls], ["assertion", None])

    def test_missing_base_class_fails_the_call(self):
        result = model.run(Schema([CimClass("Other")]), {"machine_type": "1"}, [["Other"]])
        self.assertEqual(texts(result)[1:-1], DELEGATE_LINES[:1])
        self.assertEqual(result.calls[0].failure, "assertion")


class DelegationTest(unittest.TestCase):

    def delegate(self, machine_type, *subclasses):
        classes = bases() + [CimClass(name, model.PCI_BRIDGE, {"SupportedMachineTypes": types} if types else {})
                             for name, types in subclasses]
        host = model.Host(Schema(classes), {"machine_type": machine_type}, 0, ".")
        return model.Plugin(host).delegate_request(host.schema.find(model.PCI_BRIDGE), machine_type)

    def test_choices(self):
        self.assertEqual(self.delegate("6101"), "")
        self.assertEqual(self.delegate("6101", ("S1", ["1"]), ("S2", ["x", "6101"]), ("S3", ["6101"])), "S2")
        self.assertEqual(self.delegate("6102", ("S1", ["6101,6102"])), "S1")
        self.assertEqual(self.delegate("6101", ("S1", ["61015"])), "S1")
        self.assertEqual(self.delegate("", ("S1", ["x"]), ("S2", ["y"])), "S1")

    def test_missing_qualifier(self):
        with self.assertRaises(model.AssertionFailed):
            self.delegate("6101", ("S1", ["1"]), ("S2", None), ("S3", ["6101"]))
        self.assertEqual(self.delegate("6101", ("S1", ["6101"]), ("S2", None)), "S1")


class InstanceBuilderTest(unittest.TestCase):

    def build(self, *maps):
        host = model.Host(Schema([CimClass("C", None, {}, [Property("B"), Property("RegisterNumber")])]),
                          {"machine_type": "1"}, 0, ".")
        plugin = model.Plugin(host)
        plugin.current_class = host.schema.find("C")
        try:
            plugin.build_cim_instances(maps)
        except model.TvelException:
            host.log.debug("thrown")
        return host.log.lines[1:], host.instances

    def test_empty_maps_are_skipped_and_keys_are_ordered(self):
        lines, instances = self.build({}, {"RegisterNumber": model.int_value(5), "B": model.string_value("x")})
        self.assertEqual(lines, [(VERBOSE, "valueIt->first = B. valueIt->second = x."),
                                 (VERBOSE, "valueIt->first = RegisterNumber. valueIt->second = 5."),
                                 (DEBUG, "Completed buildCIMInstances.")])
        self.assertEqual(instances, [("C", [("B", "x"), ("RegisterNumber", 5)])])

    def test_null_values_leave_an_instance_without_properties(self):
        lines, instances = self.build({"B": model.NULL})
        self.assertEqual((lines, instances), ([(DEBUG, "Completed buildCIMInstances.")], [("C", [])]))

    def test_undeclared_property_drops_the_instance_but_not_earlier_ones(self):
        two, three = model.int_value(2), model.int_value(3)
        lines, instances = self.build({"B": model.int_value(1)}, {"B": two, "X": three})
        self.assertEqual(instances, [("C", [("B", 1)])])
        self.assertEqual(lines[-2:], [(VERBOSE, "valueIt->first = X. valueIt->second = 3."), (DEBUG, "thrown")])


def area(name="cpu_err", data="", **keys):
    return {"name": name, "data": data, **keys}


def capture(*nodes, faults=(), calls=1, **server):
    """A collection of capture files from nodes given as lists of storage areas."""
    tables = [{"storage_area": areas} for areas in nodes]
    return run([], {"bmc_node": tables, "fault": list(faults), **server}, [[model.DCAP_FILE]] * calls)


def raw_data(result):
    return [dict(properties)["ErrRawData"] for _, properties in result.instances]


class CaptureFileTest(unittest.TestCase):

    def test_no_node(self):
        line = "No eQT/BMC on the system. TORGA log is not available."
        result = capture(ipmi={"driver_present": False})
        self.assertEqual(result.trace.count((STATUS, line)), 3)
        self.assertNotIn("Exit ReadErrFFDC funtion", texts(result))

    def test_no_driver(self):
        result = capture([area()], ipmi={"driver_present": False})
        line = "IPMI driver is not installed on the system. TORGA log is not available."
        self.assertEqual(texts(result)[7:9], ["Enter ReadErrFFDC funtion", line])
        self.assertNotIn("Exit ReadErrFFDC funtion", texts(result))
        self.assertEqual(result.exchanges, [])

    def test_whole_trace_of_one_area(self):
        result = capture([area(data="0a ff 00 01 02 03 04 05 06 07 08")])
        frame = "01 20 2e 00 90 %s 00 00 00 39 30 00 "
        name = "63 70 75 5f 65 72 72 "
        handle = "01 00 00 00 "
        lines = texts(result)[7:28]
        self.assertEqual(lines, [
            "Enter ReadErrFFDC funtion",
            "The system has1 . Now reading Node0",
            "Enter OpenStorageArea funtion",
            "OpenStorageArea IPMI command data:OpenStorageArea IPMI command data:28bits\n"
            + frame % "13" + "01 01 " + "00 " * 7 + name,
            "Exit OpenStorageArea funtion",
            "Enter QueryStorageAreaSize funtion",
            "QueryStorageArea IPMI command data:QueryStorageAreaSize IPMI command data:20bits\n"
            + frame % "0b" + "06 " + name,
            "total storage area size:11\n",
            "Exit QueryStorageAreaSize funtion",
            "Enter ReadStorageArea funtion",
            "ReadStorageArea IPMI command data:" + frame % "0e" + "02 " + handle + "00 00 00 00 0a 00 ",
            "completeCode:0\n",
            "Response raw data size:10, loopoffset:0, raw data info:0a ff 00 01 02 03 04 05 06 07 ",
            "ReadStorageArea IPMI command data:" + frame % "0e" + "02 " + handle + "0a 00 00 00 01 00 ",
            "completeCode:0\n",
            "Response raw data size:1, loopoffset:1, raw data info:08 ",
            "returned smbioslen:11\n",
            "Exit ReadStorageArea funtion",
            "Enter CloseStorageArea funtion",
            "CloseStorageArea IPMI command data:" + frame % "08" + "05 " + handle + "00 " * 6,
            "close file successfully"])
        self.assertEqual(texts(result)[28:33], [
            "Exit ReadStorageArea funtion",
            "Enter AddErrFFDCinstance funtion",
            "Data added into KROSG_DCAPFile class:0a ff 00 01 02 03 04 05 06 07 08 ",
            "Exit AddErrFFDCinstance funtion",
            "Exit ReadErrFFDC funtion"])
        self.assertEqual(dict(result.instances[0][1]), {
            "FileName": "cpu_err", "ErrRawData": "0a ff 00 01 02 03 04 05 06 07 08 ",
            "MessageTimestamp": "20260131123456.000000+060", "SourceNode": "1",
            "CreationClassName": "KROSG_DCAPFile", "LogCreationClassName": "KROSG_DCAPFile",
            "LogName": "KROSG_DCAPFile", "RecordID": "0"})

    def reads(self, size, data="", **keys):
        """Offset and count of every read, and the number that the read returns."""
        result = capture([area(data=data, size=size)], **keys)
        asked = [text.split()[-6:-1] for text in texts(result) if text.startswith("ReadStorageArea IPMI")]
        returned = [int(text.split(":")[1]) for text in texts(result) if text.startswith("returned smbioslen:")]
        return [(int(one[0], 16), int(one[4], 16)) for one in asked], returned

    def test_chunks(self):
        self.assertEqual(self.reads(25), ([(0, 10), (10, 10), (20, 5)], [25]))
        self.assertEqual(self.reads(20), ([(0, 10), (10, 10)], [20]))
        self.assertEqual(self.reads(10), ([(0, 10)], [10]))
        self.assertEqual(self.reads(11), ([(0, 10), (10, 1)], [11]))
        for size in (0, 1, 9):
            self.assertEqual(self.reads(size), ([(0, 10)], [10]))

    def test_negative_size_reads_until_a_completion_code(self):
        sp = model.ServiceProcessor({"bmc_node": [{"storage_area": [area(data="01")]}],
                                     "fault": [{"on": "read", "nth": 4, "completion_code": 0xC3}]})
        out = bytearray(10)
        self.assertEqual(model.StorageCommands(model.Log(), sp, 0).read(-25, b"\1\0\0\0", out), 30)

    def test_negative_size_skips_the_node(self):
        result = capture([area(size=-1)], [area(data="07")])
        start = texts(result).index("total storage area size:-1\n")
        lines = texts(result)[start + 1:start + 8]
        self.assertEqual(lines[:2] + lines[3:], [
            "Exit QueryStorageAreaSize funtion", "Enter CloseStorageArea funtion", "close file successfully",
            "Exit ReadStorageArea funtion", "Unable to allocate memory for the storage area.",
            "The system has2 . Now reading Node1"])
        self.assertEqual([dict(one[1])["SourceNode"] for one in result.instances], ["2"])

    def test_answers_shorter_than_the_request_leave_zeros(self):
        # Three bytes answer the first chunk: 9 + 5 + 3 = 17 in all, 12 beyond the header, so 10 are copied.
        result = capture([area(data="01 02 03", size=25)])
        sizes = [text.split(",")[0] for text in texts(result) if text.startswith("Response raw")]
        self.assertEqual(sizes, ["Response raw data size:%d" % size for size in (10, 9, 5)])
        self.assertEqual(raw_data(result), ["01 02 03 " + "00 " * 22])

    def test_size_below_the_data(self):
        result = capture([area(data="01 02 03 04 05 06 07 08 09 0a 0b", size=3)])
        self.assertEqual(raw_data(result), ["01 02 03 04 05 06 07 08 09 0a "])

    def test_cut_answer(self):
        # Nine bytes in all: four are copied, from behind the data.
        result = capture([area(data="01 02")], faults=[{"on": "read", "truncate": 9}])
        self.assertIn("Response raw data size:4, loopoffset:0, raw data info:00 00 00 00 ", texts(result))
        self.assertEqual(raw_data(result), ["00 " * 10])
        result = capture([area(data="01 02")], faults=[{"on": "read", "truncate": 15}])
        self.assertEqual(raw_data(result), ["01 " + "00 " * 9])

    def test_failure_in_the_middle_keeps_what_was_read(self):
        result = capture([area(data="11 " * 25)], faults=[{"on": "read", "nth": 2, "completion_code": 0xC3}])
        self.assertIn("completeCode:c3\n", texts(result))
        self.assertIn("returned smbioslen:10\n", texts(result))
        self.assertEqual(raw_data(result), ["11 " * 10])

    def test_lost_read_leaves_the_command_as_completion_code(self):
        result = capture([area(data="11")], faults=[{"on": "read", "lost": True}])
        self.assertIn("completeCode:90\n", texts(result))
        self.assertEqual(raw_data(result), [""])
        self.assertIn("Data added into KROSG_DCAPFile class:", texts(result))

    def test_lost_close_is_no_success(self):
        result = capture([area(data="11")], faults=[{"on": "close", "lost": True}])
        self.assertNotIn("close file successfully", texts(result))
        self.assertEqual(len(result.instances), 1)

    def test_open_cut_before_the_handle(self):
        result = capture([area(data="11")], faults=[{"on": "open", "truncate": 12}])
        self.assertIn("completeCode:cb\n", texts(result))

    def test_failed_size_query_is_silent_and_leaves_the_area_open(self):
        result = capture([area(data="11")], faults=[{"on": "size", "completion_code": 0xFF}])
        self.assertNotIn("Enter CloseStorageArea funtion", texts(result))
        self.assertEqual(after(result, "QueryStorageArea IPMI"), "Exit ReadErrFFDC funtion")

    def test_second_node_without_the_area(self):
        result = capture([area(name=name) for name in model.CAPTURE_KEYS], [area("ioh_err"), area("zyn_err")])
        self.assertEqual(texts(result).count("Error when opening files. Exit."), 1)
        found = [tuple(dict(one[1])[name] for name in ("FileName", "SourceNode", "RecordID"))
                 for one in result.instances]
        self.assertEqual(found, [("cpu_err", "1", "0"), ("ioh_err", "1", "1"), ("ioh_err", "2", "2"),
                                 ("zyn_err", "1", "3"), ("zyn_err", "2", "4")])

    def test_record_numbers_go_on_from_call_to_call(self):
        result = capture([area()], calls=2)
        self.assertEqual([dict(one[1])["RecordID"] for one in result.instances], ["0", "1"])

    def test_long_name(self):
        # 30 characters: 25 travel, byte 5 counts all (30 + 12 = 0x2a, 30 + 4 = 0x22).
        sp = model.ServiceProcessor({"bmc_node": [{"storage_area": [area("a" * 25)]}]})
        log = model.Log()
        commands = model.StorageCommands(log, sp, 0)
        self.assertEqual(commands.open("a" * 30), b"\1\0\0\0")
        shown = log.lines[1][1].split("51bits\n")[1].split()
        self.assertEqual((shown[5], len(shown), shown[45:]), ("2a", 51, ["61"] + ["00"] * 5))
        self.assertEqual(commands.query_size("a" * 30), 0)
        shown = log.lines[4][1].split("43bits\n")[1].split()
        self.assertEqual((shown[5], len(shown), shown[37:]), ("22", 43, ["61"] + ["00"] * 5))

    def test_missing_property_drops_the_instance_and_keeps_the_number(self):
        classes = [CimClass("R", None)] + [CimClass(name, "R") for name in model.BASE_CLASSES]
        capture_class = CimClass(model.DCAP_FILE, None, {}, [Property("FileName", "string", False)])
        result = model.run(Schema(classes + [capture_class]),
                           {"machine_type": "1", "local_time": CLOCK, "bmc_node": [{"storage_area": [area()]}]},
                           [[model.DCAP_FILE]])
        self.assertEqual((result.instances, result.calls[0].failure), ([], "TVELException"))
        self.assertIn("close file successfully", texts(result))


def bmc(registers=(), **keys):
    return {"bmc_node": [{"register": list(registers), **keys}]}


VALUE = {"address": 0x00ABCDEF, "value": "01 02 03 04 05 06 07 08"}


def collect_r8(*properties, cls=model.VO_MEM_CTL, machine_type="6203", count=1, server=None, timezone=0, extra=()):
    one = CimClass(cls, extra[-1].name if extra else "Root", served(machine_type, count), list(properties))
    server = {**(bmc([VALUE]) if server is None else server), "machine_type": machine_type}
    return run([*extra, one], server, [[cls]], timezone)


def values_of(result, name="Reg"):
    return [dict(properties).get(name) for _, properties in result.instances]


class RegisterTransportTest(unittest.TestCase):

    def read(self, address, chip=0, raw=True, server=None, **fault):
        server = bmc([VALUE]) if server is None else server
        if fault:
            server["fault"] = [{"on": "register", **fault}]
        host = model.Host(Schema([]), {"machine_type": "1", **server}, 0, ".")
        out = bytearray(14)
        return model.IpmiRequest(host).get_data(chip, address, out, raw), bytes(out), host.log.lines

    def test_raw_form(self):
        result, out, _ = self.read(0xFFABCDEF)
        self.assertEqual((result, out), ((True, 14), bytes((1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0))))

    def test_labelled_form_takes_its_values_one_byte_late(self):
        listed = bmc([{**VALUE, "header": "a0 a1 a2 a3 a4 a5"}])
        _, out, _ = self.read(0xABCDEF, raw=False, server=listed)
        self.assertEqual(out, bytes((0xA4, 0xA5, 1)) + b" = " + bytes((2, 3, 4, 5, 6, 7, 8, 0)))

    def test_transcript(self):
        _, _, lines = self.read(0x12345678, chip=7)
        self.assertEqual(lines[0], (DEBUG, "Entered torgareg request."))
        severity, text = lines[1]
        zeros = "0 0 0 0 0 0 0 0 \n"
        self.assertEqual(severity, VERBOSE)
        # The address's top byte is lost: 0x34 0x56 0x78 are 52 86 120. The answer is 0xCB, 203, without data.
        sent = "\n1 32 58 0 98 4 0 0 \n0 7 52 86 120 0 0 0 \n" + zeros * 30 + "0 \n"
        answered = "\n1 32 58 0 203 0 0 0 \n0 0 0 0 0 0 0 0 \n" + zeros * 30 + "0 \n"
        self.assertEqual(text, "Contents of buffer to send (rspBuf):\n" + sent
                         + "command completed checking success...\n\nThe response length is 0"
                         + "\n\nContents of (rspBuf):\n" + answered + "Bad RC from ipmi cmd.")

    def test_thirteen_bytes_fail(self):
        result, out, lines = self.read(0xABCDEF, truncate=22)
        self.assertEqual((result, out), ((False, 13), bytes(14)))
        self.assertTrue(lines[1][1].endswith("Bad RC from ipmi cmd."))
        self.assertEqual(self.read(0xABCDEF, truncate=23)[0], (True, 14))

    def test_completion_code(self):
        self.assertEqual(self.read(0xABCDEF, completion_code=0xC1)[0], (False, 0))

    def test_lost(self):
        result, _, lines = self.read(0xABCDEF, lost=True)
        self.assertEqual(result, (False, 256))
        self.assertNotIn("completed", lines[1][1])

    def stamp(self, **fault):
        server = bmc(timestamp="12 34 56 78")
        server["fault"] = [{"on": "timestamp", **fault}] if fault else []
        host = model.Host(Schema([]), {"machine_type": "1", **server}, 0, ".")
        return model.IpmiRequest(host).get_time_stamp(), host.log.lines[1:]

    def test_timestamp(self):
        self.assertEqual(self.stamp(), ((True, b"\x12\x34\x56\x78", 4), [
            (VERBOSE, "Command completed checking success...\n\nThe response length is 4")]))
        self.assertEqual(self.stamp(truncate=12), ((False, None, 12), [
            (VERBOSE, "Command completed checking success...\n")]))
        self.assertEqual(self.stamp(truncate=13)[0][0], True)
        self.assertEqual(self.stamp(lost=True), ((False, None, 256), []))


class R8DecodingTest(unittest.TestCase):

    def test_eight_bytes_in_both_families(self):
        for machine_type in ("4411", "6203", ""):
            result = collect_r8(register(Offset=0xABCDEF, MaxLen=8), machine_type=machine_type)
            self.assertEqual(values_of(result), [[0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0]])

    def test_fold_of_the_eight_byte_family(self):
        result = collect_r8(register(Offset=[0xABCDEF], MaxLen=4), machine_type="4524")
        self.assertEqual(values_of(result), [[0xAB, 0xCD, 0xEF, 0x0C, 7, 6, 5, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF]])

    def test_fold_of_the_labelled_family(self):
        # Record: h4 h5 V0 " = " V1 .. V7 0; source[2] = V0 | source[6] = 1 | 2 = 3; [8] [7] [6] = 4 3 2.
        result = collect_r8(register(Offset=0xABCDEF, MaxLen=4))
        self.assertEqual(values_of(result), [[0xAB, 0xCD, 0xEF, 4, 3, 2, 3, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF]])

    def test_trace_of_one_register(self):
        result = collect_r8(register(Offset=0xABCDEF, MaxLen=8), machine_type="4411")
        lines = texts(result, DEBUG)
        start = lines.index("Current instance index 0")
        self.assertEqual(lines[start + 1:start + 8], [
            "Reg\n\t at 11259375 with length 8\nAbout to call the BMC.. \n1MachineType = 4411\n",
            "Entered torgareg request.",
            "Contents of registerData:\n\n1 2 3 4 5 6 7 8 \n0 0 0 0 0 0 0 \n",
            "Displaying messenger\n",
            "171 205 239 8 7 6 5 4 3 2 1 0 0 0 ",
            "Size of cimvalues 14",
            "Register data value {171, 205, 239, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}"])

    def test_two_addresses(self):
        listed = bmc([VALUE, {"address": 5, "value": "ff " * 8}])
        result = collect_r8(register(Offset=[0xABCDEF, 5], MaxLen=8), machine_type="4411", server=listed)
        lines = texts(result, DEBUG)
        first = " at 11259375 with length 8\nAbout to call the BMC.. \n2MachineType = 4411\n"
        second = " at 5 with length 8\nAbout to call the BMC.. \n2MachineType = 4411\n"
        self.assertIn("Reg\n\t" + first, lines)
        self.assertIn("Reg\n\t" + first + second, lines)
        self.assertIn("1 2 3 4 5 6 7 8 0 0 0 0 0 0 " + "255 " * 8 + "0 " * 6, lines)
        self.assertEqual(lines[-5:-1], ["Size of cimvalues 28", "Register data value ", "In buildCIMInstances.",
                                        "Completed buildCIMInstances."])
        self.assertEqual(result.instances, [])

    def test_two_addresses_of_which_one_answers(self):
        result = collect_r8(register(Offset=[0xABCDEF, 0x010203], MaxLen=8), machine_type="4411")
        self.assertEqual(values_of(result), [[1, 2, 3, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0]])

    def test_failed_read(self):
        result = collect_r8(register(Offset=1, MaxLen=8))
        lines = texts(result, DEBUG)
        start = lines.index(FAILED_READ)
        # The answer has no data, so the dump shows one byte; the line of no bytes is empty and dropped.
        self.assertEqual(lines[start + 1:start + 5],
                         ["Contents of registerData:\n\n0 \n", "Displaying messenger\n",
                          "Size of cimvalues 0", "Register data value "])

    def test_lost_read_dumps_the_whole_buffer(self):
        result = collect_r8(register(Offset=1, MaxLen=8), server={})
        self.assertIn("Contents of registerData:\n\n0 0 0 0 0 0 0 0 \n0 0 0 0 0 0 0 \n", texts(result))

    def test_chip_selector(self):
        listed = bmc([{**VALUE, "chip": 2}, VALUE])
        prop = register(Offset=0xABCDEF, MaxLen=8)
        for cls, found in ((model.VO_PCI_BRIDGE, ["1"]), (model.T4_PCI_BRIDGE, ["1"]),
                           (model.VO_MEM_CTL, ["0", "1", "2"]), (model.T4_MEM_CTL, ["0", "1", "2"])):
            result = collect_r8(prop, cls=cls, count=3, server=listed)
            self.assertEqual([one.split(":")[-1] for one in values_of(result, "InstanceID")], found)

    def test_inherited_from_the_superclass_only(self):
        extra = [CimClass("Grand", "Root", {}, [register("G", Offset=0xABCDEF, MaxLen=8)]),
                 CimClass("Parent", "Grand", {}, [register("P", Offset=0xABCDEF, MaxLen=8)])]
        override = register("G", Offset=0xABCDEF, MaxLen=8)
        result = collect_r8(register(Offset=0xABCDEF, MaxLen=8), override, extra=extra)
        self.assertEqual([name for name, _ in result.instances[0][1]],
                         ["InstanceID", "ElementName", "MachineType", "P", "Reg"])

    def test_text_that_is_no_number(self):
        prop = register("Later", Offset=["x"], MaxLen=8)
        result = collect_r8(register(Offset=["11259375"], MaxLen=8), prop)
        self.assertEqual(texts(result)[-4], "Encountered exception Type mismatch (status 13). during" + "\t" * 8
                         + "the collection of register data.")
        self.assertEqual((result.instances, result.calls[0].failure), ([], None))

    def test_missing_qualifiers_fail_the_call(self):
        for prop in (register(Offset=1), register(MaxLen=8)):
            result = collect_r8(prop)
            self.assertEqual((texts(result)[-2], result.calls[0].failure),
                             ("Current instance index 0", "assertion"))


class R8AssemblyTest(unittest.TestCase):

    def test_identity(self):
        prop = register(Offset=0xABCDEF, MaxLen=8)
        result = collect_r8(prop, cls=model.VO_PCI_BRIDGE, count=2, server={"unlisted_registers": "pattern",
                                                                          **bmc()})
        self.assertEqual([[value for _, value in one[1][:3]] for one in result.instances],
                         [["KROSG:KROSG_VO_PCIIOBRIDGE_StatisticData:6203:%d" % n, "PCI I/O bridge,%d" % n, "6203"]
                          for n in (0, 1)])
        result = collect_r8(prop, cls=model.T4_MEM_CTL)
        self.assertEqual(values_of(result, "ElementName"),
                         ["Memory controller with integrated L4 cache module,0"])

    def test_capture_time_is_read_twice(self):
        server = bmc([VALUE], timestamp="12 34 56 78")
        result = collect_r8(register(Offset=0xABCDEF, MaxLen=8), server=server, timezone=-3600)
        line = "TimeStamp Size and Value4\n\nDate and Time19700101060856.000000+060"
        self.assertEqual(texts(result, DEBUG).count(line), 2)
        self.assertEqual(values_of(result, "StatisticTime"), ["19700101060856.000000+060"])
        self.assertEqual([one.kind for one in result.exchanges], ["register", "timestamp", "timestamp"])

    def test_zone_offset(self):
        for seconds, text in ((0, "+000"), (28800, "-480"), (-20700, "+345"), (12600, "-210"), (90, "-001"),
                              (-90, "+001"), (30, "+000"), (-30, "+000")):
            server = bmc([VALUE], timestamp="00 00 00 00")
            result = collect_r8(register(Offset=0xABCDEF, MaxLen=8), server=server, timezone=seconds)
            self.assertEqual(values_of(result, "StatisticTime"), ["19700101000000.000000" + text])

    def test_failing_timestamps(self):
        line = "Unable to determine the timestamp associated with the collected register data"
        for nth, reads in ((1, 1), (2, 2)):
            server = bmc([VALUE], timestamp="00 00 ff ff")
            server["fault"] = [{"on": "timestamp", "nth": nth, "completion_code": 0xC3}]
            result = collect_r8(register(Offset=0xABCDEF, MaxLen=8), server=server)
            self.assertEqual([one.kind for one in result.exchanges], ["register"] + ["timestamp"] * reads)
            self.assertIn((DEBUG, line), result.trace)
            self.assertEqual([name for name, _ in result.instances[0][1]],
                             ["InstanceID", "ElementName", "MachineType", "Reg"])

    def test_instances_without_registers_are_left_out(self):
        result = collect_r8(count=2)
        self.assertEqual(texts(result)[-5:-1], ["Current instance index 0", "Current instance index 1",
                                                "In buildCIMInstances.", "Completed buildCIMInstances."])
        self.assertEqual((result.instances, result.exchanges), ([], []))

    def test_missing_instance_count(self):
        cls = CimClass(model.VO_MEM_CTL, "Root", {"SupportedMachineTypes": ["6203"]})
        self.assertEqual(run([cls], {}, [[model.VO_MEM_CTL]]).calls[0].failure, "assertion")

    def test_class_without_superclass(self):
        cls = CimClass(model.VO_MEM_CTL, None, served(), identity())
        self.assertEqual(run([cls], {}, [[model.VO_MEM_CTL]]).calls[0].failure, "assertion")


def block(header="00 18 0c 1f 17 3b 3a", second="00 " * 7, size=4096):
    """A register block whose byte n, outside of its headers, is n modulo 251."""
    data = bytearray(n % 251 for n in range(4096))
    data[0:7], data[2040:2047] = bytes.fromhex(header), bytes.fromhex(second)
    return data[:size].hex(" ")


def collect_jfr(*properties, blocks=(), count=1, base=model.PCI_BRIDGE, faults=(), extra=(), **server):
    sub = CimClass("Sub", extra[-1].name if extra else base, served(count=count), list(properties))
    server = {"dot": {"service_processor": [{"block": one} for one in blocks]}, "fault": list(faults), **server}
    return run([*extra, sub], server, [["Sub"]])


class JfrTest(unittest.TestCase):

    def record(self, start):
        values = [n % 251 for n in range(start, start + 11)]
        return values[:3] + [32, 61, 32] + values[3:]

    def test_first_copy(self):
        result = collect_jfr(register(Index=5, MaxLen=4), blocks=[block()], count=2)
        self.assertEqual(values_of(result, "StatisticTime"), ["20241231235958.000000+000"] * 2)
        # Instance 1: 7 + (5 + 256) * 8 = 2095.
        self.assertEqual(values_of(result), [self.record(47), self.record(2095)])
        self.assertEqual(values_of(result, "InstanceID"), ["KROSG:KROSG_PCIIOBRIDGE_StatisticData:6203:0"] * 2)
        self.assertEqual(values_of(result, "ElementName"), ["PCI I/O bridge,0"] * 2)

    def test_second_copy_reads_from_base_zero(self):
        result = collect_jfr(register(Index=5), blocks=[block("00 18 00 1f 17 3b 3a", "00 19 01 02 03 04 05")])
        self.assertEqual(values_of(result), [self.record(40)])
        self.assertEqual(values_of(result, "StatisticTime"), ["20250102030405.000000+000"])
        lines = texts(result, DEBUG)
        self.assertEqual(lines.count("TimeStamp rawdata: \n"), 2)
        self.assertIn("\n0 24 0 31 23 59 58 7 \n", lines)
        self.assertIn("\n0 25 1 2 3 4 5 %d \n" % (2047 % 251), lines)

    def test_trace_of_one_instance(self):
        result = collect_jfr(register(Index=0), blocks=[block(size=9)])
        lines = result.trace[8:]
        place = "propertyDecl = %s. classOrigin = %s. superClass = KROSG_PCIIOBRIDGE_StatisticData"
        value = "{7, 8, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48}"
        name = "KROSG:KROSG_PCIIOBRIDGE_StatisticData:6203:0"
        self.assertEqual(lines, [
            (DEBUG, "Calling error data"),
            (DEBUG, "TNOVRequestTorgaReg()::Is Dotcommand."),
            (DEBUG, "Class supports 1 instances on this machine"),
            (DEBUG, "fSPInstances = 1."),
            (VERBOSE, "sendCommand CmdStatus return 1with a returnDataLen of 9"),
            (DEBUG, "Returned Data:\n"),
            (DEBUG, "\n0 24 12 31 23 59 58 7 \n8 48 \n"),
            (VERBOSE, "In getCIMInstanceInfo()"),
            (VERBOSE, "chipDesc | instancdID = PCI I/O bridge,0 | " + name),
            (VERBOSE, "Completed getCIMInstanceInfo()"),
            (DEBUG, "TimeStamp rawdata: \n"),
            (DEBUG, "\n0 24 12 31 23 59 58 7 \n"),
            (VERBOSE, "In getChipsetErrorRegisterValues()"),
            *((VERBOSE, place % (one, "Root")) for one, _ in IDENTITY),
            (VERBOSE, place % ("Reg", "Sub")),
            (VERBOSE, "Completed getChipsetErrorRegisterValues()"),
            (DEBUG, "Total Instances collected are 1"),
            (DEBUG, "Building CIM instances."),
            (DEBUG, "In buildCIMInstances."),
            (VERBOSE, "valueIt->first = ElementName. valueIt->second = PCI I/O bridge,0."),
            (VERBOSE, "valueIt->first = InstanceID. valueIt->second = " + name + "."),
            (VERBOSE, "valueIt->first = MachineType. valueIt->second = 6203."),
            (VERBOSE, "valueIt->first = Reg. valueIt->second = " + value + "."),
            (VERBOSE, "valueIt->first = StatisticTime. valueIt->second = 20241231235958.000000+000."),
            (DEBUG, "Completed buildCIMInstances."),
            (DEBUG, "Normal exit from Engineering Information collector..."),
            (DEBUG, "De-Initializing Engineering Information Collector")])

    def test_full_block_shows_4097_values(self):
        result = collect_jfr(blocks=[block()], count=0)
        shown = after(result, "Returned Data:").split()
        self.assertEqual((len(shown), shown[-2:]), (4097, [str(4095 % 251), "0"]))
        self.assertEqual(result.instances, [])

    def test_one_byte_block_reads_as_fill(self):
        result = collect_jfr(register(Index=0), blocks=["05"])
        self.assertEqual(values_of(result, "StatisticTime"), ["20484848484848.000000+000"])
        self.assertEqual(values_of(result), [[48] * 3 + [32, 61, 32] + [48] * 8])

    def test_records_beyond_the_block_read_as_fill(self):
        # 7 + 511 * 8 = 4095: one byte is in the block; the next record and instance lie wholly behind it.
        result = collect_jfr(register(Index=511), blocks=[block()], count=2)
        self.assertEqual(values_of(result), [[4095 % 251, 48, 48, 32, 61, 32] + [48] * 8,
                                             [48, 48, 48, 32, 61, 32] + [48] * 8])

    def test_service_processors_and_instances(self):
        result = collect_jfr(register(Index=1), blocks=[block()] * 2, count=3)
        self.assertEqual(len(result.instances), 6)
        self.assertEqual([(one.kind, one.node) for one in result.exchanges], [("dot", 0), ("dot", 1)])

    def test_invalid_headers_drop_earlier_maps_only(self):
        bad = block("00 18 01 00 01 01 01", "00 18 01 00 01 01 01")
        result = collect_jfr(register(Index=1), blocks=[block(), bad, block()], count=2)
        self.assertEqual(len(result.instances), 2)
        line = "Unable to create chip instance due to caught exception No valid timestamp header (status 21)."
        self.assertEqual(texts(result).count(line), 1)
        self.assertIn("Total Instances collected are 2", texts(result))

    def test_index_that_is_no_number_goes_on_with_the_next_instance(self):
        result = collect_jfr(register(Index="x"), blocks=[block()], count=3)
        line = "Unable to create chip instance due to caught exception Type mismatch (status 13)."
        self.assertEqual((texts(result).count(line), result.instances), (3, []))

    def test_missing_index_fails_the_call_and_missing_max_len_does_not(self):
        self.assertEqual(collect_jfr(register(MaxLen=8), blocks=[block()]).calls[0].failure, "assertion")
        self.assertIsNone(collect_jfr(register(Index=8), blocks=[block()]).calls[0].failure)

    def test_skipped_names(self):
        skipped = [register("DateTimeOfCollection"), register("Reg", Index=0)]
        self.assertEqual(len(collect_jfr(*skipped, blocks=[block()]).instances), 1)

    def test_element_name_of_the_class_is_taken_for_a_register(self):
        classes = [CimClass("Root", None, {}, [one for one in identity() if one.name != "ElementName"])]
        classes += [CimClass(name, "Root") for name in model.BASE_CLASSES]
        classes.append(CimClass("Sub", model.MEM_CTL, served(), [Property("ElementName", "string", False)]))
        server = {"machine_type": "6203", "dot": {"service_processor": [{"block": block()}]}}
        self.assertEqual(model.run(Schema(classes), server, [["Sub"]]).calls[0].failure, "assertion")

    def test_grandparents_registers_are_not_read(self):
        extra = [CimClass("Middle", model.PCI_BRIDGE, {"SupportedMachineTypes": ["1"]}, [register("M", Index=1)]),
                 CimClass("Lower", "Middle", {"SupportedMachineTypes": ["1"]}, [register("L", Index=1)])]
        result = collect_jfr(register(Index=1), blocks=[block()], extra=extra)
        self.assertEqual([name for name, _ in result.instances[0][1]][4:], ["L", "Reg"])

    def test_no_dot_commands(self):
        sub = CimClass("Sub", model.PCI_BRIDGE, served())
        lines = texts(run([sub], {}, [["Sub"]]))
        self.assertEqual(lines[9:13], ["TNOVRequestTorgaReg()::Is not Dotcommand.",
                                       "Class supports 1 instances on this machine", "fSPInstances = 0.",
                                       "Total Instances collected are 0"])

    def test_failed_communication_check(self):
        result = collect_jfr(dot={"sp_comm": False, "service_processor": [{"block": ""}]})
        self.assertEqual(texts(result)[10:13], ["TNOVRequestTorgaReg()::SPComm check failed.",
                                                "Class supports 1 instances on this machine", "fSPInstances = 0."])

    def test_lost_and_empty_blocks(self):
        result = collect_jfr(register(Index=1), blocks=[block(), "", block()], faults=[{"on": "dot", "lost": True,
                                                                                     "nth": 1}])
        lines = texts(result)
        start = lines.index("fSPInstances = 3.")
        self.assertEqual(lines[start + 1:start + 6], [
            "sendCommand CmdStatus return 0with a returnDataLen of 0", model.NO_DATA_TEXT,
            "Unable to retrieve engineering information.",
            "sendCommand CmdStatus return 1with a returnDataLen of 0",
            "Unable to retrieve engineering information."])
        self.assertEqual(len(result.instances), 1)

    def test_cut_block(self):
        result = collect_jfr(register(Index=0), blocks=[block()], faults=[{"on": "dot", "truncate": 8}])
        self.assertEqual(after(result, "Returned Data:"), "\n0 24 12 31 23 59 58 7 \n48 \n")


class SimulatedServerTest(unittest.TestCase):

    def test_every_matching_fault_counts(self):
        faults = [{"on": "register", "nth": 2, "lost": True}, {"on": "ipmi", "nth": 2, "completion_code": 1},
                  {"on": "register", "nth": 3, "node": 0, "completion_code": 2}]
        sp = model.ServiceProcessor({**bmc([VALUE]), "fault": faults})
        applied = [sp.due_fault("register", 0) for _ in range(4)]
        self.assertEqual(applied, [{}, faults[0], faults[2], {}])

    def test_pattern(self):
        # (address >> 8 * (k % 3)) & 0xff, chip and 17 * k, exclusive-ored.
        self.assertEqual(model.ServiceProcessor.pattern(3, 0x010203),
                         bytes((0x00, 0x10, 0x20, 0x33, 0x45, 0x57, 0x66, 0x76)))

    def test_unknown_request(self):
        sp = model.ServiceProcessor(bmc())
        buffer = bytearray(256)
        buffer[2], buffer[4] = 0x06, 0x01
        self.assertEqual((sp.send_ipmi_command(0, buffer, 256), buffer[4]), ((True, 9), 0xC1))

    def test_errors_of_oem_requests_carry_the_manufacturer(self):
        sp = model.ServiceProcessor(bmc())
        buffer = model.StorageCommands.frame(0x02, 14)
        self.assertEqual(sp.send_ipmi_command(0, buffer, 256), (True, 12))
        self.assertEqual((buffer[4], buffer[5], bytes(buffer[9:14])), (0xCB, 3, b"\x39\x30\x00\x00\x00"))

    def test_no_driver_and_no_node(self):
        for server, node in (({**bmc([VALUE]), "ipmi": {"driver_present": False}}, 0), (bmc([VALUE]), 1)):
            sp = model.ServiceProcessor(server)
            buffer = bytearray(256)
            self.assertEqual(sp.send_ipmi_command(node, buffer, 256), (False, 256))
            self.assertFalse(sp.exchanges[0].possible)


class RandomCaseTest(unittest.TestCase):

    NEEDED = ["Adding class", "Calling error data", "Normal exit", "Requested class", INVALID, "begin to collect",
              "Unable to allocate memory", "IPMI driver is not installed", "No eQT/BMC", FAILED_READ,
              "Error when opening files", "completeCode:90", "completeCode:c", "close file successfully",
              "Unable to determine the timestamp", "TimeStamp Size and Value", "sendCommand CmdStatus return 0",
              "Unable to create chip instance due to caught exception No valid", "fSPInstances = 0.",
              "Unable to create chip instance due to caught exception Type", "Unable to retrieve engineering",
              "TNOVRequestTorgaReg()::SPComm", "TNOVRequestTorgaReg()::Is not", "Size of cimvalues 0",
              "Size of cimvalues 14", "Size of cimvalues 28", "Size of cimvalues 42", "Encountered exception"]

    def test_same_seed_same_case(self):
        one, two = random_case.generate(11), random_case.generate(11)
        self.assertEqual((one.mof, one.toml, one.files, one.arguments()),
                         (two.mof, two.toml, two.files, two.arguments()))

    def test_cases_run_and_reach_every_branch(self):
        missing, failures = set(self.NEEDED), set()
        with tempfile.TemporaryDirectory() as directory:
            for seed in range(600):
                case = random_case.generate(seed)
                case.write(directory)
                result = model.run(case.schema, tomllib.loads(case.toml), case.calls(), case.timezone, directory)
                lines = {text for _, text in result.trace}
                missing = {text for text in missing if not any(line.startswith(text) for line in lines)}
                failures.update(call.failure for call in result.calls)
        self.assertEqual(missing, set())
        self.assertEqual(failures, {None, "assertion", "TVELException"})

    def test_schemas_are_sound(self):
        """Superclasses come first; a property is new to its lineage, or says what it overrides, of one type."""
        for seed in range(300):
            schema, declared = random_case.generate(seed).schema, set()
            for cls in schema.classes:
                self.assertTrue(cls.superclass is None or cls.superclass in declared)
                declared.add(cls.name)
                above = {prop.name: prop.type for step in schema.lineage(cls)[:-1] for prop in step.properties}
                names = [prop.name for prop in cls.properties]
                self.assertEqual(len(names), len(set(names)))
                for prop in cls.properties:
                    self.assertEqual("Override" in prop.qualifiers, prop.name in above, (seed, cls.name, prop))
                    self.assertEqual(above.get(prop.name, prop.type), prop.type)

    def test_program_writes_a_case(self):
        with tempfile.TemporaryDirectory() as directory:
            done = subprocess.run([sys.executable, os.path.join(HERE, "random_case.py"), "--seed", "3",
                                   "--out", directory], capture_output=True, text=True, check=True)
            self.assertIn("velhost collect --schema", done.stdout)
            self.assertTrue(os.path.exists(os.path.join(directory, "case.toml")))


if __name__ == "__main__":
    unittest.main()
