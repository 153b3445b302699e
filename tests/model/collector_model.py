"""Reference model of the collector plugin, with its own simulated service processor.

run() takes a schema, a server (a server file as tomllib parses it), a list of GetData calls and the local
time zone, and gives back what a host observes from the loading of the library to its unloading: the trace,
the committed instances, how each call ended, and the exchanges with the service processor.

The routines are written step by step in the order in which the collector works, one routine for each of its
operations, so that each can be compared with the operation that it models.
"""

import os
from dataclasses import dataclass, field

# Severities of the host's core logger.
ERROR, WARNING, STATUS, DEBUG, VERBOSE = range(5)

# Classes, properties and chip descriptions.
PCI_BRIDGE = "KROSG_PCIIOBRIDGE_StatisticData"
MEM_CTL = "KROSG_MEMCTL_StatisticData"
L3_CACHE = "KROSG_L3Cache_StatisticData"
VO_MEM_CTL = "KROSG_VO_MEMCTL_StatisticData"
VO_PCI_BRIDGE = "KROSG_VO_PCIIOBRIDGE_StatisticData"
T4_MEM_CTL = "KROSG_T4_MEMCTL_StatisticData"
T4_PCI_BRIDGE = "KROSG_T4_PCIIOBRIDGE_StatisticData"
DCAP_FILE = "KROSG_DCAPFile"

BASE_CLASSES = [PCI_BRIDGE, MEM_CTL, L3_CACHE]
R8_CLASSES = [T4_MEM_CTL, T4_PCI_BRIDGE, VO_MEM_CTL, VO_PCI_BRIDGE]
CAPTURE_KEYS = ["cpu_err", "ioh_err", "zyn_err"]

PCI_BRIDGE_DESC = "PCI I/O bridge"
MEM_CTL_DESC = "Memory and I/O controller"
VO_MEM_CTL_DESC = "Memory controller with integrated L4 cache module"
L3_CACHE_DESC = "Integrated L3 cache module"

R8_SKIPPED = ("MachineType", "DateTimeOfCollection", "StatisticTime", "InstanceID", "ElementName")
JFR_SKIPPED = ("MachineType", "DateTimeOfCollection", "StatisticTime", "InstanceID")
EIGHT_BYTE_FAMILY = ("4411", "4414", "4523", "4524")

TABS = "\t" * 8
NO_DATA_TEXT = "Unable to communicate with system management hardware. Could not collect register data."


# ---------------------------------------------------------------------------------------------------------
# Failures of the host

class AssertionFailed(Exception):
    """A null host object was dereferenced; no collector catches this."""


class TvelException(Exception):
    """The host's exception; collectors catch it around their instance loops."""

    TEXTS = {13: "Type mismatch (status 13).", 21: "No valid timestamp header (status 21)."}

    def __init__(self, status):
        super().__init__(self.TEXTS.get(status, "status %d" % status))
        self.status = status


def deref(pointer):
    """Dereferences a host object."""
    if pointer is None:
        raise AssertionFailed("px != 0")
    return pointer


# ---------------------------------------------------------------------------------------------------------
# Values

@dataclass(frozen=True)
class Value:
    """A CIM value: kind is null, int, string, datetime or array (data: a tuple of values)."""

    kind: str = "null"
    data: object = None

    def is_null(self):
        return self.kind == "null"

    def is_array(self):
        return self.kind == "array"

    def to_text(self):
        """The text form with radix 10."""
        if self.kind == "null":
            return ""
        if self.kind == "array":
            return "{" + ", ".join(element.to_text() for element in self.data) + "}"
        return str(self.data)

    def to_string(self):
        """The conversion to a string."""
        if self.kind == "array":
            raise TvelException(13)
        return self.to_text()

    def to_unsigned(self, bits):
        """The conversion to an unsigned number, which wraps."""
        if self.kind == "null":
            return 0
        if self.kind == "int":
            return self.data % (1 << bits)
        if self.kind == "string" and self.data.isascii() and self.data.isdigit():
            return int(self.data) % (1 << bits)
        raise TvelException(13)

    def to_array(self):
        """The conversion to the elements of an array value."""
        if self.kind != "array":
            raise TvelException(13)
        return list(self.data)

    def plain(self):
        """The value as the JSON output shows it."""
        if self.kind == "array":
            return [element.plain() for element in self.data]
        return self.data


