#include "host/model/hostservices.h"

#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <cstdlib>
#include <ctime>

#include "host/model/cimnamespace.h"
#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tosspecific.h"
#include "nkrovel20/trootobject.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class TFixedEnvironment : public IHostEnvironment {
 public:
  std::string MachineType() override { return "6203"; }
  TCIMDateTime LocalTime() override { return TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60); }
};

class HostServices : public testing::Test {
 protected:
  ~HostServices() override {
    THostServices::SetPluginManager({});
    THostServices::SetCoreLogger(nullptr);
    THostServices::SetEnvironment(nullptr);
  }
};

TEST_F(HostServices, WithoutAHostThereIsNoPluginManagerAndNoMachineType) {
  EXPECT_FALSE(TRootObject::GetPluginManager());
  EXPECT_EQ(TOSSpecific::GetMachineTypeFromID(), "");
}

TEST_F(HostServices, WithoutAHostLogLinesAreDropped) {
  ILogger* const logger = TRootObject::GetCoreLogger();
  ASSERT_NE(logger, nullptr);
  EXPECT_NO_THROW(logger->Log(ILogger::kError, "dropped"));
  EXPECT_EQ(TRootObject::GetCoreLogger(), logger);
}

TEST_F(HostServices, AnInstalledPluginManagerIsReturnedUntilRemoved) {
  const boost::shared_ptr<ICIMNamespace> manager = TNamespace::Create();
  THostServices::SetPluginManager(manager);
  EXPECT_EQ(TRootObject::GetPluginManager(), manager);
  THostServices::SetPluginManager({});
  EXPECT_FALSE(TRootObject::GetPluginManager());
}

TEST_F(HostServices, AnInstalledLoggerGetsTheLines) {
  TTraceLogger logger;
  std::string seen;
  logger.AddSink(ILogger::kVerbose, [&seen](ILogger::EVELLogSeverity, const std::string& text) { seen += text; });
  THostServices::SetCoreLogger(&logger);
  TRootObject::GetCoreLogger()->Log(ILogger::kDebug, "heard");
  THostServices::SetCoreLogger(nullptr);
  TRootObject::GetCoreLogger()->Log(ILogger::kDebug, "not heard");
  EXPECT_EQ(seen, "heard");
}

TEST_F(HostServices, AnInstalledEnvironmentIsUsed) {
  TFixedEnvironment environment;
  THostServices::SetEnvironment(&environment);
  EXPECT_EQ(TOSSpecific::GetMachineTypeFromID(), "6203");
  EXPECT_EQ(TOSSpecific::GetLocalTime().ToString(), "20260131123456.000000+060");
}

TEST_F(HostServices, TheSchemaHelperAsksTheNamespace) {
  const auto cimNamespace = TNamespace::Create();
  EXPECT_EQ(TCIMSchemaHelper::GetMachineType(cimNamespace), "");
  cimNamespace->SetMachineType("4411");
  EXPECT_EQ(TCIMSchemaHelper::GetMachineType(cimNamespace), "4411");
  EXPECT_FALSE(TCIMSchemaHelper::kContextName.empty());
  EXPECT_FALSE(TCIMSchemaHelper::kPluginNSPName.empty());
}

// The time is unpredictable, but its zone is known.
TEST_F(HostServices, TheSystemTimeIsInTheZoneOfTheProcess) {
  setenv("TZ", "XYZ-5:30", 1);
  tzset();
  const std::string text = TOSSpecific::GetLocalTime().ToString();
  unsetenv("TZ");
  tzset();
  EXPECT_EQ(text.size(), 25U);
  EXPECT_EQ(text.substr(21), "+330");
  EXPECT_GE(text.substr(0, 4), "2024");
  EXPECT_NO_THROW(TCIMDateTime::FromString(text));
}

}  // namespace
}  // namespace tests
