"""Common parts of the self tests of results: small classes and servers, runs, and access to their documents."""

import collector_model as model
import modelplan
import modelresult
from collector_model import CimClass, Schema
from modeltest import CLOCK, bases, register, served

X_MEM_CTL = "KROSG_X_MEMCTL_StatisticData"
OTHER_MEM_CTL = "KROSG_Y_MEMCTL_StatisticData"


def collect(classes, server, names, single=False, fail_on=None):
    """The result document of a run that names the classes on the command line. The classes may be a whole schema."""
    schema = classes if isinstance(classes, Schema) else Schema(bases() + classes)
    server = {"machine_type": "6203", "local_time": CLOCK, **server}
    asked = modelplan.asked_classes(schema, server, names)
    calls = [asked] if single else [[one] for one in asked]
    plan = modelplan.Plan(schema, server, calls)
    run = model.run(schema, server, [[name for name, _ in call] for call in calls])
    return modelresult.document(plan, run, fail_on)


def reasons(document):
    return [(one["code"], one.get("class"), one["count"]) for one in document["reasons"]]


def keys(document):
    return [one["key"] for one in document["instances"]]


def unread(document):
    return [(one["key"], one["code"]) for one in document["unread"]]


def r8(name=model.VO_PCI_BRIDGE, count=1, *registers, superclass="Root"):
    return CimClass(name, superclass, served(count=count), list(registers or [register(Offset=0xABCDEF, MaxLen=8)]))


def jfr(name=X_MEM_CTL, count=1, *registers):
    return CimClass(name, model.MEM_CTL, served(count=count), list(registers or [register(Index=0, MaxLen=8)]))


def node(*values, **keys):
    """A BMC node with registers (chip, address, value)."""
    registers = [{"chip": chip, "address": address, "value": value} for chip, address, value in values]
    return {"register": registers, **keys}


def block(text):
    return {"block": text}


EIGHT = "01 02 03 04 05 06 07 08"
GOOD_HEADER = "00 1a 01 1f 0b 1e 05 "
NO_HEADER = "00 " * 4096
