#include "tests/support/collectortest.h"

#include <boost/make_shared.hpp>

#include "host/bmc/iserviceprocessor.h"

namespace tests {

TCollectorTest::TCollectorTest() : pluginManager(boost::make_shared<TFakePluginManager>()), ns(TNamespace::Create()) {
  THostServices::SetCoreLogger(&logger);
  THostServices::SetEnvironment(&environment);
  THostServices::SetPluginManager(pluginManager);
  TServiceProcessorHub::Install(&sp, nullptr);
  ns->SetMachineType(environment.machineType);
  ns->SetCommitCallback([this](const boost::shared_ptr<const TInstance>& instance) { committed.push_back(instance); });
}

TCollectorTest::~TCollectorTest() {
  TServiceProcessorHub::Install(nullptr, nullptr);
  THostServices::SetPluginManager({});
  THostServices::SetEnvironment(nullptr);
  THostServices::SetCoreLogger(nullptr);
}

void TCollectorTest::SetMachineType(const std::string& machineType) {
  environment.machineType = machineType;
  ns->SetMachineType(machineType);
}

void AddJfrBases(TNamespace& schema, const std::string& superClass) {
  for (const char* const name :
       {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
    schema.AddClass(TClassBuilder(name, superClass));
  }
}

std::string TextOf(const TInstance& instance, const std::string& property) {
  const TCIMValue* const value = instance.Find(property);
  return value == nullptr ? "(not set)" : value->ToString(10);
}

std::string TextOf(const TPropertyMap& map, const std::string& property) {
  const auto found = map.find(property);
  return found == map.end() ? "(absent)" : found->second.ToString(10);
}

std::vector<unsigned int> NumbersOf(const TCIMValue& value) {
  std::vector<unsigned int> numbers;
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    numbers.push_back(static_cast<unsigned int>(element));
  }
  return numbers;
}

}  // namespace tests
