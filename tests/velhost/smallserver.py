"""What the tests of results share: names of classes, a server with a shortcoming of each kind, and its schema."""

import json

from velhostcase import SOURCE, VelhostCase

J2_BRIDGE = "KROSG_J2_PCIIOBRIDGE_StatisticData"
J2_MEMORY = "KROSG_J2_MEMCTL_StatisticData"
J2_CACHE = "KROSG_J2_L3Cache_StatisticData"
T4_MEMORY = "KROSG_T4_MEMCTL_StatisticData"
T4_BRIDGE = "KROSG_T4_PCIIOBRIDGE_StatisticData"
FILES = "KROSG_DCAPFile"
FAILING = f"sim:{SOURCE}/servers/failing.toml"

# One class of each way: a block of one record, two instances of two registers, capture files.
SMALL_SCHEMA = """
Qualifier SupportedMachineTypes : string[], Scope(class), Flavor(EnableOverride, Restricted);
Qualifier MaxInstanceCount : uint16, Scope(class), Flavor(EnableOverride, Restricted);
Qualifier Offset : uint32, Scope(property);
Qualifier MaxLen : uint32, Scope(property);
Qualifier Index : uint16, Scope(property);
class KROSG_Top { string InstanceID; string ElementName; string MachineType; datetime StatisticTime; };
class KROSG_PCIIOBRIDGE_StatisticData : KROSG_Top {};
class KROSG_L3Cache_StatisticData : KROSG_Top {};
class KROSG_MEMCTL_StatisticData : KROSG_Top { [Index(0), MaxLen(8)] uint8 First[]; };
[SupportedMachineTypes{"6203"}, MaxInstanceCount(1)]
class KROSG_X_MEMCTL_StatisticData : KROSG_MEMCTL_StatisticData {};
[SupportedMachineTypes{"6203"}, MaxInstanceCount(2)]
class KROSG_VO_PCIIOBRIDGE_StatisticData : KROSG_Top {
  [Offset(0xABCDEF), MaxLen(4)] uint8 Count[]; [Offset(0xABCDF0), MaxLen(8)] uint8 Log[]; };
class KROSG_DCAPFile {
  string FileName; string ErrRawData; datetime MessageTimestamp; string SourceNode;
  string CreationClassName; string LogCreationClassName; string LogName; string RecordID;
};
"""
BLOCK = "KROSG_X_MEMCTL_StatisticData"
GOOD_BLOCK = "00 1a 01 1f 0b 1e 05 0b 00 54 00 00 00 1a 3f 4c 2e 40"  # the header, then the record at byte 7
SMALL_SERVER = f"""
machine_type = "6203"
local_time = 2026-01-31T12:34:56+01:00
[dot]
[[dot.service_processor]]
block = "{GOOD_BLOCK}"
[[dot.service_processor]]
block = "00"
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
chip = 1
address = 0xABCDEF
value = "00 01 00 00 00 00 00 00"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "0a ff 00"
size = 12
"""


def reason(code, class_name, count, message):
    return {"code": code, "count": count, "message": message, **({"class": class_name} if class_name else {})}


# Each class of the small schema, and what the small server has of it.
SMALL = ("--schema", "small.mof", "--sp", "sim:small.toml")
IMAGE = ("--schema", "small.mof", "--sp", "image:run.jsonl")
REPLAY = ("--schema", "small.mof", "--sp", "replay:run.jsonl")


class SmallServerCase(VelhostCase):
    """A test with the small schema and server in its folder, which records into run.jsonl."""

    def setUp(self):
        super().setUp()
        self.write("small.mof", SMALL_SCHEMA)
        self.write("small.toml", SMALL_SERVER)

    def head(self, name="run.jsonl"):
        return json.loads((self.folder / name).read_text().splitlines()[0])

    def without_run(self, document):
        return {name: value for name, value in document.items() if name not in ("run", "source")}
