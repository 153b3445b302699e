#include "host/bmc/inband/inbandserviceprocessor.h"

#include "tests/bmc/inband/scripteddriver.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using namespace tests;
using std::chrono::milliseconds;
using testing::ElementsAre;

class Inband : public testing::Test {
 protected:
  Inband() : driver_(std::make_shared<TScriptedDriver>()) { driver_->AddDevice("/dev/ipmi0").AddDevice("/dev/ipmi1"); }

  TIpmiOutcome Ask(int node, const wire::TCommandBuffer& request) { return Send(Processor(), node, request, stop_); }
  TIpmiOutcome AskRegister(int node = 0) { return Ask(node, Register(0x07, 0x345678)); }
  TInbandServiceProcessor& Processor() {
    if (!processor_) {
      processor_ =
          std::make_unique<TInbandServiceProcessor>(driver_, std::vector<std::string>{"/dev/ipmi0", "/dev/ipmi1"});
    }
    return *processor_;
  }
  void ExpectLost(int node = 0) { ExpectNoAnswer(AskRegister(node)); }

  std::shared_ptr<TScriptedDriver> driver_;
  TStopSignal stop_;
  std::unique_ptr<TInbandServiceProcessor> processor_;
};

TEST_F(Inband, SendsTheRequestsBytesToTheSystemInterface) {
  driver_->Answer(1, {0x00});
  wire::TCommandBuffer request = Register(0x07, 0x345678);
  request[3] = 0x02;
  ExpectAnswer(Ask(1, request), 0x00, {});
  ASSERT_EQ(driver_->Sent().size(), 1U);
  const auto& sent = driver_->Sent().front();
  EXPECT_EQ(sent.descriptor, 101);
  EXPECT_EQ(sent.addressType, 0x0C);
  EXPECT_EQ(sent.channel, 0x0F);
  EXPECT_EQ(sent.lun, 2);
  EXPECT_EQ(sent.networkFunction, 0x3A);
  EXPECT_EQ(sent.command, 0x62);
  EXPECT_THAT(sent.data, ElementsAre(0x07, 0x34, 0x56, 0x78));
}

TEST_F(Inband, GivesTheAnswersBytes) {
  driver_->Answer(1, {0x00, 0xA0, 0xA1});
  ExpectAnswer(AskRegister(), 0x00, {0xA0, 0xA1});
}

TEST_F(Inband, CompletionCodeIsTheAnswersFirstByte) {
  driver_->Answer(1, {0xCB});
  ExpectAnswer(AskRegister(), 0xCB, {});
}

TEST_F(Inband, GroupExtensionRequestPassesUnchanged) {
  driver_->Answer(1, {0xC1, 0x39, 0x30, 0x00});
  ExpectAnswer(Ask(0, Request(0x2E, 0x90, {0x39, 0x30, 0x00})), 0xC1, {0x39, 0x30, 0x00});
  EXPECT_EQ(driver_->Sent().front().networkFunction, 0x2E);
  EXPECT_THAT(driver_->Sent().front().data, ElementsAre(0x39, 0x30, 0x00));
}

TEST_F(Inband, LongestAnswerIsWhole) {
  driver_->Answer(1, TBytes{0x00} + TBytes(247, 0x55));
  ExpectAnswer(AskRegister(), 0x00, TBytes(247, 0x55));
}

TEST_F(Inband, LongerAnswerIsCut) {
  driver_->Answer(1, TBytes{0x00} + TBytes(271, 0x55));
  ExpectAnswer(AskRegister(), 0x00, TBytes(247, 0x55));
}

TEST_F(Inband, RequestHasNoMoreThanTheBufferHolds) {
  driver_->Answer(1, {0x00});
  wire::TCommandBuffer request = Timestamp();
  request[5] = 0xFF;
  ExpectAnswer(Ask(0, request), 0x00, {});
  EXPECT_EQ(driver_->Sent().front().data.size(), 247U);
}

TEST_F(Inband, AnswerWithoutCompletionCodeIsLost) {
  driver_->Answer(1, {});
  ExpectLost();
}

TEST_F(Inband, SilenceEndsTheExchangeAfterTheAnswerTime) {
  ExpectLost();
  EXPECT_LE(driver_->LongestWait(), milliseconds(5000));
  EXPECT_GT(driver_->LongestWait(), milliseconds(4000));
}

TEST_F(Inband, LateAnswerIsNotMistakenForTheNextOne) {
  ExpectLost();
  driver_->Answer(1, {0x00, 0x11}).Answer(2, {0x00, 0x22});
  ExpectAnswer(AskRegister(), 0x00, {0x22});
}

TEST_F(Inband, EventsAndCommandsAreNotAnswers) {
  driver_->Message(IPMI_ASYNC_EVENT_RECV_TYPE, 1, {0x00, 0x11}).Message(IPMI_CMD_RECV_TYPE, 1, {0x00, 0x22});
  driver_->Answer(1, {0x00, 0x33});
  ExpectAnswer(AskRegister(), 0x00, {0x33});
}

TEST_F(Inband, InterruptedWaitContinues) {
  driver_->Answer(1, {0x00, 0x33});
  driver_->OnPoll([](auto) { return -EINTR; });
  ExpectAnswer(AskRegister(), 0x00, {0x33});
}

TEST_F(Inband, WakingWithoutAMessageContinuesTheWait) {
  driver_->Answer(1, {0x00, 0x33});
  driver_->FailNextReceive(EAGAIN);
  ExpectAnswer(AskRegister(), 0x00, {0x33});
}

TEST_F(Inband, StopEndsTheWait) {
  driver_->OnPoll([this](std::span<pollfd> descriptors) {
    EXPECT_EQ(descriptors[1].fd, stop_.Descriptor());
    stop_.RequestStop();
    descriptors[1].revents = POLLIN;
    return 1;
  });
  ExpectLost();
}

TEST_F(Inband, StoppedRunSendsNothing) {
  stop_.RequestStop();
  ExpectLost();
  EXPECT_TRUE(driver_->Sent().empty());
}

TEST_F(Inband, WaitsNoLongerThanTheDeadline) {
  stop_.SetDeadline(TStopSignal::TClock::now() + milliseconds(1500));
  ExpectLost();
  EXPECT_LE(driver_->LongestWait(), milliseconds(1500));
}

TEST_F(Inband, VanishedDeviceIsALostAnswer) {
  driver_->OnPoll([](std::span<pollfd> descriptors) {
    descriptors[0].revents = POLLERR | POLLHUP;
    return 1;
  });
  ExpectLost();
}

TEST_F(Inband, RefusedRequestIsALostAnswer) {
  driver_->RefuseSending(EINVAL);
  ExpectLost();
}

TEST_F(Inband, NodesThatDoNotExistDoNotAnswer) {
  ExpectLost(-1);
  ExpectLost(2);
  EXPECT_TRUE(driver_->Sent().empty());
}

TEST_F(Inband, TakesNoDotCommands) {
  EXPECT_FALSE(Processor().Discover().dotCommands);
  EXPECT_EQ(Processor().Discover().serviceProcessors, 0);
  ExpectNoAnswer(SendDot(Processor(), 0, BlockCommand(4), 4));
}

}  // namespace
}  // namespace tests
