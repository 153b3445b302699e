"""Common parts of the self tests of the reference model: small schemas, runs, and access to their results."""

import datetime

import collector_model as model
import random_schema
from collector_model import CimClass, Property, Schema

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
    """The root class, the three base classes and the capture class."""
    capture = [Property(name, "datetime" if name == "MessageTimestamp" else "string", False)
               for name in random_schema.DCAP_PROPERTIES]
    return ([CimClass("Root", None, {}, identity())] + [CimClass(name, "Root") for name in model.BASE_CLASSES]
            + [CimClass(model.DCAP_FILE, None, {}, capture)])


def run(classes, server, calls, timezone=0):
    full = {"machine_type": "6203", "local_time": CLOCK, **server}
    return model.run(Schema(bases() + classes), full, calls, timezone)


def texts(result, severity=None):
    return [text for level, text in result.trace if severity in (None, level)]


def after(result, line):
    """The line after the first one that equals or begins with the given text."""
    lines = texts(result)
    return lines[next(i for i, text in enumerate(lines) if text.startswith(line)) + 1]


def area(name="cpu_err", data="", **keys):
    return {"name": name, "data": data, **keys}


def capture(*nodes, faults=(), calls=1, **server):
    """Collects capture files from nodes given as lists of storage areas."""
    tables = [{"storage_area": areas} for areas in nodes]
    return run([], {"bmc_node": tables, "fault": list(faults), **server}, [[model.DCAP_FILE]] * calls)


def raw_data(result):
    return [dict(properties)["ErrRawData"] for _, properties in result.instances]


def bmc(registers=(), **keys):
    return {"bmc_node": [{"register": list(registers), **keys}]}


VALUE = {"address": 0x00ABCDEF, "value": "01 02 03 04 05 06 07 08"}


def collect_r8(*properties, cls=model.VO_MEM_CTL, machine_type="6203", count=1, server=None, timezone=0, extra=()):
    one = CimClass(cls, extra[-1].name if extra else "Root", served(machine_type, count), list(properties))
    server = {**(bmc([VALUE]) if server is None else server), "machine_type": machine_type}
    return run([*extra, one], server, [[cls]], timezone)


def values_of(result, name="Reg"):
    return [dict(properties).get(name) for _, properties in result.instances]
