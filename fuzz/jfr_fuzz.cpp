// The JFR path over arbitrary blocks and lengths: every instance must be complete.
#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "jfr/TJFRErrorData.h"
#include "tests/support/bytedriven.h"
#include "tests/support/require.h"

namespace {

using namespace NKROVEL20;
using namespace velhost;
using namespace tests;

const char* const kBase = "KROSG_MEMCTL_StatisticData";

// The number of instances and the declarations of both records also come from the input.
boost::shared_ptr<TNamespace> MakeNamespace(TByteStream& bytes) {
  const auto ns = TNamespace::Create();
  ns->SetMachineType("6203");
  // Two levels up, because this path would read "ElementName" of a direct superclass as a register.
  ns->AddClass(TClassBuilder("ROOT").Identification());
  ns->AddClass(TClassBuilder(kBase, "ROOT"));
  TClassBuilder chip("Memory6203", kBase);
  chip.MaxInstances(bytes.Next() % 20);
  for (const char* const name : {"One", "Two"})
    AddShaped(chip, name, {{"Index", Number(TType::kUint16, bytes.Next16())}}, bytes);
  ns->AddClass(chip);
  return ns;
}

void Check(const TPropertyMap& map) {
  for (const char* const name : {"InstanceID", "ElementName", "MachineType", "StatisticTime"})
    Require(map.contains(name));
  for (const char* const name : {"One", "Two"}) {
    const auto& elements = static_cast<const std::vector<TCIMValue>&>(map.at(name));
    Require(elements.size() == 14);
    Require(elements[4].GetType() != TType::kUint8 || static_cast<unsigned int>(elements[4]) == '=');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TByteStream bytes(data, size);
  const auto ns = MakeNamespace(bytes);
  TByteDrivenServiceProcessor sp(bytes);
  sp.serviceProcessors = 1 + bytes.Next() % 4;
  TServiceProcessorHub::Install(&sp, nullptr);
  torgareg::TJFRErrorData collector(ns->FindClass(kBase), ns->FindClass("Memory6203"));
  CheckCollection(collector, Check);
  // The transport's two requests that are not sent by any collector.
  unsigned char value[8] = {};
  unsigned short length = 0;
  torgareg::TNOVRequestTorgaReg transport;
  transport.getData(1, 2, value, &length);
  transport.getTimeStamp(value, &length);
  TServiceProcessorHub::Install(nullptr, nullptr);
  return 0;
}
