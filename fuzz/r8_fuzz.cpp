// The R8 path over a BMC that answers anything: every register value is whole or absent.
#include <cstdlib>

#include "host/core/cimnamespace.h"
#include "host/serviceprocessor/serviceprocessorhub.h"
#include "r8/r8errordata.h"
#include "tests/support/bytedrivenserviceprocessor.h"
#include "tests/support/classbuilder.h"

namespace {

using namespace NKROVEL20;
using namespace testsupport;

// Machine type, number of instances, width and addresses are the input's too.
boost::shared_ptr<TNamespace> MakeNamespace(TByteStream& bytes) {
  const auto ns = TNamespace::Create();
  const unsigned int choices = bytes.Next();
  ns->SetMachineType((choices & 1U) != 0 ? "4411" : "6203");
  const std::uint32_t maxLen = (choices & 2U) != 0 ? 4 : 8;
  ns->AddClass(TClassBuilder("BASE").Identification());
  TClassBuilder chip((choices & 4U) != 0 ? "KROSG_T4_PCIIOBRIDGE_StatisticData" : "KROSG_VO_MEMCTL_StatisticData", "BASE");
  chip.MaxInstances(static_cast<std::uint16_t>(choices >> 6U)).Register("One", bytes.Next16(), maxLen);
  std::vector<std::uint32_t> addresses;
  for (unsigned int i = 0; i < (choices >> 3U & 7U); ++i) addresses.push_back(bytes.Next16());
  ns->AddClass(chip.Register("Many", addresses, 8));
  return ns;
}

void Check(const TPropertyMap& map) {
  if (map.empty()) return;
  for (const char* const name : {"InstanceID", "ElementName", "MachineType"}) {
    if (!map.contains(name)) std::abort();
  }
  for (const char* const name : {"One", "Many"}) {
    const auto found = map.find(name);
    if (found == map.end()) continue;
    if (static_cast<const std::vector<TCIMValue>&>(found->second).size() != 14) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TByteStream bytes(data, size);
  const auto ns = MakeNamespace(bytes);
  TByteDrivenServiceProcessor sp(bytes);
  TServiceProcessorHub::Install(&sp, nullptr);
  torgareg::R8ErrorData collector(ns->Classes().back());
  for (const TPropertyMap& map : collector.getData()) Check(map);
  TServiceProcessorHub::Install(nullptr, nullptr);
  return 0;
}
