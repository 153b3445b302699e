#include "host/bmc/record/replay.h"

#include <algorithm>

#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/simulatedserver.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using std::chrono::milliseconds;

/// A recording in memory, called "r.jsonl".
class TMemoryReplay : public TReplay {
 public:
  explicit TMemoryReplay(const std::string& text) : TReplay("r.jsonl", Stored(text)) {}
};

const std::string kServer = R"(
machine_type = "6203"
local_time = 2026-01-31T12:34:56.5+01:00
[dot]
service_processor = [{ block = "01 02 00 00" }, { block = "" }]
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
address = 1
value = "01 02 03 04 05 06 07 08"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "0a ff 00"
[[fault]]
on = "close"
lost = true
)";

/// The outcome of a session, as text: each answer's bytes and length.
class TSession {
 public:
  explicit TSession(IServiceProcessor& processor) : processor_(processor) {}

  void Ask(const wire::TCommandBuffer& request, int node = 0) {
    const TIpmiOutcome outcome = Send(processor_, node, request);
    results.push_back({outcome.answered, TBytes(outcome.after.Data(), outcome.after.Data() + 256), outcome.length});
  }
  void AskBlock(int serviceProcessor) {
    const TDotOutcome outcome = SendDot(processor_, serviceProcessor, BlockCommand(4096), 6);
    results.push_back({outcome.answered, outcome.buffer, outcome.length});
  }
  /// Makes nine exchanges, of which the sixth, seventh and ninth have no answer.
  void Run() {
    Ask(Timestamp());
    Ask(Register(0, 1));
    Ask(Register(0, 2));
    Ask(Open("cpu_err"));
    Ask(Read(1, 0, 10));
    Ask(Close(1));
    Ask(Timestamp(), 5);
    AskBlock(0);
    AskBlock(2);
  }

  struct TResult {
    bool answered;
    TBytes bytes;
    int length;
    bool operator==(const TResult&) const = default;
  };
  std::vector<TResult> results;

 private:
  IServiceProcessor& processor_;
};

/// Records the session against the simulator, with a clock reading at its end.
std::pair<std::string, std::vector<TSession::TResult>> RecordSession() {
  const TServerFile server = ServerFrom(kServer);
  TSimulatedServer simulator(server);
  TFaultInjector faults(simulator, server.faults);
  TSupervisedServiceProcessor supervised(faults);
  TStringSink sink;
  const TRecordedSource source = {{"sim:a.toml"}, "sim:a.toml", true, "then", "S1", "U1"};
  TRecorder recorder(sink, {"6203", "2026-01-31T12:00:00+01:00", 60, supervised.Discover(),
                            TRecordedRun{source, {"A", "B"}, true, "ab12"}});
  supervised.AddObserver(recorder);
  TSession session(supervised);
  session.Run();
  TSimulatedEnvironment simulated(server);
  TRecordingEnvironment(simulated, recorder).LocalTime();
  return {sink.Text(), session.results};
}

TEST(Replay, GivesTheRecordedAnswersByteForByte) {
  const auto [text, recorded] = RecordSession();
  TMemoryReplay replay(text);
  TSession session(replay);
  session.Run();
  EXPECT_EQ(session.results, recorded);
  EXPECT_EQ(replay.LocalTime().ToString(), "20260131123456.500000+060");
  EXPECT_FALSE(replay.Mismatch());
  EXPECT_FALSE(replay.CutWarning());
}

TEST(Replay, SuppliesWhatWasKnownAboutTheServer) {
  TMemoryReplay replay(RecordSession().first);
  EXPECT_TRUE(replay.Recording().HasHeader());
  EXPECT_EQ(replay.MachineType(), "6203");
  EXPECT_EQ(replay.Recording().Header().utcOffsetMinutes, 60);
  const TDiscovery found = replay.Discover();
  EXPECT_EQ(found.bmcNodes, 1);
  EXPECT_TRUE(found.ipmiDriver);
  EXPECT_TRUE(found.dotCommands);
  EXPECT_TRUE(found.communicates);
  EXPECT_EQ(found.serviceProcessors, 2);
}