NULL = Value()


def string_value(text):
    return Value("string", text)


def int_value(number):
    return Value("int", number)


def array_value(values):
    return Value("array", tuple(values))


def datetime_value(year, month, day, hour, minute, second, offset):
    """A datetime in its 25 characters; the fields are taken as they come, also implausible ones."""
    sign = "-" if offset < 0 else "+"
    return Value("datetime", "%04d%02d%02d%02d%02d%02d.000000%s%03d"
                 % (year, month, day, hour, minute, second, sign, abs(offset)))


def value_of(plain):
    """The value of a qualifier given as a plain Python object."""
    if plain is None:
        return NULL
    if isinstance(plain, (list, tuple)):
        return array_value(value_of(element) for element in plain)
    return string_value(plain) if isinstance(plain, str) else int_value(plain)


# ---------------------------------------------------------------------------------------------------------
# Schema

@dataclass
class Property:
    """A property declaration; qualifiers maps a qualifier's name to a plain Python value."""

    name: str
    type: str = "uint8"
    is_array: bool = True
    qualifiers: dict = field(default_factory=dict)


@dataclass
class CimClass:
    """A class declaration with the properties declared in it."""

    name: str
    superclass: str = None
    qualifiers: dict = field(default_factory=dict)
    properties: list = field(default_factory=list)


@dataclass
class PropertyDeclaration:
    """What the property enumeration of a class delivers."""

    name: str
    origin: str
    qualifiers: dict

    def qualifier(self, name):
        return find_qualifier(self.qualifiers, name)


def find_qualifier(qualifiers, name):
    """The value of the named qualifier, or None (the empty pointer)."""
    for key, plain in qualifiers.items():
        if key.lower() == name.lower():
            return value_of(plain)
    return None


class Schema:
    """Classes in declaration order; restricted holds the qualifiers that subclasses do not inherit."""

    def __init__(self, classes, restricted=()):
        self.classes = list(classes)
        self.restricted = {name.lower() for name in restricted}
        self.by_name = {cls.name.lower(): cls for cls in self.classes}

    def find(self, name):
        return self.by_name.get(name.lower())

    def parent(self, cls):
        return self.find(cls.superclass) if cls.superclass else None

    def lineage(self, cls):
        """The class and its ancestors, the root class first."""
        line = []
        while cls is not None:
            line.insert(0, cls)
            cls = self.parent(cls)
        return line

    def descendants(self, cls):
        """All descendants, in declaration order."""
        return [other for other in self.classes
                if other is not cls and any(step is cls for step in self.lineage(other))]

    def class_qualifier(self, cls, name):
        """The class's own qualifier, else one inherited under its flavor, else None."""
        own = find_qualifier(cls.qualifiers, name)
        parent = self.parent(cls)
        if own is not None or parent is None or name.lower() in self.restricted:
            return own
        return self.class_qualifier(parent, name)

    def property_declarations(self, cls):
        """Inherited properties first; an overriding one keeps place and origin of the first declaration."""
        found = {}
        for step in self.lineage(cls):
            for prop in step.properties:
                first = found.get(prop.name.lower())
                origin = first.origin if first else step.name
                found[prop.name.lower()] = PropertyDeclaration(prop.name, origin, prop.qualifiers)
        return list(found.values())


# ---------------------------------------------------------------------------------------------------------
# Simulated service processor

@dataclass
class Exchange:
    """One call of the service-processor library; possible is False where there is no node or no driver."""

    kind: str
    node: int
    ok: bool
    completion_code: int
    possible: bool = True

    def failed(self):
        return not self.ok or self.completion_code != 0


class Fault:
    """One fault of the server file, with its count of matching exchanges."""

    def __init__(self, table):
        self.table = table
        self.seen = 0

    def matches(self, kind, node):
        on = self.table["on"]
        if on != kind and not (on == "ipmi" and kind != "dot"):
            return False
        return "node" not in self.table or self.table["node"] == node

    def counts(self, kind, node):
        """Counts the exchange if it matches; true if the fault is due for it."""
        if not self.matches(kind, node):
            return False
        self.seen += 1
        return "nth" not in self.table or self.table["nth"] == self.seen


