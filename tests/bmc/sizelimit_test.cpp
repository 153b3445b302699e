// A storage area over a limit is lost to the collector, but to nobody else.
#include "host/bmc/supervision.h"

#include "host/bmc/sim/simulatedserver.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

class SizeLimit : public testing::Test, private IExchangeObserver {
 protected:
  /// A node with one area of each size, called "a0", "a1", ...
  void With(const std::vector<std::string>& sizes) {
    std::string text = "machine_type = \"\"\n[[bmc_node]]\n";
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      text +=
          "[[bmc_node.storage_area]]\nname = \"a" + std::to_string(i) + "\"\ndata = \"\"\nsize = " + sizes[i] + "\n";
    }
    server_ = std::make_unique<TSimulatedServer>(ServerFrom(text));
    supervised_ = std::make_unique<TSupervisedServiceProcessor>(*server_);
    supervised_->AddObserver(*this);
    limit_ = std::make_unique<TSizeLimit>(*supervised_);
    limit_->SetRefusalCallback([this](const std::string& sentence) {
      refusals.push_back(sentence);
      log += "refused; ";
    });
  }
  TIpmiOutcome Ask(int area) { return Send(*limit_, Size("a" + std::to_string(area))); }
  TSizeLimit& Limit() { return *limit_; }
  int Answered() const { return answered_; }
  /// The order of events for observers, for the callback and for the collector.
  std::string log;
  std::vector<std::string> refusals;

 private:
  void OnIpmi(const TIpmiExchange& exchange) override {
    answered_ += exchange.answer != nullptr ? 1 : 0;
    log += "observed; ";
  }
  void OnDot(const TDotExchange& /*exchange*/) override {}

  std::unique_ptr<TSimulatedServer> server_;
  std::unique_ptr<TSupervisedServiceProcessor> supervised_;
  std::unique_ptr<TSizeLimit> limit_;
  int answered_ = 0;
};

TEST_F(SizeLimit, PassesSizesAtTheLimitOrNotPositive) {
  With({"33554432", "0", "-1", "-2147483648"});
  ExpectAnswer(Ask(0), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00, 0x00, 0x02});
  ExpectAnswer(Ask(1), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00, 0x00, 0x00});
  ExpectAnswer(Ask(2), 0x00, {0x39, 0x30, 0x00, 0xFF, 0xFF, 0xFF, 0xFF});
  ExpectAnswer(Ask(3), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00, 0x00, 0x80});
  EXPECT_TRUE(refusals.empty());
}

TEST_F(SizeLimit, HidesLargerSizesFromTheCollectorAlone) {
  With({"33554433", "2147483647"});
  ExpectNoAnswer(Ask(0));
  ExpectNoAnswer(Ask(1));
  EXPECT_EQ(Answered(), 2);
  EXPECT_EQ(refusals, (std::vector<std::string>{
                          "node 0, storage area a0 reports 33554433 bytes, over the limit of 32 MiB: not read",
                          "node 0, storage area a1 reports 2147483647 bytes, over the limit of 32 MiB: not read"}));
}

TEST_F(SizeLimit, TellsOfARefusalBeforeTheAnswerIsHidden) {
  With({"33554433", "0"});
  log += Ask(0).answered ? "answered" : "hidden";
  EXPECT_EQ(log, "observed; refused; hidden");
  log.clear();
  log += Ask(1).answered ? "answered" : "hidden";
  EXPECT_EQ(log, "observed; answered");
}

TEST_F(SizeLimit, CountsTheAreasOfARequestTogether) {
  With({"33554432", "8388607", "2", "1"});
  EXPECT_TRUE(Ask(0).answered);
  EXPECT_TRUE(Ask(1).answered);
  ExpectNoAnswer(Ask(2));
  EXPECT_TRUE(Ask(3).answered);
  ExpectNoAnswer(Ask(3));
  EXPECT_EQ(refusals,
            (std::vector<std::string>{"node 0, storage area a2 reports 2 bytes, which with those before it exceeds the "
                                      "limit of 40 MiB for one request: not read",
                                      "node 0, storage area a3 reports 1 bytes, which with those before it exceeds the "
                                      "limit of 40 MiB for one request: not read"}));
  Limit().BeginRequest();
  EXPECT_TRUE(Ask(0).answered);
}

TEST_F(SizeLimit, LeavesOtherAnswersAlone) {
  With({"2147483647"});
  ExpectAnswer(Send(Limit(), Open("a0")), 0x00, {0x39, 0x30, 0x00, 0x01, 0x00, 0x00, 0x00});
  ExpectAnswer(Send(Limit(), Size("none")), 0xCB, {0x39, 0x30, 0x00});
  ExpectNoAnswer(Send(Limit(), 1, Size("a0")));
  EXPECT_TRUE(refusals.empty());
}

}  // namespace
}  // namespace tests
