#!/usr/bin/env python3
"""Writes two-bridges.trace: a request for the VO PCI I/O bridges of a machine of type 6203, in the time zone CET-1.

Two chips with two registers each: ErrorRegister at 0xABCDEF (64 bits) and CountRegister at 0x001000 (32 bits).
The first register of the second chip is refused with completion code 0xCB.
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))
from tracewriter import DEBUG, VERBOSE, dump, write  # noqa: E402

NAME = "KROSG_VO_PCIIOBRIDGE_StatisticData"
lines = []


def debug(message):
    lines.append((DEBUG, message))


def verbose(message):
    lines.append((VERBOSE, message))


def register(prop, address, request, response, record, decoded):
    """One register read. `record` is the resulting 14-byte record, `decoded` the value."""
    debug(prop + "\n\t at " + address + " with length 14\nAbout to call the BMC.. \n1MachineType = 6203\n")
    debug("Entered torgareg request.")
    verbose("Contents of buffer to send (rspBuf):\n" + dump(request, 257)
            + "command completed checking success...\n\nThe response length is %d" % response[5]
            + "\n\nContents of (rspBuf):\n" + dump(response, 257)
            + ("" if decoded else "Bad RC from ipmi cmd."))
    if not decoded:
        debug("Command sent to the BMC failed.")
    # The reported length is the last index shown, but at most 14.
    debug("Contents of registerData:\n" + dump(record, response[5] + 1))
    debug("Displaying messenger\n")
    if decoded:
        debug(decoded.replace(",", "") + " ")
    debug("Size of cimvalues " + ("14" if decoded else "0"))
    debug("Register data value " + ("{" + decoded + "}" if decoded else ""))


def timestamp(text):
    debug("Entered get time stamp request")
    verbose("Command completed checking success...\n\nThe response length is 4")
    debug("TimeStamp Size and Value4\n\nDate and Time" + text)


def prop(name, value):
    verbose("valueIt->first = " + name + ". valueIt->second = " + value + ".")


for base in ("KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"):
    debug("Collecting delegates for class " + base)
debug("Entering collection for requested class " + NAME)
debug("Requested class " + NAME)
debug("Class supports 2 instances on this machine")

debug("Current instance index 0")
ERROR_0 = "171, 205, 239, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0"
register("ErrorRegister", "11259375",
         [1, 32, 58, 0, 98, 4, 0, 0, 0, 1, 171, 205, 239],
         [1, 32, 58, 0, 0, 14, 0, 0, 0, 129, 130, 131, 132, 133, 134, 1, 2, 3, 4, 5, 6, 7, 8],
         [133, 134, 1, 32, 61, 32, 2, 3, 4, 5, 6, 7, 8, 0],
         ERROR_0)
# Value bytes 10 20 30 40 50 60 70 80: 16|32 folded is 48; before it 64, 48, 32.
COUNT_0 = "0, 16, 0, 64, 48, 32, 48, 0, 0, 0, 239, 254, 254, 239"
register("CountRegister", "4096",
         [1, 32, 58, 0, 98, 4, 0, 0, 0, 1, 0, 16, 0],
         [1, 32, 58, 0, 0, 14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 32, 48, 64, 80, 96, 112, 128],
         [0, 0, 16, 32, 61, 32, 32, 48, 64, 80, 96, 112, 128, 0],
         COUNT_0)
timestamp("19700101060856.000000+060")
timestamp("19700101060857.000000+060")

debug("Current instance index 1")
register("ErrorRegister", "11259375",
         [1, 32, 58, 0, 98, 4, 0, 0, 0, 2, 171, 205, 239],
         [1, 32, 58, 0, 203, 0],
         [0],
         None)
# Value bytes FF 00 FE 01 11 22 33 44: 255|0 folded is 255; before it 1, 254, 0.
COUNT_1 = "0, 16, 0, 1, 254, 0, 255, 0, 0, 0, 239, 254, 254, 239"
register("CountRegister", "4096",
         [1, 32, 58, 0, 98, 4, 0, 0, 0, 2, 0, 16, 0],
         [1, 32, 58, 0, 0, 14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 254, 1, 17, 34, 51, 68],
         [0, 0, 255, 32, 61, 32, 0, 254, 1, 17, 34, 51, 68, 0],
         COUNT_1)
timestamp("19700101000000.000000+060")
timestamp("19700101181215.000000+060")

debug("In buildCIMInstances.")
prop("CountRegister", "{" + COUNT_0 + "}")
prop("ElementName", "PCI I/O bridge,0")
prop("ErrorRegister", "{" + ERROR_0 + "}")
prop("InstanceID", "KROSG:" + NAME + ":6203:0")
prop("MachineType", "6203")
prop("StatisticTime", "19700101060857.000000+060")
prop("CountRegister", "{" + COUNT_1 + "}")
prop("ElementName", "PCI I/O bridge,1")
prop("InstanceID", "KROSG:" + NAME + ":6203:1")
prop("MachineType", "6203")
prop("StatisticTime", "19700101181215.000000+060")
debug("Completed buildCIMInstances.")

write(pathlib.Path(__file__).with_name("two-bridges.trace"), lines)
