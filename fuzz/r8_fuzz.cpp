// The R8 path over a BMC that answers anything: every register value must be complete or absent.
#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "r8/r8errordata.h"
#include "tests/support/bytedriven.h"
#include "tests/support/require.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;
using namespace tests;

// The machine type, the number of instances and the declarations of both registers also come from the input.
boost::shared_ptr<TNamespace> MakeNamespace(TByteStream& bytes) {
  const auto ns = TNamespace::Create();
  const unsigned int choices = bytes.Next();
  ns->SetMachineType((choices & 1U) != 0 ? "4411" : "6203");
  ns->AddClass(TClassBuilder("BASE").Identification());
  const bool isBridge = (choices & 4U) != 0;
  TClassBuilder chip(isBridge ? "KROSG_T4_PCIIOBRIDGE_StatisticData" : "KROSG_VO_MEMCTL_StatisticData", "BASE");
  chip.MaxInstances(static_cast<std::uint16_t>(choices >> 6U));
  const TCIMValue maxLen = Number(TType::kUint32, (choices & 2U) != 0 ? 4 : 8);
  const auto address = static_cast<std::uint32_t>(bytes.Next32());
  AddShaped(chip, "One", {{"Offset", Number(TType::kUint32, address)}, {"MaxLen", maxLen}}, bytes);
  std::vector<std::uint32_t> addresses(choices >> 3U & 7U);
  for (std::uint32_t& each : addresses) each = bytes.Next16();
  AddShaped(chip, "Many", {{"Offset", Numbers(addresses)}, {"MaxLen", Number(TType::kUint32, 8)}}, bytes);
  ns->AddClass(chip);
  return ns;
}

void Check(const TPropertyMap& map) {
  if (map.empty()) return;
  for (const char* const name : {"InstanceID", "ElementName", "MachineType"}) Require(map.contains(name));
  for (const char* const name : {"One", "Many"}) {
    const auto found = map.find(name);
    if (found == map.end()) continue;
    Require(static_cast<const std::vector<TCIMValue>&>(found->second).size() == 14);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TByteStream bytes(data, size);
  const auto ns = MakeNamespace(bytes);
  TByteDrivenServiceProcessor sp(bytes);
  TServiceProcessorHub::Install(&sp, nullptr);
  torgareg::R8ErrorData collector(ns->Classes().back());
  CheckCollection(collector, Check);
  TServiceProcessorHub::Install(nullptr, nullptr);
  return 0;
}