TEST(Replay, KnowsTheRunThatWasRecorded) {
  const TMemoryReplay replay(RecordSession().first);
  ASSERT_TRUE(replay.Recording().Header().run);
  const TRecordedRun& run = *replay.Recording().Header().run;
  EXPECT_EQ(run.source.sp, std::vector<std::string>{"sim:a.toml"});
  EXPECT_EQ(run.source.target, "sim:a.toml");
  EXPECT_TRUE(run.source.isSimulated);
  EXPECT_EQ(run.source.recorded, "then");
  EXPECT_EQ(run.source.serialNumber, "S1");
  EXPECT_EQ(run.source.uuid, "U1");
  EXPECT_EQ(run.classes, (std::vector<std::string>{"A", "B"}));
  EXPECT_TRUE(run.singleRequest);
  EXPECT_EQ(run.schemaSha256, "ab12");
}

TEST(Replay, ReplaysUpToTheLastWholeLineWhereverItIsCut) {
  const auto [text, recorded] = RecordSession();
  const std::size_t headerEnd = text.find('\n') + 1;
  for (std::size_t size = 0; size < text.size(); ++size) {
    const std::string cut = text.substr(0, size);
    TMemoryReplay replay(cut);
    TSession session(replay);
    session.Run();
    replay.LocalTime();
    const auto whole = static_cast<std::size_t>(std::count(cut.begin(), cut.end(), '\n'));
    const std::size_t exchanges = size < headerEnd ? 0 : std::min<std::size_t>(whole - 1, 9);
    for (std::size_t i = 0; i < 9; ++i) {
      if (i < exchanges) {
        EXPECT_EQ(session.results[i], recorded[i]) << size << " " << i;
      } else {
        EXPECT_FALSE(session.results[i].answered) << size << " " << i;
      }
    }
    EXPECT_FALSE(replay.Mismatch());
    EXPECT_TRUE(replay.CutWarning()) << size;
  }
}

TEST(Replay, IsReadOrRefusedWhateverByteIsChanged) {
  const std::string text = RecordSession().first;
  int refused = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (const char byte : {'\n', '"', '}', '9', '\x80'}) {
      std::string changed = text;
      changed[at] = byte;
      try {
        TMemoryReplay replay(changed);
        TSession(replay).Run();
      } catch (const THostError& error) {
        EXPECT_EQ(error.Kind(), EFailure::kMalformed);
        EXPECT_THAT(error.what(), testing::StartsWith("r.jsonl:"));
        ++refused;
      }
    }
  }
  EXPECT_GT(refused, 1000);
}

// Recordings written by hand.

const std::string kHead =
    R"({"format":"velhost-recording","version":1,"machine_type":"","started":"2026-01-31T12:00:00Z",)"
    R"("utc_offset_minutes":0,"discovery":{"bmc_nodes":1,"ipmi_driver":true,"dot_command":true,"sp_comm":true,)"
    R"("service_processors":1}})"
    "\n";
const std::string kTimestampLine =
    R"({"kind":"ipmi","node":0,"request":"01 20 3a 00 6f","ok":true,"response":"01 20 3a 00 00 04 00 00 00 12 34",)"
    R"("length":13,"us":6000})"
    "\n";
const std::string kBlockLine =
    R"({"kind":"dot","sp":0,"command":2,"identifier":"0e 06","parameters":"00 00 00 10","ok":true,"response":"01 02",)"
    R"("length":4,"us":6000})"
    "\n";
const std::string kClockLine = R"({"kind":"clock","local_time":"2026-01-31T12:34:56-03:30"})"
                               "\n";

TEST(Replay, KnowsNoRunOfARecordingOfVersion1) { EXPECT_FALSE(TMemoryReplay(kHead).Recording().Header().run); }

TEST(Replay, PadsAnswersWithZeros) {
  TMemoryReplay replay(kHead + kTimestampLine + kBlockLine);
  ExpectAnswer(Send(replay, Timestamp()), 0x00, {0x12, 0x34, 0x00, 0x00});
  const TDotOutcome block = SendDot(replay, 0, BlockCommand(4096), 6);
  EXPECT_EQ(block.length, 4);
  EXPECT_EQ(block.buffer, (TBytes{1, 2, 0, 0, 0xEE, 0xEE}));
}

