// Creation, registration, identity and lifecycle of the plugin object.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class Lifecycle : public TPluginTest {};
class Construction : public TCollectorTest {
 protected:
  ~Construction() override { LogMessage::setPluginInstance(nullptr); }
};

TEST_F(Lifecycle, ReportsItsIdentity) {
  EXPECT_EQ(plugin.GetType(), 0);
  EXPECT_EQ(plugin.GetName(), "Engineering Information Collector");
  EXPECT_EQ(plugin.GetVersion(), "1.0");
  EXPECT_EQ(plugin.GetInterfaceVersion(), "1.0");
  EXPECT_TRUE(logger.Lines().empty());
}

TEST_F(Lifecycle, InitLogsBeforeItResetsTheCounter) {
  logger.FailAt("Initializing Engineering Information Collector");
  plugin.AddErrFFDCinstance((AddCaptureClass(), ns), std::string(), 0, "cpu_err", 0);
  EXPECT_THROW(plugin.Init(), std::runtime_error);
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 1);
}

TEST_F(Lifecycle, InitAndDeInitLogOneDebugLineEach) {
  plugin.Init();
  plugin.DeInit();
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Initializing Engineering Information Collector"),
                                                Debug("De-Initializing Engineering Information Collector")}));
}

TEST_F(Lifecycle, OnlyInitResetsTheRecordCounter) {
  AddCaptureClass();
  plugin.Init();
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 0);
  for (int i = 0; i < 2; ++i) plugin.AddErrFFDCinstance(ns, std::string("00 "), 1, "cpu_err", 0);
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 2);
  plugin.DeInit();
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 2);
  plugin.Init();
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 0);
}

TEST_F(Lifecycle, TwoObjectsOfOneLibraryCountSeparatelyAndShareTheLog) {
  AddCaptureClass();
  TTORGARegPluginCallbacks other;
  for (TTORGARegPluginCallbacks* object : {&plugin, &other, &plugin}) {
    object->AddErrFFDCinstance(ns, std::string("00 "), 1, "cpu_err", 0);
  }
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 2);
  EXPECT_EQ(FieldsOf(other).recordCounter, 1);
  logger.Clear();
  other.Init();
  plugin.DeInit();
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("Initializing Engineering Information Collector"),
                                                Debug("De-Initializing Engineering Information Collector")}));
  EXPECT_EQ(FieldsOf(plugin).recordCounter, 2);
}

TEST_F(Lifecycle, CallsWorkInAnyOrder) {
  plugin.DeInit();
  plugin.Init();
  plugin.Init();
  EXPECT_EQ(logger.Lines().size(), 3U);
}

TEST_F(Lifecycle, MachineTypeIsTheHostsAndIsNotStored) {
  environment.machineType = "4411";
  EXPECT_EQ(plugin.getMachineType(), "4411");
  environment.machineType = "";
  EXPECT_EQ(plugin.getMachineType(), "");
  environment.machineType = " any text\n";
  EXPECT_EQ(plugin.getMachineType(), " any text\n");
  EXPECT_EQ(FieldsOf(plugin).machineType, "");
}

TEST_F(Construction, RegistersItselfWithEmptyFieldsAndLogsNothing) {
  auto* const plugin = new TTORGARegPluginCallbacks();
  ASSERT_EQ(pluginManager->registered.size(), 1U);
  EXPECT_EQ(pluginManager->registered[0], static_cast<IPluginCallbacks*>(plugin));
  EXPECT_EQ(FieldsOf(*plugin).pluginProvider, &pluginManager->provider);
  EXPECT_EQ(FieldsOf(*plugin).logger, LogMessage::getInstance());
  EXPECT_FALSE(FieldsOf(*plugin).currentClass);
  EXPECT_EQ(FieldsOf(*plugin).machineType, "");
  EXPECT_TRUE(logger.Lines().empty());
  EXPECT_EQ(sp.Discoveries(), 0);
  EXPECT_EQ(environment.machineTypeQueries, 0);
  plugin->PrepareForUnload();
}

TEST_F(Construction, LinesAreForwardedOnlyAfterRegistrationReturned) {
  pluginManager->onRegister = [] { LogMessage::getInstance()->writeError("too early"); };
  auto* const plugin = new TTORGARegPluginCallbacks();
  EXPECT_TRUE(logger.Lines().empty());
  LogMessage::getInstance()->writeError("registered");
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Error("registered")});
  plugin->PrepareForUnload();
}

TEST_F(Construction, KeepsNoReferenceToThePluginManager) {
  const auto before = pluginManager.use_count();
  auto* const plugin = new TTORGARegPluginCallbacks();
  EXPECT_EQ(pluginManager.use_count(), before);
  plugin->PrepareForUnload();
}

TEST_F(Construction, WithoutPluginManagerItAsserts) {
  THostServices::SetPluginManager({});
  EXPECT_EQ(PointeeOfAssertion([] { const TTORGARegPluginCallbacks plugin; }), "TPluginManagerNamespace");
}

TEST_F(Construction, ANamespaceThatIsNotAPluginManagerAsserts) {
  THostServices::SetPluginManager(ns);
  EXPECT_THROW(TTORGARegPluginCallbacks(), TAssertionFailure);
}

TEST_F(Construction, ExceptionsFromRegistrationPropagate) {
  pluginManager->onRegister = [] { throw TVELException(1); };
  EXPECT_THROW(TTORGARegPluginCallbacks(), TVELException);
  LogMessage::getInstance()->writeError("never registered");
  EXPECT_TRUE(logger.Lines().empty());
}

TEST_F(Construction, ARefusedRegistrationLeavesThePluginSilent) {
  pluginManager->refuses = true;
  auto* const plugin = new TTORGARegPluginCallbacks();
  plugin->Init();
  EXPECT_TRUE(logger.Lines().empty());
  plugin->PrepareForUnload();
}

TEST_F(Construction, TheDestructorReleasesTheClassWithoutUnregistering) {
  AddJfrBases(*ns);
  ns->AddClass(TClassBuilder("KROSG_VO_MEMCTL_StatisticData").Machines({"6203"}).MaxInstances(0));
  auto* const plugin = new TTORGARegPluginCallbacks();
  std::vector<boost::shared_ptr<ICIMClass>> classes = {Class("KROSG_VO_MEMCTL_StatisticData")};
  plugin->GetData(ns, classes);
  const auto held = classes[0].use_count();
  EXPECT_EQ(FieldsOf(*plugin).currentClass, classes[0]);
  logger.Clear();
  plugin->PrepareForUnload();
  EXPECT_EQ(classes[0].use_count(), held - 1);
  EXPECT_EQ(pluginManager->registered.size(), 1U);
  EXPECT_TRUE(logger.Lines().empty());
  LogMessage::getInstance()->writeError("still open");
  EXPECT_EQ(logger.Lines().size(), 1U);
}

}  // namespace
}  // namespace tests
