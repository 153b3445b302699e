#include "host/bmc/record/recording.h"

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/bmc/sim/simulatedserver.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {

namespace {

using std::chrono::microseconds;

/// Collects what is written; fails from a chosen write on.
class TMemorySink : public ITextSink {
 public:
  void Write(std::string_view part) override {
    if (writes_++ >= failFrom) throw THostError(EFailure::kNotWritten, "the disk is full");
    text += part;
  }
  std::string text;
  int failFrom = 1000;

 private:
  int writes_ = 0;
};

TRecordingHeader Header() { return {"6203", "2026-01-31T12:34:56+01:00", 60, {1, true, true, true, 2}}; }

const std::string kHeaderLine =
    R"({"format":"velhost-recording","version":1,"machine_type":"6203","started":"2026-01-31T12:34:56+01:00",)"
    R"("utc_offset_minutes":60,"discovery":{"bmc_nodes":1,"ipmi_driver":true,"dot_command":true,"sp_comm":true,)"
    R"("service_processors":2}})"
    "\n";

class Recording : public testing::Test {
 protected:
  /// What was written after the first line.
  std::string Lines() const { return sink_.text.substr(kHeaderLine.size()); }

  TMemorySink sink_;
  TRecorder recorder_{sink_, Header()};
};

TEST_F(Recording, BeginsWithWhatIsKnownAboutTheServer) {
  recorder_.OnIpmi({TIpmiRequest(0, Timestamp()), nullptr, microseconds(0)});
  EXPECT_THAT(sink_.text, testing::StartsWith(kHeaderLine + R"({"kind":"ipmi",)"));
}

/// Without its newline.
std::string FirstLineOf(const TRecordingHeader& header) {
  TMemorySink sink;
  TRecorder recorder(sink, header);
  recorder.OnClock(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 0));
  return sink.text.substr(0, sink.text.find('\n'));
}

TEST(RecordingHeader, DescribesItsRunFromVersion2On) {
  TRecordingHeader header = Header();
  header.run.emplace();
  header.run->source = {{"lan:a@10.0.0.1", "lan:10.0.0.2"}, "lan:10.0.0.1,lan:10.0.0.2", false, "", "S1", "U1"};
  header.run->classes = {"KROSG_A", "KROSG_DCAPFile"};
  header.run->singleRequest = true;
  header.run->schemaSha256 = "ab12";
  EXPECT_EQ(FirstLineOf(header),
            R"({"format":"velhost-recording","version":2,"machine_type":"6203","started":"2026-01-31T12:34:56+01:00",)"
            R"("utc_offset_minutes":60,"source":{"sp":["lan:a@10.0.0.1","lan:10.0.0.2"],)"
            R"("target":"lan:10.0.0.1,lan:10.0.0.2","simulated":false,"server":{"serial":"S1","uuid":"U1"}},)"
            R"("classes":["KROSG_A","KROSG_DCAPFile"],"single_request":true,"schema_sha256":"ab12",)"
            R"("discovery":{"bmc_nodes":1,"ipmi_driver":true,"dot_command":true,"sp_comm":true,)"
            R"("service_processors":2}})");
}

TEST(RecordingHeader, LeavesOutWhatIsUnknown) {
  TRecordingHeader header = Header();
  header.run.emplace();
  header.run->source = {{"replay:r.jsonl"}, "replay:r.jsonl", true, "2026-01-30", "", ""};
  EXPECT_THAT(
      FirstLineOf(header),
      testing::HasSubstr(R"("source":{"sp":["replay:r.jsonl"],"target":"replay:r.jsonl","simulated":true,)"
                         R"("recorded":"2026-01-30"},"classes":[],"single_request":false,"schema_sha256":"",)"));
}

TEST_F(Recording, IsEmptyUntilTheFirstExchangeThatWasAttempted) {
  EXPECT_EQ(sink_.text, "");
  recorder_.OnIpmi({TIpmiRequest(0, Timestamp()), nullptr, microseconds(0), ENoAnswer::kNotSent});
  recorder_.OnDot({{0, BlockCommand(1), 1}, nullptr, microseconds(0), ENoAnswer::kNotSent});
  EXPECT_EQ(sink_.text, "");
  recorder_.OnDot({{0, BlockCommand(1), 1}, nullptr, microseconds(0)});
  recorder_.OnIpmi({TIpmiRequest(0, Timestamp()), nullptr, microseconds(0), ENoAnswer::kNotSent});
  EXPECT_EQ(std::count(sink_.text.begin(), sink_.text.end(), '\n'), 3);
}

TEST_F(Recording, BeginsWithAReadingOfTheClockToo) {
  recorder_.OnClock(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 0));
  EXPECT_EQ(sink_.text, kHeaderLine + "{\"kind\":\"clock\",\"local_time\":\"2026-01-31T12:34:56+00:00\"}\n");
}

