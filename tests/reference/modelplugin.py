"""The plugin object of the collector model: dispatch, instance builder, capture files."""

from modelvalues import BASE_CLASSES, CAPTURE_KEYS, CLASS, DCAP_FILE, R8_CLASSES, deref, string_value
from modelhost import hex_pairs, quotient
from modelr8 import R8ErrorData
from modeljfr import JfrErrorData


class Plugin:
    """The plugin object: lifecycle, dispatch, delegation, instance builder and capture files."""

    def __init__(self, host):
        self.host = host
        self.log = host.log
        self.current_class = None
        self.machine_type = ""
        self.record_counter = 0

    def init(self):
        self.log.debug("Initializing Engineering Information Collector")
        self.record_counter = 0

    def de_init(self):
        self.log.debug("De-Initializing Engineering Information Collector")

    # -- dispatch ----------------------------------------------------------------------------------------

    def get_data(self, classes):
        self.machine_type = self.host.machine_type
        jfr_classes, delegates = self.find_delegates()
        for position, requested in enumerate(classes):
            self.host.sp.begin_turn(position)
            name = deref(requested, CLASS).name
            self.log.debug("Entering collection for requested class " + name)
            if name in jfr_classes:
                self.collect_jfr(requested, name, delegates)
                continue
            self.collect_r8(requested, name)
            if name == DCAP_FILE:
                self.collect_capture_files()
                return

    def find_delegates(self):
        """The list of JFR classes and the map of delegates."""
        jfr_classes, delegates = list(BASE_CLASSES), {}
        for base in BASE_CLASSES:
            self.log.debug("Collecting delegates for class " + base)
            delegate = self.delegate_request(self.host.schema.find(base), self.machine_type)
            if delegate:
                self.log.debug("Adding class " + delegate + " in Class list")
                jfr_classes.append(delegate)
                self.log.debug("Adding class " + delegate + " in child map")
                delegates.setdefault(base, delegate)
        return jfr_classes, delegates

    def collect_jfr(self, requested, name, delegates):
        self.log.debug("Collecting JFRErrorData.")
        self.current_class = None
        for base in sorted(delegates):
            if delegates[base] == name:
                self.current_class = self.host.schema.find(base)
                break
        if self.current_class is None:
            return
        self.log.debug("Calling error data")
        maps = JfrErrorData(self.host, self.current_class, requested).get_data()
        self.log.debug("Total Instances collected are %d" % len(maps))
        self.log.debug("Building CIM instances.")
        self.current_class = requested
        self.build_cim_instances(maps)
        self.log.debug("Normal exit from Engineering Information collector...")

    def collect_r8(self, requested, name):
        if name not in R8_CLASSES:
            self.log.debug("Collector received an invalid collection request." + name)
            return
        self.log.debug("Requested class " + name)
        supported = deref(self.host.class_qualifier(requested, "SupportedMachineTypes")).to_array()
        if not self.supports(supported, self.machine_type):
            return
        self.current_class = requested
        self.build_cim_instances(R8ErrorData(self.host, requested).get_data())

    def collect_capture_files(self):
        self.log.debug("begin to collect KROSG_DCAPFile")
        for key in CAPTURE_KEYS:
            self.read_err_ffdc(key)
        self.log.debug("Complete to collect KROSG_DCAPFile")

    # -- delegation --------------------------------------------------------------------------------------

    def delegate_request(self, base, machine_type):
        """The name of the first subclass that declares the machine type, or the empty string."""
        for subclass in self.host.schema.descendants(deref(base, CLASS)):
            supported = deref(self.host.class_qualifier(subclass, "SupportedMachineTypes")).to_array()
            if self.supports(supported, machine_type):
                return subclass.name
        return ""

    @staticmethod
    def supports(elements, machine_type):
        """Whether an element contains the machine type as a substring."""
        for element in elements:
            if machine_type in element.to_string():
                return True
        return False

    # -- instance builder --------------------------------------------------------------------------------

    def build_cim_instances(self, maps):
        self.log.debug("In buildCIMInstances.")
        for properties in maps:
            if properties:
                self.build_cim_instance(properties)
        self.log.debug("Completed buildCIMInstances.")

    def build_cim_instance(self, properties):
        instance = self.host.create_instance(self.current_class)
        for name in sorted(properties):
            value = properties[name]
            if value.is_null():
                continue
            self.log.verbose("valueIt->first = " + name + ". valueIt->second = " + value.to_text() + ".")
            instance.set(name, value)
        instance.commit(properties.place)

    # -- capture files -----------------------------------------------------------------------------------

    def read_err_ffdc(self, name):
        self.log.debug("Enter ReadErrFFDC funtion")
        nodes = self.host.sp.node_count()
        if nodes == 0:
            self.log.status("No eQT/BMC on the system. TORGA log is not available.")
            return
        if not self.host.sp.driver_present():
            self.log.debug("IPMI driver is not installed on the system. TORGA log is not available.")
            return
        for node in range(nodes):
            self.log.debug("The system has%d . Now reading Node%d" % (nodes, node))
            self.host.sp.about((node, CAPTURE_KEYS.index(name)))
            self.read_node_ffdc(name, StorageCommands(self.log, self.host.sp, node), node)
        self.log.debug("Exit ReadErrFFDC funtion")

    def read_node_ffdc(self, name, area, node):
        handle = area.open(name)
        if handle is None:
            self.log.debug("Error when opening files. Exit.")
            return
        size = area.query_size(name)
        if size is None:
            return
        if size < 0:
            area.close(handle)
            self.log.debug("Unable to allocate memory for the storage area.")
            return
        out = bytearray(max(size, 10))
        bytes_read = area.read(size, handle, out)
        area.close(handle)
        self.add_err_ffdc_instance(out, bytes_read, name, node)

    def add_err_ffdc_instance(self, data, length, name, node):
        timestamp = self.host.clock()
        self.log.debug("Enter AddErrFFDCinstance funtion")
        cls = self.host.schema.find(DCAP_FILE)
        raw = hex_pairs(data[:length]) if length > 0 else ""
        self.log.debug("Data added into KROSG_DCAPFile class:" + raw)
        instance = self.host.create_instance(cls)
        instance.set("FileName", string_value(name))
        instance.set("ErrRawData", string_value(raw))
        instance.set("MessageTimestamp", timestamp)
        instance.set("SourceNode", string_value("%d" % (node + 1)))
        instance.set("CreationClassName", string_value(DCAP_FILE))
        instance.set("LogCreationClassName", string_value(DCAP_FILE))
        instance.set("LogName", string_value(DCAP_FILE))
        instance.set("RecordID", string_value("%d" % self.record_counter))
        self.record_counter += 1
        instance.commit((node, CAPTURE_KEYS.index(name)))
        self.log.debug("Exit AddErrFFDCinstance funtion")


