// The shared constants as each source file sees them.
#pragma once

#include <string>
#include <vector>

#include "plugin/constants.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

/// Addresses of the including file's own copies of the 32 constants, in table order.
[[maybe_unused]] std::vector<const std::string*> Constants() {
  return {&torgaRegPlugin,      &pciBridgeClass,      &memCtlClass,
          &voMemCtlClass,       &voPciBridgeClass,    &l3CacheClass,
          &t4PciBridgeClass,    &t4MemCtlClass,       &orgId,
          &torgaRegisterClass,  &instanceIDProp,      &elementNameProp,
          &statisticalTimeProp, &registerDataProp,    &registerNumberProp,
          &signalNameProp,      &chipDescriptionProp, &startTimeProp,
          &sampleIntervalPrrop, &machineTypeProp,     &machineType1,
          &machineType2,        &machineType3,        &machineType4,
          &machineType5,        &machineType6,        &machineType7,
          &pciBridgeChipDesc,   &voPciBridgeChipDesc, &memCtlChipDesc,
          &voMemCtlChipDesc,    &l3CacheChipDesc};
}

}  // namespace

/// Those of another source file.
std::vector<const std::string*> ConstantsSeenElsewhere();

}  // namespace tests
