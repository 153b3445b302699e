// The logging facade.
#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <type_traits>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class LogFacade : public TPartTest {
 protected:
  const LogMessage& log = *LogMessage::getInstance();
};

static_assert(sizeof(LogMessage) == sizeof(void*), "an instance holds nothing but its table pointer");
static_assert(std::has_virtual_destructor_v<LogMessage>);

TEST_F(LogFacade, IsASingleton) {
  ASSERT_NE(LogMessage::getInstance(), nullptr);
  EXPECT_EQ(LogMessage::getInstance(), LogMessage::getInstance());
}

TEST_F(LogFacade, DestroyingACopyIsHarmless) {
  { const LogMessage copy(log); }
  log.writeDebug("still here");
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("still here")});
}

TEST_F(LogFacade, SeveritiesAreZeroToFour) {
  log.writeError("e");
  log.writeWarning("w");
  log.writeStatus("s");
  log.writeDebug("d");
  log.writeVerbose("v");
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{{0, "e"}, {1, "w"}, {2, "s"}, {3, "d"}, {4, "v"}}));
}

TEST_F(LogFacade, WriteForwardsAnySeverityAndTheMessageUnchanged) {
  log.write("line 1\nline 2\t\n", ILogger::kStatus);
  log.write(std::string("a\0b", 3), ILogger::kVerbose);
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{{2, "line 1\nline 2\t\n"}, {4, std::string("a\0b", 3)}}));
}

TEST_F(LogFacade, LinesBeforeTheRegistrationAreDropped) {
  LogMessage::setPluginInstance(nullptr);
  log.writeError("early");
  EXPECT_TRUE(logger.Lines().empty());
  LogMessage::setPluginInstance(&pluginManager->provider);
  log.writeError("late");
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Error("late")});
}

TEST_F(LogFacade, EmptyLinesAreDropped) {
  log.writeError("");
  log.writeWarning("");
  log.writeStatus("");
  log.writeDebug("");
  log.writeVerbose("");
  log.write("", ILogger::kError);
  EXPECT_TRUE(logger.Lines().empty());
}

TEST_F(LogFacade, TheCoreLoggerIsFetchedForEveryLine) {
  TRecordingLogger other;
  log.writeDebug("first");
  THostServices::SetCoreLogger(&other);
  log.writeDebug("second");
  EXPECT_EQ(logger.Lines(), std::vector<TLine>{Debug("first")});
  EXPECT_EQ(other.Lines(), std::vector<TLine>{Debug("second")});
}

TEST_F(LogFacade, ExceptionsFromTheHostsLoggerPropagate) {
  logger.FailAt("bad");
  EXPECT_THROW(log.writeDebug("bad"), std::runtime_error);
}

TEST_F(LogFacade, PlatformErrorsHaveNoTextAndWriteNothing) {
  for (const int code : {0, 5, -1, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(log.lookupWin32Error(code), "");
    log.writeWin32Error(code);
  }
  EXPECT_TRUE(logger.Lines().empty());
}

TEST(DataToString, WritesPlainDecimals) {
  EXPECT_EQ(dataToString<int>(42), "42");
  EXPECT_EQ(dataToString<int>(-7), "-7");
  EXPECT_EQ(dataToString<int>(0), "0");
  EXPECT_EQ(dataToString<int>(2147483647), "2147483647");
  EXPECT_EQ(dataToString<int>(std::numeric_limits<int>::min()), "-2147483648");
  EXPECT_EQ(dataToString<unsigned short>(0), "0");
  EXPECT_EQ(dataToString<unsigned short>(65535), "65535");
}

// A process may use a locale that groups digits.
struct TGrouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(DataToString, IgnoresTheLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new TGrouping()));
  EXPECT_EQ(dataToString<int>(1234567), "1234567");
  EXPECT_EQ(dataToString<unsigned short>(65535), "65535");
  std::locale::global(before);
}

}  // namespace
}  // namespace tests
