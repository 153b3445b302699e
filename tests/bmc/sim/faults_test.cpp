#include "host/bmc/sim/faults.h"

#include "host/bmc/sim/simulatedserver.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using std::chrono::milliseconds;

/// A server of two nodes and two service processors that counts the exchanges reaching it.
class TCountingServer : public TSimulatedServer {
 public:
  using TSimulatedServer::TSimulatedServer;
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override {
    ++reached;
    return TSimulatedServer::SendIpmi(request, stop);
  }
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override {
    ++reached;
    return TSimulatedServer::SendDot(request, stop);
  }
  int reached = 0;
};

class Faults : public testing::Test {
 protected:
  void With(const std::string& faults, const std::string& before = "") {
    const TServerFile server = ServerFrom("machine_type = \"6203\"\n" + before + faults + R"(
[dot]
service_processor = [{ block = "01 02 03 04" }, { block = "05 06" }]
[[bmc_node]]
timestamp = "12 34 56 78"
register = [{ address = 1, value = "01 02 03 04 05 06 07 08" }]
storage_area = [{ name = "cpu_err", data = "0a ff 00" }]
[[bmc_node]]
timestamp = "9a bc de f0"
)");
    server_ = std::make_unique<TCountingServer>(server);
    faulty_ = std::make_unique<TFaultInjector>(*server_, server.faults);
  }

  TIpmiOutcome Ask(const wire::TCommandBuffer& request, int node = 0) { return Send(*faulty_, node, request); }
  TDotOutcome AskBlock(int serviceProcessor = 0) { return SendDot(*faulty_, serviceProcessor, BlockCommand(4096), 6); }
  TIpmiOutcome AskTimestamp(int node = 0) { return Ask(Timestamp(), node); }
  int Reached() const { return server_->reached; }
  IServiceProcessor& Processor() { return *faulty_; }

  static void ExpectTimestamp(const TIpmiOutcome& outcome) { ExpectAnswer(outcome, 0x00, {0x12, 0x34, 0x56, 0x78}); }

 private:
  std::unique_ptr<TCountingServer> server_;
  std::unique_ptr<TFaultInjector> faulty_;
};

TEST_F(Faults, NoFaultChangesNothing) {
  With("");
  ExpectTimestamp(AskTimestamp());
  EXPECT_EQ(AskBlock().Block(), (TBytes{1, 2, 3, 4}));
  const TDiscovery found = Processor().Discover();
  EXPECT_EQ(found.bmcNodes, 2);
  EXPECT_TRUE(found.ipmiDriver);
  EXPECT_TRUE(found.dotCommands);
  EXPECT_TRUE(found.communicates);
  EXPECT_EQ(found.serviceProcessors, 2);
}

TEST_F(Faults, CompletionCodeComesWithoutData) {
  With("fault = [{ on = \"timestamp\", completion_code = 0xC3 }]");
  ExpectAnswer(AskTimestamp(), 0xC3, {});
  EXPECT_EQ(Reached(), 0);
}

TEST_F(Faults, CompletionCodeOfAnOemGroupRequestComesWithTheManufacturerId) {
  With("fault = [{ on = \"ipmi\", completion_code = 0xFF }]");
  ExpectAnswer(Ask(Open("cpu_err")), 0xFF, {0x39, 0x30, 0x00});
  ExpectAnswer(Ask(Request(0x2E, 0x01, {})), 0xFF, {0x39, 0x30, 0x00});
}

TEST_F(Faults, CompletionCodeMayBeZero) {
  With("fault = [{ on = \"timestamp\", completion_code = 0 }]");
  ExpectAnswer(AskTimestamp(), 0x00, {});
}

TEST_F(Faults, LostLeavesBufferAndLengthAlone) {
  With("fault = [{ on = \"ipmi\", lost = true }, { on = \"dot\", lost = true }]");
  ExpectNoAnswer(AskTimestamp());
  ExpectNoAnswer(AskBlock());
  EXPECT_EQ(Reached(), 0);
}

