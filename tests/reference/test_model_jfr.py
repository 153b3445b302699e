"""Self tests of the reference model: register blocks, and the simulated server. The expected values are worked out by hand."""

import unittest

import collector_model as model
from collector_model import CimClass, DEBUG, Property, Schema, VERBOSE
from modeltest import IDENTITY, VALUE, after, bmc, identity, register, run, served, texts, values_of


def block(header="00 18 0c 1f 17 3b 3a", second="00 " * 7, size=4096):
    """A register block whose byte n, outside its headers, is n modulo 251."""
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
        # 7 + 511 * 8 = 4095: one byte is inside the block; the next record and instance are entirely beyond
        # its end.
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
            self.assertFalse(sp.exchanges[0].ok)


if __name__ == "__main__":
    unittest.main()
