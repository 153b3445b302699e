#!/usr/bin/env python3
"""Writes two-blocks.trace: a request for the JFR bridges of a machine of type 6203.

Two chip instances with the registers First (index 0) and Fourth (index 3), and three service processors. The first one
sends a whole block in which byte i is i modulo 256 after the header for 2024-12-31 23:59:58. The second one sends
nothing. The third one sends 20 bytes whose header has no day, so the time is taken from the second copy, which is in
the fill: 48 everywhere.
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))
from tracewriter import DEBUG, VERBOSE, dump, write  # noqa: E402

BASE = "KROSG_PCIIOBRIDGE_StatisticData"
lines = []


def debug(message):
    lines.append((DEBUG, message))


def verbose(message):
    lines.append((VERBOSE, message))


def instance(*headers):
    """The lines of one instance; `headers` are the dumps of the header copies examined."""
    verbose("In getCIMInstanceInfo()")
    verbose("chipDesc | instancdID = PCI I/O bridge,0 | KROSG:" + BASE + ":6203:0")
    verbose("Completed getCIMInstanceInfo()")
    for header in headers:
        debug("TimeStamp rawdata: \n")
        debug(header)
    verbose("In getChipsetErrorRegisterValues()")
    for name in ("InstanceID", "ElementName", "MachineType", "StatisticTime"):
        verbose("propertyDecl = " + name + ". classOrigin = KROSG_StatisticBase. superClass = " + BASE)
    for name in ("First", "Fourth"):
        verbose("propertyDecl = " + name + ". classOrigin = Bridge6203. superClass = " + BASE)
    verbose("Completed getChipsetErrorRegisterValues()")


def built(first, fourth, time):
    for name, value in (("ElementName", "PCI I/O bridge,0"), ("First", "{" + first + "}"),
                        ("Fourth", "{" + fourth + "}"), ("InstanceID", "KROSG:" + BASE + ":6203:0"),
                        ("MachineType", "6203"), ("StatisticTime", time)):
        verbose("valueIt->first = " + name + ". valueIt->second = " + value + ".")


debug("Collecting delegates for class " + BASE)
debug("Adding class Bridge6203 in Class list")
debug("Adding class Bridge6203 in child map")
debug("Collecting delegates for class KROSG_MEMCTL_StatisticData")
debug("Collecting delegates for class KROSG_L3Cache_StatisticData")
debug("Entering collection for requested class Bridge6203")
debug("Collecting JFRErrorData.")
debug("Calling error data")
debug("TNOVRequestTorgaReg()::Is Dotcommand.")
debug("Class supports 2 instances on this machine")
debug("fSPInstances = 3.")

verbose("sendCommand CmdStatus return 1with a returnDataLen of 4096")
debug("Returned Data:\n")
# The dump is inclusive: 4096 bytes and the zero byte after them.
debug(dump([0, 24, 12, 31, 23, 59, 58] + [i % 256 for i in range(7, 4096)], 4097))
instance("\n0 24 12 31 23 59 58 7 \n")
instance("\n0 24 12 31 23 59 58 7 \n")

verbose("sendCommand CmdStatus return 1with a returnDataLen of 0")
debug("Unable to retrieve engineering information.")

verbose("sendCommand CmdStatus return 1with a returnDataLen of 20")
debug("Returned Data:\n")
debug(dump([100, 101, 102, 0, 104, 105, 106, 107, 108, 109, 110, 111, 112, 113, 114, 115, 116, 117, 118, 119, 48], 21))
for _ in range(2):
    instance("\n100 101 102 0 104 105 106 107 \n", "\n48 48 48 48 48 48 48 48 \n")

debug("Total Instances collected are 4")
debug("Building CIM instances.")
debug("In buildCIMInstances.")
FILL = "48, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48"
# Instance 0: bytes 7 and 7 + 24 = 31; instance 1: 7 + 2048 = 2055 (7 modulo 256) and 2079 (31).
for _ in range(2):
    built("7, 8, 9, 32, 61, 32, 10, 11, 12, 13, 14, 15, 16, 17",
          "31, 32, 33, 32, 61, 32, 34, 35, 36, 37, 38, 39, 40, 41", "20241231235958.000000+000")
# The second copy: instance 0 starts at bytes 0 and 24; the latter is past what was sent.
built("100, 101, 102, 32, 61, 32, 0, 104, 105, 106, 107, 108, 109, 110", FILL, "20484848484848.000000+000")
built(FILL, FILL, "20484848484848.000000+000")
debug("Completed buildCIMInstances.")
debug("Normal exit from Engineering Information collector...")

write(pathlib.Path(__file__).with_name("two-blocks.trace"), lines)