TEST_F(Faults, TruncateCutsTheAnswerAtEveryLength) {
  const TBytes data = {0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  for (std::size_t size = 9; size <= 30; ++size) {
    With("fault = [{ on = \"register\", truncate = " + std::to_string(size) + " }]");
    const std::size_t kept = std::min<std::size_t>(size - 9, 14);
    ExpectAnswer(Ask(Register(0, 1)), 0x00, TBytes(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(kept)));
  }
}

TEST_F(Faults, TruncateCutsABlockAtEveryLength) {
  const TBytes block = {1, 2, 3, 4, 0xEE, 0xEE};
  for (std::size_t size = 0; size <= 7; ++size) {
    With("fault = [{ on = \"dot\", node = 0, truncate = " + std::to_string(size) + " }]");
    const TDotOutcome outcome = AskBlock();
    const std::size_t kept = std::min<std::size_t>(size, 4);
    EXPECT_EQ(outcome.length, static_cast<int>(kept));
    TBytes expected(6, 0xEE);
    std::copy_n(block.begin(), kept, expected.begin());
    EXPECT_EQ(outcome.buffer, expected);
  }
}

TEST_F(Faults, EachKindMatchesItsRequestOnly) {
  const std::vector<std::pair<std::string, wire::TCommandBuffer>> requests = {
      {"register", Register(0, 1)}, {"timestamp", Timestamp()}, {"open", Open("cpu_err")},
      {"size", Size("cpu_err")},    {"read", Read(1, 0, 3)},    {"close", Close(1)}};
  for (const auto& [on, unused] : requests) {
    With("fault = [{ on = \"" + on + "\", lost = true }]");
    for (const auto& [kind, request] : requests) EXPECT_EQ(Ask(request).answered, kind != on) << on << " " << kind;
    EXPECT_TRUE(AskBlock().answered);
  }
}

TEST_F(Faults, IpmiMatchesAnyIpmiExchangeAndNoDotCommand) {
  With("fault = [{ on = \"ipmi\", lost = true }]");
  ExpectNoAnswer(AskTimestamp());
  ExpectNoAnswer(Ask(Request(0x06, 0x01, {})));
  EXPECT_TRUE(AskBlock().answered);
}

TEST_F(Faults, DotMatchesNoIpmiExchange) {
  With("fault = [{ on = \"dot\", lost = true }]");
  EXPECT_TRUE(AskTimestamp().answered);
  ExpectNoAnswer(AskBlock());
}

TEST_F(Faults, NodeLimitsAFaultToOneNodeOrServiceProcessor) {
  With("fault = [{ on = \"timestamp\", node = 1, lost = true }, { on = \"dot\", node = 0, lost = true }]");
  EXPECT_TRUE(AskTimestamp(0).answered);
  ExpectNoAnswer(AskTimestamp(1));
  ExpectNoAnswer(AskBlock(0));
  EXPECT_EQ(AskBlock(1).Block(), (TBytes{5, 6}));
}

TEST_F(Faults, NthAppliesOnceAtEveryPosition) {
  for (int nth = 1; nth <= 5; ++nth) {
    With("fault = [{ on = \"timestamp\", nth = " + std::to_string(nth) + ", completion_code = 0xC3 }]");
    for (int i = 1; i <= 6; ++i) EXPECT_EQ(AskTimestamp().after[4], i == nth ? 0xC3 : 0x00) << nth << " " << i;
  }
}

TEST_F(Faults, NthCountsMatchingExchangesOfTheWholeRun) {
  With("fault = [{ on = \"timestamp\", node = 1, nth = 2, lost = true }]");
  EXPECT_TRUE(AskTimestamp(1).answered);
  EXPECT_TRUE(AskTimestamp(0).answered);
  EXPECT_TRUE(Ask(Register(0, 1), 1).answered);
  ExpectNoAnswer(AskTimestamp(1));
}

TEST_F(Faults, TheFirstDueIsAppliedAndTheOthersCountToo) {
  With(
      R"(fault = [{ on = "timestamp", nth = 2, completion_code = 0xC2 }, { on = "ipmi", nth = 3, completion_code = 0xC3 },
                   { on = "timestamp", nth = 2, completion_code = 0xC4 }, { on = "ipmi", nth = 4, completion_code = 0xC5 }])");
  const std::array<int, 5> expected = {0x00, 0xC2, 0xC3, 0xC5, 0x00};
  for (const int code : expected) EXPECT_EQ(AskTimestamp().after[4], code);
}

TEST_F(Faults, AFaultWithoutNthHidesThoseAfterIt) {
  With("fault = [{ on = \"timestamp\", completion_code = 0xC1 }, { on = \"timestamp\", lost = true }]");
  ExpectAnswer(AskTimestamp(), 0xC1, {});
  ExpectAnswer(AskTimestamp(), 0xC1, {});
}

TEST_F(Faults, ImpossibleExchangesDoNotCount) {
  With("fault = [{ on = \"timestamp\", nth = 1, lost = true }, { on = \"dot\", nth = 1, lost = true }]");
  ExpectNoAnswer(AskTimestamp(2));
  ExpectNoAnswer(AskTimestamp(-1));
  ExpectNoAnswer(AskBlock(2));
  ExpectNoAnswer(AskBlock(-1));
  ExpectNoAnswer(AskTimestamp(0));
  ExpectNoAnswer(AskBlock(0));
  ExpectTimestamp(AskTimestamp(0));
  EXPECT_TRUE(AskBlock(0).answered);
}

TEST_F(Faults, CannotAnswerWithoutTheDriver) {
  With("fault = [{ on = \"ipmi\", completion_code = 0 }]", "ipmi = { driver_present = false }\n");
  ExpectNoAnswer(AskTimestamp());
}

TEST_F(Faults, DelayAloneChangesNothingButTheTime) {
  With("fault = [{ on = \"timestamp\", delay_ms = 15 }, { on = \"dot\", delay_ms = 15 }]");
  auto start = TStopSignal::TClock::now();
  ExpectTimestamp(AskTimestamp());
  EXPECT_GE(TStopSignal::TClock::now() - start, milliseconds(15));
  start = TStopSignal::TClock::now();
  EXPECT_EQ(AskBlock().Block(), (TBytes{1, 2, 3, 4}));
  EXPECT_GE(TStopSignal::TClock::now() - start, milliseconds(15));
}

TEST_F(Faults, DelayCombinesWithOtherEffects) {
  With("fault = [{ on = \"timestamp\", delay_ms = 15, completion_code = 0xC3 }]");
  const auto start = TStopSignal::TClock::now();
  ExpectAnswer(AskTimestamp(), 0xC3, {});
  EXPECT_GE(TStopSignal::TClock::now() - start, milliseconds(15));
}

TEST_F(Faults, StoppingTheRunEndsTheDelayWithoutAnAnswer) {
  With("fault = [{ on = \"ipmi\", delay_ms = 86400000 }, { on = \"dot\", delay_ms = 86400000, truncate = 1 }]");
  TStopSignal deadline;
  deadline.SetDeadline(TStopSignal::TClock::now() + milliseconds(10));
  ExpectNoAnswer(Send(Processor(), Timestamp(), deadline));
  ExpectNoAnswer(SendDot(Processor(), 0, BlockCommand(4096), 6, deadline));
  EXPECT_EQ(Reached(), 0);
}

}  // namespace
}  // namespace tests
