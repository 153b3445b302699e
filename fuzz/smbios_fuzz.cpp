// Arbitrary bytes as an SMBIOS table and as an entry point.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "host/bmc/smbios/smbios.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace velhost;
  const TSmbiosFacts facts = ParseSmbiosTable({data, size});
  const std::string machineType = MachineTypeOf(facts.productName);
  if (!machineType.empty() && machineType.size() != 4) std::abort();
  if (facts.productName.size() > size) std::abort();
  SmbiosTableSize({data, size});
  return 0;
}
