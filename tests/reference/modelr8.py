"""The R8 register collector of the collector model."""

from modelvalues import (CLASS, EIGHT_BYTE_FAMILY, NULL, PCI_BRIDGE_DESC, R8_SKIPPED, T4_MEM_CTL, T4_PCI_BRIDGE, TABS,
                         TvelException, VO_MEM_CTL, VO_MEM_CTL_DESC, VO_PCI_BRIDGE, array_value, datetime_value,
                         deref, int_value, string_value)
from modelhost import PlacedMap, dump, quotient


class IpmiRequest:
    """The register and timestamp requests to BMC node 0."""

    def __init__(self, host):
        self.log = host.log
        self.sp = host.sp

    def get_data(self, chip, address, out, raw):
        """Reads one register into out; returns (ok, length)."""
        self.log.debug("Entered torgareg request.")
        buffer = bytearray(256)
        buffer[0:9] = bytes((0x01, 0x20, 0x3A, 0x00, 0x62, 0x04, 0, 0, 0))
        buffer[9:13] = bytes((chip, address >> 16 & 0xFF, address >> 8 & 0xFF, address & 0xFF))
        transcript = "Contents of buffer to send (rspBuf):\n" + dump(buffer + b"\0", 256)
        ok, length = self.sp.send_ipmi_command(0, buffer, 256)
        if ok:
            transcript += "command completed checking success...\n"
            length = buffer[5]
            transcript += "\nThe response length is %d" % length
            transcript += "\n\nContents of (rspBuf):\n" + dump(buffer + b"\0", 256)
            if length <= 13 or buffer[4] != 0:
                transcript += "Bad RC from ipmi cmd."
                ok = False
            else:
                self.copy_payload(buffer, out, raw)
        self.log.verbose(transcript)
        return ok, length & 0xFFFF

    @staticmethod
    def copy_payload(buffer, out, raw):
        """Copies the eight value bytes, or the labelled record, whose value is taken one byte late."""
        if raw:
            out[0:8] = buffer[15:23]
        else:
            out[0:3] = buffer[13:16]
            out[3:6] = b" = "
            out[6:14] = buffer[16:24]

    def get_time_stamp(self):
        """Reads the capture time; returns (ok, its four bytes, length)."""
        self.log.debug("Entered get time stamp request")
        buffer = bytearray(256)
        buffer[0:5] = bytes((0x01, 0x20, 0x3A, 0x00, 0x6F))
        out, transcript = None, ""
        ok, length = self.sp.send_ipmi_command(0, buffer, 256)
        if ok:
            transcript += "Command completed checking success...\n"
            if length <= 12 or buffer[4] != 0:
                ok = False
            else:
                length = buffer[5]
                transcript += "\nThe response length is %d" % length
                out = bytes(buffer[9:13])
        self.log.verbose(transcript)
        return ok, out, length & 0xFFFF


