#include "host/plugins/pluginregistry.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <boost/pointer_cast.hpp>

#include "tests/plugins/plugins/testplugin.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testplugin::TTestPlugin;

class PluginRegistry : public testing::Test {
 protected:
  TPluginRegistry registry_;
  TTestPlugin first_{"first"};
  TTestPlugin second_{"second"};
};

TEST_F(PluginRegistry, AcceptsTheRegistrationOfALibraryThatIsBeingLoaded) {
  registry_.BeginLoading("a.so");
  const TPluginManagerProvider* const handle = registry_.RegisterPlugin(&first_);
  ASSERT_NE(handle, nullptr);
  const auto outcome = registry_.EndLoading();
  EXPECT_EQ(outcome.provider.get(), handle);
  EXPECT_EQ(handle->Path(), "a.so");
  EXPECT_EQ(handle->Plugin(), &first_);
  EXPECT_TRUE(outcome.refusals.empty());
}

TEST_F(PluginRegistry, RefusesASecondRegistrationAndKeepsTheFirst) {
  registry_.BeginLoading("a.so");
  registry_.RegisterPlugin(&first_);
  EXPECT_EQ(registry_.RegisterPlugin(&second_), nullptr);
  EXPECT_EQ(registry_.RegisterPlugin(&first_), nullptr);
  const auto outcome = registry_.EndLoading();
  EXPECT_EQ(outcome.provider->Plugin(), &first_);
  EXPECT_EQ(outcome.refusals,
            (std::vector<std::string>{"it registered a second plugin object", "it registered a second plugin object"}));
}

TEST_F(PluginRegistry, RefusesANullObject) {
  registry_.BeginLoading("a.so");
  EXPECT_EQ(registry_.RegisterPlugin(nullptr), nullptr);
  const auto outcome = registry_.EndLoading();
  EXPECT_FALSE(outcome.provider);
  EXPECT_EQ(outcome.refusals, std::vector<std::string>{"it registered a null plugin object"});
}

TEST_F(PluginRegistry, RefusesBeforeAndAfterLoading) {
  EXPECT_EQ(registry_.RegisterPlugin(&first_), nullptr);
  registry_.BeginLoading("a.so");
  registry_.EndLoading();
  EXPECT_EQ(registry_.RegisterPlugin(&first_), nullptr);
  EXPECT_EQ(registry_.EndLoading().refusals,
            std::vector<std::string>{"a plugin registered while no library was being loaded"});
}

TEST_F(PluginRegistry, EachLoadingStartsAnew) {
  registry_.RegisterPlugin(&first_);
  registry_.BeginLoading("a.so");
  registry_.RegisterPlugin(&first_);
  registry_.EndLoading();
  registry_.BeginLoading("b.so");
  const auto outcome = registry_.EndLoading();
  EXPECT_FALSE(outcome.provider);
  EXPECT_TRUE(outcome.refusals.empty());
}

TEST_F(PluginRegistry, IsANamespaceWithoutClasses) {
  const boost::shared_ptr<ICIMNamespace> asNamespace = boost::make_shared<TPluginRegistry>();
  EXPECT_FALSE(asNamespace->GetClass("KROSG_DCAPFile", {}));
  EXPECT_EQ(asNamespace->GetMachineType(), "");
  EXPECT_TRUE(boost::dynamic_pointer_cast<TPluginManagerNamespace>(asNamespace));
}

}  // namespace
}  // namespace tests
