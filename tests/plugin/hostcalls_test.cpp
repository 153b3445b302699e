// How often and in what order the collector calls those parts of the host that no test double can observe:
// root operations, and values that are built from text or asked for their elements.
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>

#include "host/model/cimnamespace.h"
#include "jfr/TNOVRequesttorgareg.h"
#include "r8/ipmirequesttorgareg.h"
#include "r8/r8errordata.h"
#include "tests/plugin/librarytest.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"
#include "tests/support/testpeer.h"

namespace tests {
namespace {

using TCalls = std::vector<std::string>;

class TransportCalls : public TLibraryTest {
 protected:
  // Whether the logger exists when the library is asked for its instance.
  template <typename TTransport>
  static bool LoggerComesFirst() {
    LogMessage* const kept = std::exchange(TTestPeer::Singleton(), nullptr);
    bool isThere = false;
    library.onInstance = [&isThere] { isThere = TTestPeer::Singleton() != nullptr; };
    const TTransport transport;
    delete std::exchange(TTestPeer::Singleton(), kept);
    return isThere;
  }
};

TEST_F(TransportCalls, BothTransportsFetchTheLoggerBeforeTheLibrary) {
  EXPECT_TRUE(LoggerComesFirst<IPMIRequestTorgaReg>());
  EXPECT_TRUE(LoggerComesFirst<TNOVRequestTorgaReg>());
  EXPECT_EQ(library.calls, (TCalls{"instance 0", "instance 0", "takes dot commands", "check", "discover"}));
}

class RootCalls : public TPluginLibraryTest {};

TEST_F(RootCalls, ThePluginManagerIsFetchedOnce) {
  EXPECT_EQ(library.pluginManagerCalls, 1);
  plugin->Init();
  plugin->ReadErrFFDC({}, "cpu_err");
  plugin->DeInit();
  EXPECT_EQ(library.pluginManagerCalls, 1);
}

TEST_F(RootCalls, TheCoreLoggerIsFetchedOnceForEveryLine) {
  EXPECT_EQ(library.coreLoggerCalls, 0) << "construction writes nothing";
  const LogMessage& log = *LogMessage::getInstance();
  log.writeError("e");
  log.writeWarning("w");
  log.writeStatus("s");
  log.writeDebug("d");
  log.writeVerbose("v");
  EXPECT_EQ(library.coreLoggerCalls, 5);
  plugin->Init();
  plugin->DeInit();
  EXPECT_EQ(library.coreLoggerCalls, 7);
  plugin->ReadErrFFDC({}, "cpu_err");
  EXPECT_EQ(library.coreLoggerCalls, static_cast<int>(logger.Lines().size()));
}

TEST_F(RootCalls, TheCoreLoggerIsNotFetchedForALineThatIsDropped) {
  const LogMessage& log = *LogMessage::getInstance();
  log.writeDebug("");
  log.writeWin32Error(5);
  LogMessage::setPluginInstance(nullptr);
  log.writeDebug("without a registration");
  EXPECT_EQ(library.coreLoggerCalls, 0);
}

// Records when the clock and the machine type are queried.
class TNotingEnvironment : public IHostEnvironment {
 public:
  std::string MachineType() override {
    library.calls.emplace_back("machine type");
    return "6101";
  }
  TCIMDateTime LocalTime() override {
    library.calls.emplace_back("time");
    return {2026, 1, 31, 12, 34, 56, 0, 60};
  }
};

class ValueCalls : public TPluginLibraryTest {
 protected:
  ValueCalls() {
    ns->AddClass(TClassBuilder("KROSG_DCAPFile").CaptureProperties());
    THostServices::SetEnvironment(&environment);
    library.calls.clear();
    library.notesValues = true;
  }
  ~ValueCalls() override {
    library.notesValues = false;
    THostServices::SetEnvironment(nullptr);
  }

  TNotingEnvironment environment;
  boost::shared_ptr<TNamespace> ns = TNamespace::Create();
};

// Names and raw data are passed as std::string, the two numbers as C strings.
TEST_F(ValueCalls, ACaptureFileStartsWithItsContextAndThenTheTime) {
  unsigned char byte = 0x5A;
  plugin->AddErrFFDCinstance(ns, &byte, 1, "ioh_err", 1);
  EXPECT_EQ(library.calls,
            (TCalls{"string PluginNamespaceProvider", "time", "string ioh_err", "string 5a ", "C string 2",
                    "string KROSG_DCAPFile", "string KROSG_DCAPFile", "string KROSG_DCAPFile", "C string 0"}));
}

TEST_F(ValueCalls, ACaptureFileGivenAsTextMakesTheSameCalls) {
  plugin->AddErrFFDCinstance(ns, std::string("text"), 0, "zyn_err", 9);
  EXPECT_EQ(library.calls,
            (TCalls{"string PluginNamespaceProvider", "time", "string zyn_err", "string text", "C string 10",
                    "string KROSG_DCAPFile", "string KROSG_DCAPFile", "string KROSG_DCAPFile", "C string 0"}));
}

TEST_F(ValueCalls, TheRequestContextIsBuiltBeforeTheMachineTypeIsQueried) {
  std::vector<boost::shared_ptr<ICIMClass>> classes;
  EXPECT_ANY_THROW(plugin->GetData({}, classes));
  EXPECT_EQ(library.calls, (TCalls{"string PluginNamespaceProvider", "machine type"}));
}

// Forwards all calls and records which qualifiers are looked up.
class TNotingProperty : public ICIMPropertyDecl {
 public:
  explicit TNotingProperty(boost::shared_ptr<ICIMPropertyDecl> inner) : inner_(std::move(inner)) {}
  const std::string& GetName(const TPropertyMap& context) const override { return inner_->GetName(context); }
  boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string& name,
                                                      const TPropertyMap& context) const override {
    library.calls.push_back("qualifier " + name);
    return inner_->GetQualifier(name, context);
  }
  TCIMValue::TCIMType GetType(const TPropertyMap& context) const override { return inner_->GetType(context); }
  boost::shared_ptr<ICIMClass> GetClassOrigin(const TPropertyMap& context) const override {
    return inner_->GetClassOrigin(context);
  }

 private:
  boost::shared_ptr<ICIMPropertyDecl> inner_;
};

TEST_F(ValueCalls, OffsetElementsAreReadBeforeTheWidthIsQueried) {
  const auto chip = ns->AddClass(TClassBuilder("CHIP").Register("R", {0x10, 0x20}, 8));
  R8ErrorData collector(chip);
  library.calls.clear();
  collector.getRegisterData(boost::make_shared<TNotingProperty>(chip->Properties()[0]), 0);
  EXPECT_EQ(library.calls, (TCalls{"qualifier Offset", "elements", "qualifier MaxLen"}));
}

}  // namespace
}  // namespace tests
