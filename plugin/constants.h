// Names shared by all parts of the collector: CIM classes, properties, machine types and chip descriptions.
// Each source file has its own copy, initialised in this order while the library is loaded. Some are not used
// here; they are kept because schema authors consult this list.
#pragma once

#include <string>

namespace torgareg {

// CIM classes.
const std::string torgaRegPlugin = "KROSG_ZYNChipsetErrorData";
const std::string pciBridgeClass = "KROSG_PCIIOBRIDGE_StatisticData";
const std::string memCtlClass = "KROSG_MEMCTL_StatisticData";
const std::string voMemCtlClass = "KROSG_VO_MEMCTL_StatisticData";
const std::string voPciBridgeClass = "KROSG_VO_PCIIOBRIDGE_StatisticData";
const std::string l3CacheClass = "KROSG_L3Cache_StatisticData";
const std::string t4PciBridgeClass = "KROSG_T4_PCIIOBRIDGE_StatisticData";
const std::string t4MemCtlClass = "KROSG_T4_MEMCTL_StatisticData";

// The organisation prefix. Deliberately not used in instance identifiers: theirs is "KROSG:".
const std::string orgId = "KRO_SG:";
const std::string torgaRegisterClass = "ZYNChipRegisterData";

// CIM properties.
const std::string instanceIDProp = "InstanceID";
const std::string elementNameProp = "ElementName";
const std::string statisticalTimeProp = "StatisticTime";
const std::string registerDataProp = "RegisterData";
const std::string registerNumberProp = "RegisterNumber";
const std::string signalNameProp = "SignalName";
const std::string chipDescriptionProp = "ChipDescription";
const std::string startTimeProp = "StartStatisticTime";
const std::string sampleIntervalPrrop = "SampleInterval";  // the double r is part of the name
const std::string machineTypeProp = "MachineType";

// Machine types of supported server models. Two models share one type number.
const std::string machineType1 = "6101";
const std::string machineType2 = "6102";
const std::string machineType3 = "6203";
const std::string machineType4 = "6204";
const std::string machineType5 = "6205";
const std::string machineType6 = "6106";
const std::string machineType7 = "6203";

// Chip descriptions: the first part of an element name.
const std::string pciBridgeChipDesc = "PCI I/O bridge";
const std::string voPciBridgeChipDesc = pciBridgeChipDesc;  // a copy, so it must follow its source
const std::string memCtlChipDesc = "Memory and I/O controller";
const std::string voMemCtlChipDesc = "Memory controller with integrated L4 cache module";
const std::string l3CacheChipDesc = "Integrated L3 cache module";

}  // namespace torgareg