TEST_F(Recording, EscapesAnyMachineType) {
  TMemorySink sink;
  TRecorder recorder(sink, {"6\"2\n\xFF", "", -210, {}});
  recorder.OnDot({{0, BlockCommand(1), 1}, nullptr, microseconds(0)});
  EXPECT_EQ(sink.text.substr(0, sink.text.find('\n') + 1),
            R"({"format":"velhost-recording","version":1,"machine_type":"6\"2\n)"
            "\xEF\xBF\xBD"
            R"(","started":"","utc_offset_minutes":-210,"discovery":{"bmc_nodes":0,"ipmi_driver":false,)"
            R"("dot_command":false,"sp_comm":false,"service_processors":0}})"
            "\n");
}

TEST_F(Recording, HoldsAnIpmiExchangeWithoutTrailingZeros) {
  const TIpmiRequest request(0, Register(7, 0xABCD00));
  const TIpmiAnswer answer = {0x00, {9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22}};
  recorder_.OnIpmi({request, &answer, microseconds(812)});
  EXPECT_EQ(Lines(),
            R"({"kind":"ipmi","node":0,"request":"01 20 3a 00 62 04 00 00 00 07 ab cd","ok":true,)"
            R"("response":"01 20 3a 00 00 0e 00 00 00 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16","length":23,"us":812})"
            "\n");
}

TEST_F(Recording, HoldsAnExchangeWithoutAnAnswer) {
  recorder_.OnIpmi({TIpmiRequest(3, Timestamp()), nullptr, microseconds(0)});
  recorder_.OnIpmi({TIpmiRequest(-1, wire::TCommandBuffer()), nullptr, microseconds(1)});
  recorder_.OnDot({{1, BlockCommand(4096), 4096}, nullptr, microseconds(7)});
  EXPECT_EQ(Lines(),
            R"({"kind":"ipmi","node":3,"request":"01 20 3a 00 6f","ok":false,"us":0})"
            "\n"
            R"({"kind":"ipmi","node":-1,"request":"","ok":false,"us":1})"
            "\n"
            R"({"kind":"dot","sp":1,"command":2,"identifier":"0e 06","parameters":"00 00 00 10","ok":false,"us":7})"
            "\n");
}

TEST_F(Recording, HoldsADotCommandWithItsWholeBlock) {
  const TDotAnswer block = {{0x00, 0xFF, 0x00}};
  const TDotAnswer empty;
  recorder_.OnDot({{0, BlockCommand(4096), 4096}, &block, microseconds(90312)});
  recorder_.OnDot({{0, BlockCommand(4096), 4096}, &empty, microseconds(1)});
  EXPECT_EQ(Lines(), R"({"kind":"dot","sp":0,"command":2,"identifier":"0e 06","parameters":"00 00 00 10","ok":true,)"
                     R"("response":"00 ff 00","length":3,"us":90312})"
                     "\n"
                     R"({"kind":"dot","sp":0,"command":2,"identifier":"0e 06","parameters":"00 00 00 10","ok":true,)"
                     R"("response":"","length":0,"us":1})"
                     "\n");
}

TEST_F(Recording, HoldsEachReadingOfTheClock) {
  const TServerFile server = ServerFrom("machine_type = \"4411\"\nlocal_time = 2026-01-31T12:34:56.000789-03:30");
  TSimulatedEnvironment simulated(server);
  TRecordingEnvironment environment(simulated, recorder_);
  EXPECT_EQ(environment.MachineType(), "4411");
  EXPECT_EQ(environment.LocalTime().ToString(), "20260131123456.000789-210");
  EXPECT_EQ(Lines(), "{\"kind\":\"clock\",\"local_time\":\"2026-01-31T12:34:56.000789-03:30\"}\n");
}

TEST_F(Recording, EndsAtTheFirstFailedWrite) {
  sink_.failFrom = 2;
  for (int i = 0; i < 3; ++i) recorder_.OnDot({{0, BlockCommand(1), 1}, nullptr, microseconds(i)});
  EXPECT_THAT(Lines(), testing::EndsWith("\"us\":0}\n"));
  ASSERT_TRUE(recorder_.Failure());
  EXPECT_EQ(recorder_.Failure()->Kind(), EFailure::kNotWritten);
  EXPECT_STREQ(recorder_.Failure()->what(), "the disk is full");
}

TEST_F(Recording, IsWholeUnlessAWriteFailed) {
  recorder_.OnDot({{0, BlockCommand(1), 1}, nullptr, microseconds(0)});
  EXPECT_FALSE(recorder_.Failure());
}