class ServiceProcessor:
    """The simulated server behind the service-processor library."""

    MANUFACTURER = bytes((0x39, 0x30, 0x00))
    STORAGE_KINDS = {0x01: "open", 0x06: "size", 0x02: "read", 0x05: "close"}

    def __init__(self, server, directory="."):
        self.server = server
        self.directory = directory
        self.nodes = server.get("bmc_node", [])
        self.faults = [Fault(table) for table in server.get("fault", [])]
        self.exchanges = []

    # -- what the library reports ------------------------------------------------------------------------

    def node_count(self):
        return len(self.nodes)

    def driver_present(self):
        return self.server.get("ipmi", {}).get("driver_present", True)

    def is_dot_command(self):
        return "dot" in self.server

    def check_sp_comm(self):
        return self.server["dot"].get("sp_comm", True)

    def discover_sps(self):
        return len(self.server["dot"].get("service_processor", []))

    # -- exchanges ---------------------------------------------------------------------------------------

    def send_ipmi_command(self, node, buffer, length):
        """Answers the request in the 256-byte buffer, in place; returns (ok, length)."""
        kind = self.kind_of(buffer)
        if not self.driver_present() or node >= self.node_count():
            self.exchanges.append(Exchange(kind, node, False, 0, possible=False))
            return False, length
        fault = self.due_fault(kind, node)
        if fault.get("lost"):
            self.exchanges.append(Exchange(kind, node, False, 0))
            return False, length
        code, data = self.ipmi_answer(kind, self.nodes[node], buffer, fault)
        if "truncate" in fault:
            data = data[:fault["truncate"] - 9]
        self.exchanges.append(Exchange(kind, node, True, code))
        buffer[4], buffer[5] = code, len(data)
        buffer[9:256] = data + bytes(256 - 9 - len(data))
        return True, 9 + len(data)

    def send_dot_command(self, index):
        """Answers the register-block command; returns (ok, block), the block None where there was no answer."""
        fault = self.due_fault("dot", index)
        ok = not fault.get("lost")
        self.exchanges.append(Exchange("dot", index, ok, 0))
        if not ok:
            return False, None
        block = self.bytes_of(self.server["dot"]["service_processor"][index], "block")
        return True, block[:fault["truncate"]] if "truncate" in fault else block

    def due_fault(self, kind, node):
        """Every matching fault counts the exchange; the first that is due is the one applied."""
        due = [fault for fault in self.faults if fault.counts(kind, node)]
        return due[0].table if due else {}

    def kind_of(self, buffer):
        function, command = buffer[2], buffer[4]
        if function == 0x3A:
            return {0x62: "register", 0x6F: "timestamp"}.get(command, "other")
        if function == 0x2E and command == 0x90:
            return self.STORAGE_KINDS.get(buffer[12], "other")
        return "other"

    def ipmi_answer(self, kind, node, buffer, fault):
        """Completion code and data; an answer to an OEM/Group request starts with the manufacturer id."""
        lead = self.MANUFACTURER if buffer[2] == 0x2E else b""
        if "completion_code" in fault:
            return fault["completion_code"], lead
        code, data = getattr(self, "answer_" + kind)(node, buffer)
        return code, lead + data

    def answer_other(self, node, buffer):
        return 0xC1, b""

    def answer_register(self, node, buffer):
        chip, address = buffer[9], int.from_bytes(buffer[10:13], "big")
        for register in node.get("register", []):
            if register.get("chip", 0) == chip and register["address"] & 0xFFFFFF == address:
                header = bytes.fromhex(register.get("header", "00 00 00 00 00 00"))
                return 0, header + bytes.fromhex(register["value"])
        if self.server.get("unlisted_registers", "absent") == "pattern":
            return 0, bytes(6) + self.pattern(chip, address)
        return 0xCB, b""

    @staticmethod
    def pattern(chip, address):
        return bytes((address >> (8 * (k % 3)) & 0xFF) ^ chip ^ (17 * k & 0xFF) for k in range(8))

    def answer_timestamp(self, node, buffer):
        if "timestamp" not in node:
            return 0xCB, b""
        return 0, bytes.fromhex(node["timestamp"])

    def answer_open(self, node, buffer):
        place = self.area_place(node, buffer[21:46])
        return (0, place.to_bytes(4, "little")) if place else (0xCB, b"")

    def answer_size(self, node, buffer):
        place = self.area_place(node, buffer[13:38])
        if not place:
            return 0xCB, b""
        area = node["storage_area"][place - 1]
        size = area.get("size", len(self.bytes_of(area, "data")))
        return 0, size.to_bytes(4, "little", signed=True)

    def answer_read(self, node, buffer):
        place = int.from_bytes(buffer[13:17], "little")
        areas = node.get("storage_area", [])
        if not 1 <= place <= len(areas):
            return 0xCB, b""
        offset, asked = int.from_bytes(buffer[17:21], "little"), int.from_bytes(buffer[21:23], "little")
        data = self.bytes_of(areas[place - 1], "data")[offset:offset + asked]
        return 0, len(data).to_bytes(2, "little") + data

    def answer_close(self, node, buffer):
        return 0, b""

    @staticmethod
    def area_place(node, name_field):
        """The area's place among its node's areas, from 1; 0 if there is no such name."""
        name = bytes(name_field).rstrip(b"\0").decode("latin-1")
        for place, area in enumerate(node.get("storage_area", []), 1):
            if area["name"] == name:
                return place
        return 0

    def bytes_of(self, table, key):
        """Bytes given in the file as hex pairs, or in a file beside it."""
        if key in table:
            return bytes.fromhex(table[key])
        with open(os.path.join(self.directory, table[key + "_file"]), "rb") as stream:
            return stream.read()


