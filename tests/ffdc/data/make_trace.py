#!/usr/bin/env python3
"""Writes three-files.trace: a request for the capture files of two BMC nodes.

cpu_err: node 0 has 12 bytes, node 1 does not know the name. ioh_err: node 0 fails to report a size, node 1 has an empty
file but answers with ten bytes all the same. zyn_err: node 0 reports a size of -1, node 1 fails on the last of three
chunks. The handle is 01 00 00 00 on node 0 and 02 00 00 00 on node 1.
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))
from tracewriter import DEBUG, pairs, write  # noqa: E402

NAMES = {"cpu_err": "63 70 75 5f 65 72 72 ", "ioh_err": "69 6f 68 5f 65 72 72 ", "zyn_err": "7a 79 6e 5f 65 72 72 "}
FRAME = "01 20 2e 00 90 %s 00 00 00 39 30 00 %s "
lines = []


def debug(message):
    lines.append((DEBUG, message))


def node(number):
    debug("The system has2 . Now reading Node%d" % number)


def opening(name, answered=True):
    debug("Enter OpenStorageArea funtion")
    debug("OpenStorageArea IPMI command data:OpenStorageArea IPMI command data:28bits\n"
          + FRAME % ("13", "01") + "01 00 00 00 00 00 00 00 " + NAMES[name])
    if answered:
        debug("Exit OpenStorageArea funtion")
    else:
        debug("Error when opening files. Exit.")


def query(name, size):
    debug("Enter QueryStorageAreaSize funtion")
    debug("QueryStorageArea IPMI command data:QueryStorageAreaSize IPMI command data:20bits\n"
          + FRAME % ("0b", "06") + NAMES[name])
    if size is not None:
        debug("total storage area size:" + size + "\n")
        debug("Exit QueryStorageAreaSize funtion")


def chunk(handle, offset, count, code, *shown):
    debug("ReadStorageArea IPMI command data:" + FRAME % ("0e", "02") + handle + offset + count + "00 ")
    debug("completeCode:" + code + "\n")
    for line in shown:
        debug(line)


def returned(length):
    debug("returned smbioslen:" + length + "\n")
    debug("Exit ReadStorageArea funtion")


def closing(handle):
    debug("Enter CloseStorageArea funtion")
    debug("CloseStorageArea IPMI command data:" + FRAME % ("08", "05") + handle + "00 00 00 00 00 00 ")
    debug("close file successfully")
    debug("Exit ReadStorageArea funtion")


def added(text):
    debug("Enter AddErrFFDCinstance funtion")
    debug("Data added into KROSG_DCAPFile class:" + text)
    debug("Exit AddErrFFDCinstance funtion")


ONE, TWO = "01 00 00 00 ", "02 00 00 00 "

for base in ("KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"):
    debug("Collecting delegates for class " + base)
debug("Entering collection for requested class KROSG_DCAPFile")
debug("Collector received an invalid collection request.KROSG_DCAPFile")
debug("begin to collect KROSG_DCAPFile")

debug("Enter ReadErrFFDC funtion")
node(0)
opening("cpu_err")
query("cpu_err", "12")
debug("Enter ReadStorageArea funtion")
chunk(ONE, "00 00 00 00 ", "0a ", "0",
      "Response raw data size:10, loopoffset:0, raw data info:00 01 02 03 04 05 06 07 08 09 ")
chunk(ONE, "0a 00 00 00 ", "02 ", "0", "Response raw data size:2, loopoffset:1, raw data info:fe ff ")
returned("12")
closing(ONE)
added("00 01 02 03 04 05 06 07 08 09 fe ff ")
node(1)
opening("cpu_err", answered=False)
debug("Exit ReadErrFFDC funtion")

debug("Enter ReadErrFFDC funtion")
node(0)
opening("ioh_err")
query("ioh_err", None)
node(1)
opening("ioh_err")
query("ioh_err", "0")
debug("Enter ReadStorageArea funtion")
chunk(TWO, "00 00 00 00 ", "0a ", "0",
      "Response raw data size:10, loopoffset:0, raw data info:" + pairs([170] * 10))
returned("10")
closing(TWO)
added(pairs([170] * 10))
debug("Exit ReadErrFFDC funtion")

debug("Enter ReadErrFFDC funtion")
node(0)
opening("zyn_err")
query("zyn_err", "-1")
closing(ONE)
debug("Unable to allocate memory for the storage area.")
node(1)
opening("zyn_err")
query("zyn_err", "25")
debug("Enter ReadStorageArea funtion")
chunk(TWO, "00 00 00 00 ", "0a ", "0",
      "Response raw data size:10, loopoffset:0, raw data info:" + pairs([1] * 10))
chunk(TWO, "0a 00 00 00 ", "0a ", "0",
      "Response raw data size:10, loopoffset:1, raw data info:" + pairs([2] * 10))
chunk(TWO, "14 00 00 00 ", "05 ", "c9")
returned("20")
closing(TWO)
added(pairs([1] * 10 + [2] * 10))
debug("Exit ReadErrFFDC funtion")

debug("Complete to collect KROSG_DCAPFile")
write(pathlib.Path(__file__).with_name("three-files.trace"), lines)