TEST_F(Recording, MayFailInItsFirstLine) {
  sink_.failFrom = 0;
  recorder_.OnDot({{0, BlockCommand(1), 1}, nullptr, microseconds(0)});
  ASSERT_TRUE(recorder_.Failure());
  EXPECT_STREQ(recorder_.Failure()->what(), "the disk is full");
}

class RecordingFile : public testing::Test {
 protected:
  std::string Path() const { return folder_.Path() / "r.jsonl"; }
  std::string Content() const { return folder_.Read("r.jsonl"); }

 private:
  TTemporaryFolder folder_;
};

TEST_F(RecordingFile, ReplacesWhatWasThereWithItsFirstWrite) {
  std::ofstream(Path()) << "something longer than the recording";
  TRecordingFile file(Path());
  EXPECT_EQ(Content(), "something longer than the recording");
  file.Write("a\n");
  file.Write("b\n");
  EXPECT_EQ(Content(), "a\nb\n");
}

TEST_F(RecordingFile, IsCreatedByItsFirstWrite) {
  TRecordingFile file(Path());
  EXPECT_FALSE(std::filesystem::exists(Path()));
  file.Write("a\n");
  EXPECT_EQ(Content(), "a\n");
}

TEST_F(RecordingFile, SaysAtOnceThatItCannotBeCreated) {
  const auto failure = [](const std::string& path) {
    return MessageOf([&] { TRecordingFile{path}; }, EFailure::kNotCreated);
  };
  const std::string missing = Path() + "/no";
  EXPECT_EQ(failure(missing), "cannot create " + missing + ": No such file or directory");
  std::filesystem::create_directory(Path());
  EXPECT_EQ(failure(Path()), "cannot create " + Path() + ": Is a directory");
  std::ofstream(Path() + "/file") << "";
  EXPECT_EQ(failure(Path() + "/file/no"), "cannot create " + Path() + "/file/no: Not a directory");
}

TEST_F(RecordingFile, SaysLateThatItCannotBeCreatedAnyMore) {
  std::filesystem::create_directory(Path());
  TRecordingFile file(Path() + "/r");
  std::filesystem::remove(Path());
  ExpectHostError(EFailure::kNotCreated, "cannot create " + Path() + "/r: No such file or directory",
                  [&] { file.Write("a\n"); });
}

TEST_F(RecordingFile, SaysThatItCannotBeWritten) {
  TRecordingFile full("/dev/full");
  ExpectHostError(EFailure::kNotWritten, "cannot write to /dev/full: No space left on device",
                  [&] { full.Write("a\n"); });
}

TEST_F(RecordingFile, LosesNoMoreThanTheEndOfItsLastLineWhenItsProcessIsKilled) {
  const pid_t child = fork();
  if (child == 0) {
    TRecordingFile file(Path());
    const std::string line = std::string(997, 'x') + "y\n";
    for (;;) file.Write(line);
  }
  std::error_code none;
  while (!(std::filesystem::file_size(Path(), none) > 100'000) || none) usleep(100);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  // The kernel may end a write at a page boundary: what follows the last whole line is the beginning of the next.
  std::ifstream file(Path(), std::ios::binary);
  std::string content((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_GT(content.size(), 100'000U);
  const std::string line = std::string(997, 'x') + "y\n";
  while (content.size() >= line.size()) {
    ASSERT_EQ(content.compare(0, line.size(), line), 0);
    content.erase(0, line.size());
  }
  EXPECT_EQ(line.compare(0, content.size(), content), 0);
}

class UtcOffset : public testing::TestWithParam<int> {
 protected:
  void TearDown() override {
    if (before_.empty()) {
      unsetenv("TZ");
    } else {
      setenv("TZ", before_.c_str(), 1);
    }
    tzset();
  }

 private:
  std::string before_ = getenv("TZ") == nullptr ? "" : getenv("TZ");
};

TEST_P(UtcOffset, AppliesToTheWholeProcess) {
  ApplyUtcOffset(GetParam());
  EXPECT_EQ(timezone, -60L * GetParam());
  EXPECT_EQ(daylight, 0);
  EXPECT_EQ(ProcessUtcOffsetMinutes(), GetParam());
  std::time_t moment = 1'000'000'000;
  tm local = {};
  localtime_r(&moment, &local);
  EXPECT_EQ(local.tm_gmtoff, 60L * GetParam());
}

INSTANTIATE_TEST_SUITE_P(Minutes, UtcOffset, testing::Values(0, 60, -300, 345, -210, 840, -720, 1439, -1439, 1, -1));

TEST(UtcOffsetSign, IsPositiveEastOfGreenwich) {
  setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
  EXPECT_EQ(ProcessUtcOffsetMinutes(), -300);
  setenv("TZ", "CET-1CEST", 1);
  EXPECT_EQ(ProcessUtcOffsetMinutes(), 60);
  unsetenv("TZ");
  tzset();
}

}  // namespace
}  // namespace tests
