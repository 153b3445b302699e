#include "host/model/hostservices.h"

#include <gtest/gtest.h>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

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
