// A schema that meets all needs of the collector, to which tests add what they are about.
#pragma once

#include <string>

namespace tests {

inline const std::string kCollectorQualifiers =
    "qualifier SupportedMachineTypes : string[] = null, scope(class), flavor(Restricted);\n"
    "qualifier MaxInstanceCount : uint32 = null, scope(class), flavor(Restricted);\n"
    "qualifier Offset : uint32[] = null, scope(property);\n"
    "qualifier MaxLen : uint32 = null, scope(property);\n"
    "qualifier Index : uint32 = null, scope(property);\n";
inline const std::string kRoots =
    "class Root { string InstanceID; string ElementName; string Status; };\n"
    "class Chipset : Root { string MachineType; datetime StatisticTime; };\n";
inline const std::string kBases =
    "class KROSG_PCIIOBRIDGE_StatisticData : Chipset { [Index(2)] uint8 Common[]; };\n"
    "class KROSG_MEMCTL_StatisticData : Chipset {};\n"
    "class KROSG_L3Cache_StatisticData : Chipset {};\n";
inline const std::string kCapture =
    "class KROSG_DCAPFile { string FileName; string ErrRawData; datetime MessageTimestamp; string SourceNode;\n"
    "  string CreationClassName; string LogCreationClassName; string LogName; string RecordID; };\n";
inline const std::string kCollectorSchema = kCollectorQualifiers + kRoots + kBases + kCapture;

}  // namespace tests
