"""Self tests of the reference model: the plugin object, dispatch and instances. The expected values are worked out by hand."""

import unittest

import collector_model as model
from collector_model import CimClass, DEBUG, Property, Schema, VERBOSE
from modeltest import DELEGATE_LINES, INVALID, bases, identity, register, run, served, texts


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
        host = model.Host(Schema([CimClass("C", None, {}, [Property("B", "string", False),
                                                             Property("RegisterNumber", "uint32", False)])]),
                          {"machine_type": "1"}, 0, ".")
        plugin = model.Plugin(host)
        plugin.current_class = host.schema.find("C")
        try:
            plugin.build_cim_instances([model.PlacedMap(one, (0, 0)) for one in maps])
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


if __name__ == "__main__":
    unittest.main()
