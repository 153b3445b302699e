#include "host/bmc/inband/inbandserviceprocessor.h"

#include <gmock/gmock.h>

#include "tests/bmc/inband/scripteddriver.h"
#include "tests/support/namespaces.h"
#include "wire/registerread.h"

namespace tests {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

class Inband : public testing::Test {
 protected:
  Inband() : driver_(std::make_shared<TScriptedDriver>()) { driver_->AddDevice("/dev/ipmi0").AddDevice("/dev/ipmi1"); }

  /// A register read of chip 7, address 0x345678.
  static wire::TCommandBuffer RegisterRead() {
    wire::TCommandBuffer buffer(0x3A, 0x62, 4);
    buffer[9] = 0x07;
    buffer[10] = 0x34;
    buffer[11] = 0x56;
    buffer[12] = 0x78;
    return buffer;
  }
  bool Send(int node, wire::TCommandBuffer& buffer) { return Processor().SendIpmi(node, buffer, length_, stop_); }
  TInbandServiceProcessor& Processor() {
    if (!processor_) {
      processor_ =
          std::make_unique<TInbandServiceProcessor>(driver_, std::vector<std::string>{"/dev/ipmi0", "/dev/ipmi1"});
    }
    return *processor_;
  }
  /// The exchange fails and leaves buffer and length as they were.
  void ExpectLost(int node = 0) {
    const wire::TCommandBuffer before = RegisterRead();
    wire::TCommandBuffer buffer = before;
    EXPECT_FALSE(Send(node, buffer));
    EXPECT_EQ(buffer, before);
    EXPECT_EQ(length_, 256);
  }

  std::shared_ptr<TScriptedDriver> driver_;
  TStopSignal stop_;
  int length_ = 256;
  std::unique_ptr<TInbandServiceProcessor> processor_;
};

TEST_F(Inband, SendsTheRequestsBytesToTheSystemInterface) {
  driver_->Answer(1, {0x00});
  wire::TCommandBuffer buffer = RegisterRead();
  buffer[3] = 0x02;
  ASSERT_TRUE(Send(1, buffer));
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

TEST_F(Inband, PutsTheAnswerInPlace) {
  driver_->Answer(1, {0x00, 0xA0, 0xA1});
  wire::TCommandBuffer buffer = RegisterRead();
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(length_, 11);
  EXPECT_THAT(TBytes(buffer.Data(), buffer.Data() + 14),
              ElementsAre(0x01, 0x20, 0x3A, 0x00, 0x00, 0x02, 0, 0, 0, 0xA0, 0xA1, 0, 0, 0));
  EXPECT_EQ(TBytes(buffer.Data() + 11, buffer.Data() + 256), TBytes(245, 0));
}

TEST_F(Inband, CompletionCodeIsTheAnswersFirstByte) {
  driver_->Answer(1, {0xCB});
  wire::TCommandBuffer buffer = RegisterRead();
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(buffer.CompletionCode(), 0xCB);
  EXPECT_EQ(buffer.DataLength(), 0);
  EXPECT_EQ(length_, 9);
}

TEST_F(Inband, GroupExtensionRequestPassesAsItIs) {
  driver_->Answer(1, {0xC1, 0x39, 0x30, 0x00});
  wire::TCommandBuffer buffer(0x2E, 0x90, 3);
  buffer[9] = 0x39;
  buffer[10] = 0x30;
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(driver_->Sent().front().networkFunction, 0x2E);
  EXPECT_THAT(driver_->Sent().front().data, ElementsAre(0x39, 0x30, 0x00));
  EXPECT_EQ(length_, 12);
}

TEST_F(Inband, LongestAnswerFillsTheBuffer) {
  TBytes answer(248, 0x55);
  answer[0] = 0x00;
  driver_->Answer(1, answer);
  wire::TCommandBuffer buffer = RegisterRead();
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(length_, 256);
  EXPECT_EQ(buffer.DataLength(), 247);
  EXPECT_EQ(buffer[255], 0x55);
  EXPECT_EQ(buffer[256], 0x00);
}

TEST_F(Inband, LongerAnswerIsCut) {
  TBytes answer(272, 0x55);
  answer[0] = 0x00;
  driver_->Answer(1, answer);
  wire::TCommandBuffer buffer = RegisterRead();
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(length_, 256);
  EXPECT_EQ(buffer.DataLength(), 247);
  EXPECT_EQ(buffer[255], 0x55);
  EXPECT_EQ(buffer[256], 0x00);
}

TEST_F(Inband, RequestSaysNoMoreThanTheBufferHolds) {
  driver_->Answer(1, {0x00});
  wire::TCommandBuffer buffer = RegisterRead();
  buffer[5] = 0xFF;
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(driver_->Sent().front().data.size(), 247U);
}

TEST_F(Inband, AnswerWithoutCompletionCodeIsNone) {
  driver_->Answer(1, {});
  ExpectLost();
}

TEST_F(Inband, SilenceEndsTheExchangeAfterTheAnswerTime) {
  ExpectLost();
  EXPECT_LE(driver_->LongestWait(), milliseconds(5000));
  EXPECT_GT(driver_->LongestWait(), milliseconds(4000));
}

TEST_F(Inband, LateAnswerIsNotTakenForTheNextOne) {
  ExpectLost();
  driver_->Answer(1, {0x00, 0x11}).Answer(2, {0x00, 0x22});
  wire::TCommandBuffer buffer = RegisterRead();
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(buffer[9], 0x22);
}

TEST_F(Inband, EventsAndCommandsAreNoAnswers) {
  driver_->Message(IPMI_ASYNC_EVENT_RECV_TYPE, 1, {0x00, 0x11}).Message(IPMI_CMD_RECV_TYPE, 1, {0x00, 0x22});
  driver_->Answer(1, {0x00, 0x33});
  wire::TCommandBuffer buffer = RegisterRead();
  ASSERT_TRUE(Send(0, buffer));
  EXPECT_EQ(buffer[9], 0x33);
}

TEST_F(Inband, InterruptedWaitingGoesOn) {
  driver_->Answer(1, {0x00, 0x33});
  driver_->OnPoll([](auto) { return -EINTR; });
  wire::TCommandBuffer buffer = RegisterRead();
  EXPECT_TRUE(Send(0, buffer));
}

TEST_F(Inband, NothingToTakeAfterAllWaitsOn) {
  driver_->Answer(1, {0x00, 0x33});
  driver_->FailNextReceive(EAGAIN);
  wire::TCommandBuffer buffer = RegisterRead();
  EXPECT_TRUE(Send(0, buffer));
}

TEST_F(Inband, StopEndsTheWaiting) {
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
  std::array<std::uint8_t, 4> response = {1, 2, 3, 4};
  EXPECT_FALSE(Processor().TakesDotCommands());
  EXPECT_EQ(Processor().DiscoverServiceProcessors(), 0);
  EXPECT_FALSE(Processor().SendDot(0, dotCmd(2, 0, 0, nullptr, nullptr), response, length_, stop_));
  EXPECT_EQ(length_, 256);
}

}  // namespace
}  // namespace tests
