"""The names, failures and values used by the collector model."""

from dataclasses import dataclass

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

CLASS, QUALIFIER = "base class or superclass", "qualifier"


class AssertionFailed(Exception):
    """A null host object was dereferenced; collectors do not catch this."""

    def __init__(self, what):
        super().__init__("px != 0")
        self.told = ("the collector did not find a %s that it needs; \"velhost check\" shows what the schema lacks "
                     "(assertion px != 0)" % what)


class TvelException(Exception):
    """The host's exception; collectors catch it around their instance loops. Only the host sees the detail."""

    TEXTS = {12: "No such property (status 12).", 13: "Type mismatch (status 13).",
             21: "No valid timestamp header (status 21)."}

    def __init__(self, status, detail=""):
        super().__init__(self.TEXTS[status])
        self.status = status
        self.told = "%s %s" % (self, detail)


def deref(pointer, what=QUALIFIER):
    """Dereferences a host object."""
    if pointer is None:
        raise AssertionFailed(what)
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
        """The text in radix 10."""
        if self.kind == "null":
            return ""
        if self.kind == "array":
            return "{" + ", ".join(element.to_text() for element in self.data) + "}"
        return str(self.data)

    def to_string(self):
        """Conversion to a string."""
        if self.kind == "array":
            raise TvelException(13)
        return self.to_text()

    def to_unsigned(self, bits):
        """Conversion to an unsigned number, which wraps around."""
        if self.kind == "null":
            return 0
        if self.kind == "int":
            return self.data % (1 << bits)
        if self.kind == "string" and self.data.isascii() and self.data.isdigit():
            return int(self.data) % (1 << bits)
        raise TvelException(13)

    def to_array(self):
        """Conversion to the elements of an array."""
        if self.kind != "array":
            raise TvelException(13)
        return list(self.data)

    def plain(self):
        """The value as it appears in JSON output."""
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
    """A datetime in its 25 characters; the fields are used as given, even implausible ones."""
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
