// The JFR path over blocks and lengths of any kind: every instance that is made is whole.
#include <cstdlib>

#include "host/core/cimnamespace.h"
#include "host/serviceprocessor/serviceprocessorhub.h"
#include "jfr/TJFRErrorData.h"
#include "tests/support/bytedrivenserviceprocessor.h"
#include "tests/support/classbuilder.h"

namespace {

using namespace NKROVEL20;
using namespace testsupport;

const char* const kBase = "KROSG_MEMCTL_StatisticData";

// Number of instances and both indexes are the input's too.
boost::shared_ptr<TNamespace> MakeNamespace(TByteStream& bytes) {
  const auto ns = TNamespace::Create();
  ns->SetMachineType("6203");
  // Two levels up: this path would read "ElementName" of a direct superclass as a register.
  ns->AddClass(TClassBuilder("ROOT").Identification());
  ns->AddClass(TClassBuilder(kBase, "ROOT"));
  ns->AddClass(TClassBuilder("Memory6203", kBase)
                   .MaxInstances(bytes.Next() % 20)
                   .Record("One", bytes.Next16())
                   .Record("Two", bytes.Next16()));
  return ns;
}

void Check(const TPropertyMap& map) {
  for (const char* const name : {"InstanceID", "ElementName", "MachineType", "StatisticTime"}) {
    if (!map.contains(name)) std::abort();
  }
  for (const char* const name : {"One", "Two"}) {
    const auto& elements = static_cast<const std::vector<TCIMValue>&>(map.at(name));
    if (elements.size() != 14 || static_cast<unsigned int>(elements[4]) != '=') std::abort();
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
  for (const TPropertyMap& map : collector.getData()) Check(map);
  // The transport's two requests that no collector sends.
  unsigned char value[8] = {};
  unsigned short length = 0;
  torgareg::TNOVRequestTorgaReg transport;
  transport.getData(1, 2, value, &length);
  transport.getTimeStamp(value, &length);
  TServiceProcessorHub::Install(nullptr, nullptr);
  return 0;
}
