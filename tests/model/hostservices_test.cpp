#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <cstdlib>
#include <ctime>

#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
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

TEST(TraceLogger, SeveritiesHaveNames) {
  EXPECT_STREQ(TTraceLogger::SeverityName(ILogger::kError), "error");
  EXPECT_STREQ(TTraceLogger::SeverityName(ILogger::kWarning), "warning");
  EXPECT_STREQ(TTraceLogger::SeverityName(ILogger::kStatus), "status");
  EXPECT_STREQ(TTraceLogger::SeverityName(ILogger::kDebug), "debug");
  EXPECT_STREQ(TTraceLogger::SeverityName(ILogger::kVerbose), "verbose");
}

TEST(TraceLogger, SeverityNumbersAreTheContracts) {
  EXPECT_EQ(static_cast<int>(ILogger::kError), 0);
  EXPECT_EQ(static_cast<int>(ILogger::kWarning), 1);
  EXPECT_EQ(static_cast<int>(ILogger::kStatus), 2);
  EXPECT_EQ(static_cast<int>(ILogger::kDebug), 3);
  EXPECT_EQ(static_cast<int>(ILogger::kVerbose), 4);
}

TEST(TraceLogger, AnotherNumberIsUnknown) {
  for (const int severity : {-1, 5, 1000}) {
    EXPECT_STREQ(TTraceLogger::SeverityName(static_cast<ILogger::EVELLogSeverity>(severity)), "unknown");
  }
}

TEST(TraceLogger, ALineStartsWithItsSeverity) {
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kDebug, "Entered torgareg request."),
            "debug Entered torgareg request.\n");
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kError, ""), "error \n");
}

TEST(TraceLogger, OneTrailingNewlineIsDropped) {
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kDebug, "Returned Data:\n"), "debug Returned Data:\n");
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kDebug, "a\n\n"), "debug a\n  \n");
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kDebug, "\n"), "debug \n");
}

TEST(TraceLogger, FurtherLinesAreIndented) {
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kVerbose, "\n1 2 \n3 4 \n"), "verbose \n  1 2 \n  3 4 \n");
}

TEST(TraceLogger, OtherCharactersStayAsTheyAre) {
  EXPECT_EQ(TTraceLogger::FormatText(ILogger::kStatus, "a\tb\r\xC3\xA9"), "status a\tb\r\xC3\xA9\n");
}

TEST(TraceLogger, EachSinkGetsWhatIsImportantEnoughInOrder) {
  TTraceLogger logger;
  std::string seen;
  logger.AddSink(ILogger::kWarning, [&seen](ILogger::EVELLogSeverity, const std::string& text) { seen += "1" + text; });
  logger.AddSink(ILogger::kVerbose, [&seen](ILogger::EVELLogSeverity, const std::string& text) { seen += "2" + text; });
  logger.Log(ILogger::kError, "e ");
  logger.Log(ILogger::kWarning, "w ");
  logger.Log(ILogger::kStatus, "s ");
  logger.Log(ILogger::kVerbose, "v ");
  EXPECT_EQ(seen, "1e 2e 1w 2w 2s 2v ");
}

TEST(TraceLogger, MessagesReachTheSinkByteForByte) {
  TTraceLogger logger;
  std::string seen;
  auto severity = ILogger::kVerbose;
  logger.AddSink(ILogger::kDebug, [&](ILogger::EVELLogSeverity given, const std::string& text) {
    severity = given;
    seen = text;
  });
  const std::string message("\tnewline\n and zero \0 byte\n", 26);
  logger.Log(ILogger::kDebug, message);
  EXPECT_EQ(seen, message);
  EXPECT_EQ(severity, ILogger::kDebug);
}

TEST(TraceLogger, WithoutASinkLinesGoNowhere) {
  TTraceLogger logger;
  EXPECT_NO_THROW(logger.Log(ILogger::kError, "unheard"));
}

}  // namespace
}  // namespace tests