TEST(Replay, NeverWritesPastTheCallersBuffer) {
  TMemoryReplay replay(kHead + kBlockLine);
  EXPECT_EQ(SendDot(replay, 0, BlockCommand(4096), 1).Block(), TBytes{1});
  TMemoryReplay three(kHead + kBlockLine);
  EXPECT_EQ(SendDot(three, 0, BlockCommand(4096), 3).Block(), (TBytes{1, 2, 0}));
}

TEST(Replay, AcceptsAnUnansweredExchangeWithAResponse) {
  TMemoryReplay replay(
      kHead + R"({"kind":"ipmi","node":0,"request":"01 20 3a 00 6f","ok":false,"response":"01","length":5,"us":1})"
              "\n");
  ExpectNoAnswer(Send(replay, Timestamp()));
  EXPECT_FALSE(replay.Mismatch());
}

TEST(Replay, FailsFromTheFirstUnrecordedExchangeOn) {
  TMemoryReplay replay(kHead + kTimestampLine + kTimestampLine);
  EXPECT_TRUE(Send(replay, Timestamp()).answered);
  ExpectNoAnswer(Send(replay, Register(0, 1)));
  ExpectNoAnswer(Send(replay, Timestamp()));
  ExpectNoAnswer(SendDot(replay, 0, BlockCommand(4096), 6));
  EXPECT_EQ(replay.Mismatch(),
            "r.jsonl:3:1: error: found the request \"01 20 3a 00 62 04 00 00 00 00 00 00 01\" to node 0, expected the "
            "request \"01 20 3a 00 6f\" to node 0\n");
  EXPECT_FALSE(replay.CutWarning());
}

TEST(Replay, WhatComesAfterTheLastLineWasNotRecorded) {
  std::string lost = kTimestampLine;
  lost.replace(lost.find("true"), 4, "false");
  TMemoryReplay replay(kHead + lost + kBlockLine);
  ExpectNoAnswer(Send(replay, Timestamp()));
  EXPECT_EQ(replay.WhyNoAnswer(), ENoAnswer::kLost);
  EXPECT_TRUE(SendDot(replay, 0, BlockCommand(4096), 6).answered);
  ExpectNoAnswer(Send(replay, Timestamp()));
  EXPECT_EQ(replay.WhyNoAnswer(), ENoAnswer::kNotRecorded);
  ExpectNoAnswer(SendDot(replay, 0, BlockCommand(4096), 6));
  EXPECT_EQ(replay.WhyNoAnswer(), ENoAnswer::kNotRecorded);
}

TEST(Replay, WhatComesAfterAMismatchWasNotRecorded) {
  std::string lost = kTimestampLine;
  lost.replace(lost.find("true"), 4, "false");
  TMemoryReplay replay(kHead + lost + kTimestampLine);
  ExpectNoAnswer(Send(replay, Timestamp()));
  EXPECT_EQ(replay.WhyNoAnswer(), ENoAnswer::kLost);
  ExpectNoAnswer(Send(replay, 1, Timestamp()));
  EXPECT_EQ(replay.WhyNoAnswer(), ENoAnswer::kNotRecorded);
  ExpectNoAnswer(Send(replay, Timestamp()));
  EXPECT_EQ(replay.WhyNoAnswer(), ENoAnswer::kNotRecorded);
}

TEST(Replay, DescribesTheRequestInEveryKindOfMismatch) {
  TMemoryReplay node(kHead + kTimestampLine);
  ExpectNoAnswer(Send(node, 1, Timestamp()));
  EXPECT_EQ(
      node.Mismatch(),
      "r.jsonl:2:1: error: found the request \"01 20 3a 00 6f\" to node 1, expected the request \"01 20 3a 00 6f\" "
      "to node 0\n");
  TMemoryReplay dot(kHead + kBlockLine);
  ExpectNoAnswer(SendDot(dot, 0, BlockCommand(4095), 6));
  EXPECT_EQ(
      dot.Mismatch(),
      "r.jsonl:2:1: error: found the dot command 2 \"0e 06\" \"00 00 ff 0f\" to service processor 0, expected the "
      "dot command 2 \"0e 06\" \"00 00 00 10\" to service processor 0\n");
  TMemoryReplay kind(kHead + kClockLine);
  ExpectNoAnswer(Send(kind, Timestamp()));
  EXPECT_EQ(kind.Mismatch(),
            "r.jsonl:2:1: error: found the request \"01 20 3a 00 6f\" to node 0, expected a reading of the clock\n");
  TMemoryReplay clock(kHead + kTimestampLine);
  clock.LocalTime();
  EXPECT_EQ(clock.Mismatch(),
            "r.jsonl:2:1: error: found a reading of the clock, expected the request \"01 20 3a 00 6f\" to node 0\n");
}