class R8ErrorData:
    """The collector of the R8 chipset classes."""

    def __init__(self, host, cls):
        self.host = host
        self.log = host.log
        self.cls = cls
        self.transport = IpmiRequest(host)

    # -- instances ---------------------------------------------------------------------------------------

    def get_data(self):
        result = []
        try:
            self.collect(result)
        except TvelException as error:
            self.log.debug("Encountered exception %s during%sthe collection of register data." % (error, TABS))
        return result

    def collect(self, result):
        count = deref(self.host.class_qualifier(self.cls, "MaxInstanceCount")).to_unsigned(16)
        self.log.debug("Class supports %d instances on this machine" % count)
        description = VO_MEM_CTL_DESC if self.cls.name in (VO_MEM_CTL, T4_MEM_CTL) else PCI_BRIDGE_DESC
        for index in range(count):
            self.log.debug("Current instance index %d" % index)
            result.append(self.get_instance_data("%s,%d" % (description, index), index))

    def get_instance_data(self, element_name, index):
        properties = PlacedMap(self.get_register_values(index), (0, index))
        if not properties:
            return properties
        machine_type = self.host.machine_type
        instance_id = "KROSG:%s:%s:%d" % (self.cls.name, machine_type, index)
        properties.setdefault("InstanceID", string_value(instance_id))
        properties.setdefault("ElementName", string_value(element_name))
        properties.setdefault("MachineType", string_value(machine_type))
        self.host.sp.about((0, index), "StatisticTime")
        if not self.get_time_stamp_value().is_null():
            properties["StatisticTime"] = self.get_time_stamp_value()
        return properties

    def get_time_stamp_value(self):
        ok, raw, length = self.transport.get_time_stamp()
        if not ok:
            self.log.debug("Unable to determine the timestamp associated with the collected register data")
            return NULL
        transcript = "TimeStamp Size and Value%d\n" % length
        seconds = raw[2] << 8 | raw[3]  # always within the first day of 1970
        minutes_east = -quotient(self.host.timezone, 60)
        result = datetime_value(1970, 1, 1, seconds // 3600, seconds // 60 % 60, seconds % 60, minutes_east)
        transcript += "\nDate and Time" + result.to_text()
        self.log.debug(transcript)
        return result

    # -- registers ---------------------------------------------------------------------------------------

    def get_register_values(self, index):
        values = {}
        for declaration in self.host.schema.property_declarations(self.cls):
            superclass = deref(self.host.schema.parent(self.cls), CLASS).name
            if declaration.origin not in (self.cls.name, superclass):
                continue
            if declaration.name in R8_SKIPPED:
                continue
            value = self.get_register_data(declaration, index)
            if not value.is_null():
                values.setdefault(declaration.name, value)
        return values

    def eight_byte_family(self):
        return self.host.machine_type in EIGHT_BYTE_FAMILY

    def chip_selector(self, index):
        return index + 1 & 0xFF if self.cls.name in (VO_PCI_BRIDGE, T4_PCI_BRIDGE) else 0

    def get_register_data(self, declaration, index):
        chip = self.chip_selector(index)
        offset = deref(declaration.qualifier("Offset"))
        addresses = offset.to_array() if offset.is_array() else [offset]
        mode = 4 if deref(declaration.qualifier("MaxLen")).to_unsigned(32) == 4 else 0
        self.host.sp.about((0, index), declaration.name)
        data, address = self.read_registers(declaration.name, addresses, chip)
        data = self.convert_to_big_endian(data, address, mode)
        self.log.debug("Displaying messenger\n")
        self.log.debug("".join("%d " % byte for byte in data))
        result = array_value(int_value(byte) for byte in data) if len(data) == 14 else NULL
        self.log.debug("Size of cimvalues %d" % len(data))
        self.log.debug("Register data value " + result.to_text())
        return result

    def read_registers(self, name, addresses, chip):
        """Returns all bytes read and the last address; the transcript grows with each address."""
        data, address = b"", 0
        raw = self.eight_byte_family()
        transcript = name + "\n\t"
        for element in addresses:
            address = element.to_unsigned(32)
            buffer = bytearray(14)
            transcript += " at %d with length %d\n" % (address, 8 if raw else 14)
            transcript += "About to call the BMC.. \n%d" % len(addresses)
            transcript += "MachineType = " + self.host.machine_type + "\n"
            self.log.debug(transcript)
            ok, length = self.transport.get_data(chip, address, buffer, raw)
            if ok:
                data += buffer
            else:
                self.log.debug("Command sent to the BMC failed.")
            self.log.debug("Contents of registerData:\n" + dump(buffer + b"\0", min(length, 14)))
        return data, address

    def convert_to_big_endian(self, data, address, mode):
        if mode > 4 or len(data) != 14:
            return data
        source = bytearray(data)
        if mode == 4:
            for i in range(4):
                source[i] |= source[i + 4]
        target = bytearray(14)
        target[0:3] = bytes((address >> 16 & 0xFF, address >> 8 & 0xFF, address & 0xFF))
        if self.eight_byte_family():
            for k in range(3, 11 - mode):
                target[k] = source[7 - mode - (k - 3)]
        else:
            n = 10 - mode
            for k in range(3, n):
                target[k] = source[12 - mode - (k - 3)]
            target[n] = source[2]
        if mode == 4:
            target[10:14] = bytes((0xEF, 0xFE, 0xFE, 0xEF))
        return bytes(target)