# ---------------------------------------------------------------------------------------------------------
# Host

class Log:
    """The logging facade: empty lines are never sent."""

    def __init__(self):
        self.lines = []

    def write(self, severity, message):
        if message:
            self.lines.append((severity, message))

    def status(self, message):
        self.write(STATUS, message)

    def debug(self, message):
        self.write(DEBUG, message)

    def verbose(self, message):
        self.write(VERBOSE, message)


class Instance:
    """A new instance of a class, which the host has once it is committed."""

    def __init__(self, host, cls):
        self.host = host
        self.cls = cls
        self.declared = [declaration.name for declaration in host.schema.property_declarations(cls)]
        self.values = {}

    def set(self, name, value):
        for declared in self.declared:
            if declared.lower() == name.lower():
                self.values[declared] = value
                return
        raise TvelException(6)

    def commit(self):
        properties = [(name, self.values[name].plain()) for name in self.declared if name in self.values]
        self.host.instances.append((self.cls.name, properties))


class Host:
    """What the plugin reaches of its host."""

    def __init__(self, schema, server, timezone, directory):
        self.schema = schema
        self.machine_type = server["machine_type"]
        self.local_time = server.get("local_time")
        self.timezone = timezone
        self.sp = ServiceProcessor(server, directory)
        self.log = Log()
        self.instances = []

    def class_qualifier(self, cls, name):
        return self.schema.class_qualifier(deref(cls), name)

    def create_instance(self, cls):
        return Instance(self, deref(cls))

    def clock(self):
        """The host's clock as a datetime value."""
        now = self.local_time
        minutes = int(now.utcoffset().total_seconds()) // 60
        return datetime_value(now.year, now.month, now.day, now.hour, now.minute, now.second, minutes)


# ---------------------------------------------------------------------------------------------------------
# Byte dumps

def dump(data, last):
    """Bytes 0 to last in decimal, eight a line; the caller owns last + 1 bytes."""
    text = ""
    for i in range(last + 1):
        if i % 8 == 0:
            text += "\n"
        text += "%d " % data[i]
    return text + "\n"


def hex_pairs(data):
    return "".join("%02x " % byte for byte in data)