TEST(Replay, ReadsTheClockInOrderAndRepeatsItIfNothingIsRecorded) {
  TMemoryReplay replay(kHead + kClockLine);
  EXPECT_EQ(replay.LocalTime().ToString(), "20260131123456.000000-210");
  EXPECT_FALSE(replay.CutWarning());
  EXPECT_EQ(replay.LocalTime().ToString(), "20260131123456.000000-210");
  EXPECT_TRUE(replay.CutWarning());
  TMemoryReplay none(kHead);
  EXPECT_EQ(none.LocalTime().ToString(), "20260131120000.000000+000");
}

std::string CutWarningOf(const TReplay& replay) {
  const auto warning = replay.CutWarning();
  return warning ? FormatDiagnostic(*warning) : "none";
}

TEST(Replay, WarnsThatTheRecordingWasCut) {
  TMemoryReplay first(kHead.substr(0, 50));
  EXPECT_FALSE(first.Recording().HasHeader());
  EXPECT_EQ(first.Discover().bmcNodes, 0);
  EXPECT_EQ(CutWarningOf(first),
            "r.jsonl:1:1: warning: the recording was cut in its first line; none of it can be used\n");
  EXPECT_EQ(CutWarningOf(TMemoryReplay("")), CutWarningOf(first));
  EXPECT_EQ(CutWarningOf(TMemoryReplay(kHead + kTimestampLine + "{")),
            "r.jsonl:3:1: warning: the recording was cut in this line; it is used up to the line before\n");
  TMemoryReplay shorter(kHead + kTimestampLine);
  Send(shorter, Timestamp());
  EXPECT_FALSE(shorter.CutWarning());
  ExpectNoAnswer(Send(shorter, Timestamp()));
  EXPECT_EQ(CutWarningOf(shorter),
            "r.jsonl:2:1: warning: the recording ends here, before the collection: it was cut, or less was collected "
            "when it was made\n");
}

TEST(Replay, TakesNoTimeUnlessTold) {
  TMemoryReplay replay(kHead + kTimestampLine + kBlockLine);
  replay.SetTiming(true);
  const auto start = TStopSignal::TClock::now();
  EXPECT_TRUE(Send(replay, Timestamp()).answered);
  EXPECT_TRUE(SendDot(replay, 0, BlockCommand(4096), 6).answered);
  EXPECT_GE(TStopSignal::TClock::now() - start, milliseconds(12));
  std::string slow = kTimestampLine;
  slow.replace(slow.find("6000"), 4, "86400000000");
  TMemoryReplay quick(kHead + slow);
  EXPECT_TRUE(Send(quick, Timestamp()).answered);
}

TEST(Replay, StopsWaitingWhenTheRunIsStopped) {
  std::string slow = kTimestampLine;
  slow.replace(slow.find("6000"), 4, "86400000000");
  TMemoryReplay replay(kHead + slow);
  replay.SetTiming(true);
  TStopSignal stop;
  stop.SetDeadline(TStopSignal::TClock::now() + milliseconds(10));
  ExpectNoAnswer(Send(replay, Timestamp(), stop));
  EXPECT_FALSE(replay.Mismatch());
}

TEST(Replay, KeepsFractionsOfMillisecondsForTheNextWait) {
  std::string text = kHead;
  std::string line = kTimestampLine;
  line.replace(line.find("6000"), 4, "500");
  for (int i = 0; i < 20; ++i) text += line;
  TMemoryReplay replay(text);
  replay.SetTiming(true);
  const auto start = TStopSignal::TClock::now();
  for (int i = 0; i < 20; ++i) Send(replay, Timestamp());
  EXPECT_GE(TStopSignal::TClock::now() - start, milliseconds(10));
}

}  // namespace
}  // namespace tests
