"""Self tests of the reference model: capture files. The expected values are worked out by hand."""

import unittest

import collector_model as model
from collector_model import CimClass, Property, STATUS, Schema
from modeltest import CLOCK, after, area, capture, raw_data, texts


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
        """Offset and count of every read, and the number that the function returns."""
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
        # Nine bytes in all: four are copied, from after the data.
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
        # 30 characters: 25 are sent, but byte 5 counts all of them (30 + 12 = 0x2a, 30 + 4 = 0x22).
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


if __name__ == "__main__":
    unittest.main()