def quotient(number, divisor):
    """Division of C: toward zero."""
    return -(-number // divisor) if number < 0 else number // divisor


# ---------------------------------------------------------------------------------------------------------
# Plugin object

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
        for requested in classes:
            name = deref(requested).name
            self.log.debug("Entering collection for requested class " + name)
            if name in jfr_classes:
                self.collect_jfr(requested, name, delegates)
                continue
            self.collect_r8(requested, name)
            if name == DCAP_FILE:
                self.collect_capture_files()
                return

    def find_delegates(self):
        """The JFR class list and the delegate map."""
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
        for subclass in self.host.schema.descendants(deref(base)):
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
        instance.commit()

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
        instance.commit()
        self.log.debug("Exit AddErrFFDCinstance funtion")


class StorageCommands:
    """The storage-area requests to one BMC node."""

    def __init__(self, log, sp, node):
        self.log = log
        self.sp = sp
        self.node = node

    @staticmethod
    def frame(sub_command, count):
        """A zero-filled command buffer with the frame that all four requests share."""
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
        """The four handle bytes, or None."""
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
        """The size that the BMC reports, or None."""
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
        """Reads in chunks into out; returns the number of bytes asked for in total."""
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
        """One read; the bytes to keep, or None on a completion code."""
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


# ---------------------------------------------------------------------------------------------------------
# R8 register collector

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
        """The eight value bytes, or the labelled record, whose values are taken one byte later."""
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
        properties = self.get_register_values(index)
        if not properties:
            return properties
        machine_type = self.host.machine_type
        instance_id = "KROSG:%s:%s:%d" % (self.cls.name, machine_type, index)
        properties.setdefault("InstanceID", string_value(instance_id))
        properties.setdefault("ElementName", string_value(element_name))
        properties.setdefault("MachineType", string_value(machine_type))
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
            superclass = deref(self.host.schema.parent(self.cls)).name
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
        data, address = self.read_registers(declaration.name, addresses, chip)
        data = self.convert_to_big_endian(data, address, mode)
        self.log.debug("Displaying messenger\n")
        self.log.debug("".join("%d " % byte for byte in data))
        result = array_value(int_value(byte) for byte in data) if len(data) == 14 else NULL
        self.log.debug("Size of cimvalues %d" % len(data))
        self.log.debug("Register data value " + result.to_text())
        return result

    def read_registers(self, name, addresses, chip):
        """All bytes read and the last address; the transcript grows from address to address."""
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


# ---------------------------------------------------------------------------------------------------------
# JFR register collector

class NovRequest:
    """The dot-command transport; discovers the service processors when it is made."""

    def __init__(self, host):
        self.log = host.log
        self.sp = host.sp
        self.sp_instances = 0
        if not self.sp.is_dot_command():
            self.log.debug("TNOVRequestTorgaReg()::Is not Dotcommand.")
            return
        self.log.debug("TNOVRequestTorgaReg()::Is Dotcommand.")
        if not self.sp.check_sp_comm():
            self.log.debug("TNOVRequestTorgaReg()::SPComm check failed.")
            return
        self.sp_instances = self.sp.discover_sps() & 0xFF

    def send_command(self, buffer, index):
        """Fetches a service processor's block into the buffer; returns the length."""
        length = 0
        if not self.sp.is_dot_command():
            self.log.debug(NO_DATA_TEXT)
            return 0
        ok, block = self.sp.send_dot_command(index)
        if block is not None:
            length = len(block)
            buffer[:length] = block
        self.log.verbose("sendCommand CmdStatus return %dwith a returnDataLen of %d" % (ok, length))
        if not ok:
            self.log.debug(NO_DATA_TEXT)
        return length


class JfrErrorData:
    """The collector of the JFR chipset classes."""

    BLOCK_SIZE = 4096
    SECOND_COPY = 2040
    FILL = 48
    DESCRIPTIONS = {PCI_BRIDGE: PCI_BRIDGE_DESC, MEM_CTL: MEM_CTL_DESC,
                    VO_MEM_CTL: VO_MEM_CTL_DESC, L3_CACHE: L3_CACHE_DESC}

    def __init__(self, host, base, requested):
        self.host = host
        self.log = host.log
        self.base = base
        self.requested = requested
        self.time_stamp_from_second_copy = False
        self.transport = NovRequest(host)

    # -- instances ---------------------------------------------------------------------------------------

    def get_data(self):
        result = []
        try:
            count = deref(self.host.class_qualifier(self.requested, "MaxInstanceCount")).to_unsigned(16)
            self.log.debug("Class supports %d instances on this machine" % count)
            self.log.debug("fSPInstances = %d." % self.transport.sp_instances)
            for index in range(self.transport.sp_instances):
                self.collect_service_processor(index, count, result)
        except TvelException as error:
            self.log.debug("Encountered exception %s during%sthe collection of register data." % (error, TABS))
        return result

    def collect_service_processor(self, index, count, result):
        buffer = bytearray([self.FILL]) * self.BLOCK_SIZE
        length = self.transport.send_command(buffer, index) & 0xFFFF
        if length == 0:
            self.log.debug("Unable to retrieve engineering information.")
            self.log.verbose("")
            return
        self.log.debug("Returned Data:\n")
        self.log.debug(dump(buffer + b"\0", min(length, self.BLOCK_SIZE)))
        for instance in range(count):
            try:
                info = self.get_cim_instance_info(self.base, 0)
                for name, value in self.get_chip_error_info(buffer, instance).items():
                    info.setdefault(name, value)
                result.append(info)
            except TvelException as error:
                self.log.debug("Unable to create chip instance due to caught exception %s" % error)
                result.clear()
                if error.status == 21:
                    break

    def get_cim_instance_info(self, cls, number):
        self.log.verbose("In getCIMInstanceInfo()")
        element_name = "%s,%d" % (self.DESCRIPTIONS.get(cls.name, ""), number)
        machine_type = self.host.machine_type
        instance_id = "KROSG:%s:%s:%d" % (cls.name, machine_type, number)
        self.log.verbose("chipDesc | instancdID = " + element_name + " | " + instance_id)
        info = {"InstanceID": string_value(instance_id), "ElementName": string_value(element_name),
                "MachineType": string_value(machine_type)}
        self.log.verbose("Completed getCIMInstanceInfo()")
        return info

    # -- registers ---------------------------------------------------------------------------------------

    def get_chip_error_info(self, data, instance):
        timestamp = self.get_time_stamp(data)
        values = self.get_chipset_error_register_values(data, instance)
        values.setdefault("StatisticTime", timestamp)
        return values

    def get_time_stamp(self, data):
        for copy in (0, 1):
            p = data[copy * self.SECOND_COPY:]
            self.time_stamp_from_second_copy = copy != 0
            self.log.debug("TimeStamp rawdata: \n")
            self.log.debug(dump(p, 7))
            if p[2] != 0 and p[3] != 0:
                return datetime_value(p[1] + 2000, p[2], p[3], p[4], p[5], p[6], 0)
        raise TvelException(21)

    def get_chipset_error_register_values(self, data, instance):
        self.log.verbose("In getChipsetErrorRegisterValues()")
        values = {}
        superclass = self.host.schema.parent(self.requested)
        for declaration in self.host.schema.property_declarations(self.requested):
            parent = deref(superclass).name
            self.log.verbose("propertyDecl = " + declaration.name + ". classOrigin = " + declaration.origin
                             + ". superClass = " + parent)
            if declaration.origin in (self.requested.name, parent) and declaration.name not in JFR_SKIPPED:
                values[declaration.name] = self.get_register_data(declaration, data, instance)
        self.log.verbose("Completed getChipsetErrorRegisterValues()")
        return values

    def get_register_data(self, declaration, data, instance):
        index = deref(declaration.qualifier("Index")).to_unsigned(16)
        base = 0 if self.time_stamp_from_second_copy else 7
        start = base + (index + instance * 256) * 8
        record = bytes(data[start:start + 11])
        record += bytes([self.FILL]) * (11 - len(record))
        return array_value(int_value(byte) for byte in record[:3] + b" = " + record[3:])


# ---------------------------------------------------------------------------------------------------------
# A whole run

@dataclass
class Call:
    """One GetData call: its classes, how it ended (None, "assertion" or "TVELException"), what it did."""

    classes: list
    failure: str
    exchanges: list
    instances: int


@dataclass
class Run:
    """What a host observes from loading to unloading."""

    trace: list
    instances: list
    calls: list
    exchanges: list


def run(schema, server, calls, timezone=0, directory="."):
    """Runs the GetData calls (lists of class names); timezone is in seconds west of UTC."""
    host = Host(schema, server, timezone, directory)
    plugin = Plugin(host)
    plugin.init()
    ended = [one_call(host, plugin, classes) for classes in calls]
    plugin.de_init()
    return Run(host.log.lines, host.instances, ended, host.sp.exchanges)


def one_call(host, plugin, classes):
    exchanges, instances, failure = len(host.sp.exchanges), len(host.instances), None
    try:
        plugin.get_data([host.schema.find(name) for name in classes])
    except AssertionFailed:
        failure = "assertion"
    except TvelException:
        failure = "TVELException"
    return Call(list(classes), failure, host.sp.exchanges[exchanges:], len(host.instances) - instances)
