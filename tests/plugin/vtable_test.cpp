// The order of the plugin object's virtual functions and fields, on which the host relies.
#include <gtest/gtest.h>

#include <cstdint>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"
#include "tests/support/virtualtable.h"

namespace tests {
namespace {

using TTextQuery = std::string(void*);
using TVoidCall = void(void*);
using TRequest = void(void*, boost::shared_ptr<ICIMNamespace>, std::vector<boost::shared_ptr<ICIMClass>>&);

class VirtualTable : public TPluginTest {
 protected:
  template <typename TFunction>
  auto Call(std::size_t slot) {
    return EntryAt<TFunction>(plugin, slot)(&plugin);
  }
};

TEST_F(VirtualTable, SlotsAreInContractOrder) {
  // Slots 0 and 1 are the two destructors.
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::GetType), 2U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::GetName), 3U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::GetVersion), 4U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::GetInterfaceVersion), 5U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::PrepareForUnload), 6U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::Init), 7U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::DeInit), 8U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::getMachineType), 9U);
  EXPECT_EQ(SlotOf(&TTORGARegPluginCallbacks::GetData), 10U);
  EXPECT_EQ(SlotsOf<TTORGARegPluginCallbacks>(), 11U);
}

TEST_F(VirtualTable, TheLogFacadeHasOnlyItsDestructors) { EXPECT_EQ(SlotsOf<LogMessage>(), 2U); }

TEST_F(VirtualTable, EachSlotOfThePrimaryBaseDoesItsWork) {
  environment.machineType = "6101";
  EXPECT_EQ(Call<int(void*)>(2), 0);
  EXPECT_EQ(Call<TTextQuery>(3), "Engineering Information Collector");
  EXPECT_EQ(Call<TTextQuery>(4), "1.0");
  EXPECT_EQ(Call<TTextQuery>(5), "1.0");
  EXPECT_EQ(Call<TTextQuery>(9), "6101");
  Call<TVoidCall>(7);
  Call<TVoidCall>(8);
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Initializing Engineering Information Collector"),
                                                Debug("De-Initializing Engineering Information Collector")}));
}

TEST_F(VirtualTable, BothBasesReachGetDataWithTheSameEffect) {
  AddJfrBases(*ns);
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("KROSG_MEMCTL_StatisticData")};
  EntryAt<TRequest>(plugin, 10)(&plugin, ns, classes);
  const std::vector<TLine> first = logger.Lines();
  ASSERT_EQ(first.size(), 5U);
  logger.Clear();
  IPluginBasicQueryCallbacks& second = plugin;
  EntryAt<TRequest>(second, 2)(&second, ns, classes);
  EXPECT_EQ(logger.Lines(), first);
}

TEST_F(VirtualTable, TheSecondBaseFollowsThePrimaryOne) {
  const auto* const start = static_cast<const char*>(static_cast<const void*>(&plugin));
  EXPECT_EQ(static_cast<const void*>(static_cast<IPluginCallbacks*>(&plugin)), start);
  EXPECT_EQ(static_cast<const void*>(static_cast<IPluginBasicQueryCallbacks*>(&plugin)), start + sizeof(void*));
  IPluginCallbacks* const callbacks = &plugin;
  EXPECT_EQ(dynamic_cast<IPluginBasicQueryCallbacks*>(callbacks), static_cast<IPluginBasicQueryCallbacks*>(&plugin));
}

TEST_F(VirtualTable, DeletingThroughEitherBaseDestroysTheObject) {
  for (const bool second : {false, true}) {
    auto* const other = new TTORGARegPluginCallbacks();
    const auto heldClass = ns->AddClass(TClassBuilder(second ? "B" : "A"));
    FieldsOf(*other).currentClass = heldClass;
    const auto before = heldClass.use_count();
    if (second) {
      delete static_cast<IPluginBasicQueryCallbacks*>(other);
    } else {
      delete static_cast<IPluginCallbacks*>(other);
    }
    EXPECT_EQ(heldClass.use_count(), before - 1);
  }
}

TEST_F(VirtualTable, FieldsAreInDeclarationOrder) {
  AddJfrBases(*ns);
  AddCaptureClass();
  ns->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData").Machines({"6204"}).MaxInstances(0));
  SetMachineType("6204");
  plugin.Init();
  plugin.AddErrFFDCinstance(ns, std::string(), 0, "cpu_err", 0);
  GetData({"KROSG_VO_MEMCTL_StatisticData"});
  const auto fields = FieldsOf(plugin);
  EXPECT_EQ(fields.pluginProvider, &pluginManager->provider);
  EXPECT_EQ(fields.currentClass, Class("KROSG_VO_MEMCTL_StatisticData"));
  EXPECT_EQ(fields.logger, LogMessage::getInstance());
  EXPECT_EQ(fields.machineType, "6204");
  EXPECT_EQ(fields.recordCounter, 1);
}

}  // namespace
}  // namespace tests