class StorageCommands:
    """The storage-area requests to one BMC node."""

    def __init__(self, log, sp, node):
        self.log = log
        self.sp = sp
        self.node = node

    @staticmethod
    def frame(sub_command, count):
        """A zero-filled command buffer with the fields common to all four requests."""
        buffer = bytearray(256)
        buffer[0:6] = bytes((0x01, 0x20, 0x2E, 0x00, 0x90, count & 0xFF))
        buffer[9:13] = bytes((0x39, 0x30, 0x00, sub_command))
        return buffer

    @staticmethod
    def put_name(buffer, place, name):
        """At most 25 characters of the name, padded with zeros."""
        text = name.encode("latin-1")[:25]
        buffer[place:place + 25] = text + bytes(25 - len(text))

    def send(self, buffer):
        return self.sp.send_ipmi_command(self.node, buffer, 256)

    def open(self, name):
        """Returns the four handle bytes, or None."""
        self.log.debug("Enter OpenStorageArea funtion")
        buffer = self.frame(0x01, len(name) + 12)
        buffer[13] = 0x01
        self.put_name(buffer, 21, name)
        shown = len(name) + 21
        prefix = "OpenStorageArea IPMI command data:"
        self.log.debug(prefix + prefix + "%dbits\n" % shown + hex_pairs(buffer[:shown]))
        ok, _ = self.send(buffer)
        if not ok or buffer[4] != 0:
            return None
        self.log.debug("Exit OpenStorageArea funtion")
        return bytes(buffer[12:16])

    def query_size(self, name):
        """Returns the size reported by the BMC, or None."""
        self.log.debug("Enter QueryStorageAreaSize funtion")
        buffer = self.frame(0x06, len(name) + 4)
        self.put_name(buffer, 13, name)
        shown = len(name) + 13
        self.log.debug("QueryStorageArea IPMI command data:" + "QueryStorageAreaSize IPMI command data:"
                       + "%dbits\n" % shown + hex_pairs(buffer[:shown]))
        ok, _ = self.send(buffer)
        if not ok or buffer[4] != 0:
            return None
        size = int.from_bytes(buffer[12:16], "little", signed=True)
        self.log.debug("total storage area size:%d\n" % size)
        self.log.debug("Exit QueryStorageAreaSize funtion")
        return size

    def read(self, size, handle, out):
        """Reads in chunks into out; returns the total number of bytes requested."""
        self.log.debug("Enter ReadStorageArea funtion")
        full = quotient(size, 10)
        rest = size - full * 10
        offset, count, chunk = 0, 0, 10
        while True:
            data = self.read_chunk(handle, offset, chunk, count)
            if data is None:
                break
            out[offset:offset + len(data)] = data
            offset += chunk
            count += 1
            if count == full:
                if rest == 0:
                    break
                chunk = rest
            elif full % (1 << 32) < count:
                break
        self.log.debug("returned smbioslen:%d\n" % offset)
        self.log.debug("Exit ReadStorageArea funtion")
        return offset

    def read_chunk(self, handle, offset, chunk, count):
        """One read; returns the bytes to keep, or None after a completion code."""
        buffer = self.frame(0x02, 0x0E)
        buffer[13:17] = handle
        buffer[17:21] = offset.to_bytes(4, "little")
        buffer[21:23] = bytes((chunk, 0x00))
        self.log.debug("ReadStorageArea IPMI command data:" + hex_pairs(buffer[:23]))
        _, length = self.send(buffer)
        self.log.debug("completeCode:%x\n" % buffer[4])
        if buffer[4] != 0:
            return None
        copied = max(min(length - 5, chunk), 0)
        data = buffer[14:14 + copied]
        self.log.debug("Response raw data size:%d, loopoffset:%d, raw data info:" % (copied, count)
                       + hex_pairs(data))
        return data

    def close(self, handle):
        self.log.debug("Enter CloseStorageArea funtion")
        buffer = self.frame(0x05, 0x08)
        buffer[13:17] = handle
        self.log.debug("CloseStorageArea IPMI command data:" + hex_pairs(buffer[:23]))
        self.send(buffer)
        if buffer[4] == 0:
            self.log.debug("close file successfully")
        self.log.debug("Exit ReadStorageArea funtion")
