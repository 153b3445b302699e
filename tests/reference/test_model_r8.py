"""Self tests of the reference model: registers over IPMI. The expected values are worked out by hand."""

import unittest

import collector_model as model
from collector_model import CimClass, DEBUG, Schema, VERBOSE
from modeltest import FAILED_READ, VALUE, bmc, collect_r8, identity, register, run, served, texts, values_of


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
        # The top byte of the address is lost: 0x34 0x56 0x78 are 52 86 120. The answer is 0xCB = 203, without
        # data.
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
        # The answer has no data, so the dump shows one byte; the line with the bytes is empty and dropped.
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


if __name__ == "__main__":
    unittest.main()
