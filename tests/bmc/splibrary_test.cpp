// The library's operations as a plugin calls them, with a simulated server or a double.
#include "nkrovel20/splibrary.h"

#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/sim/simulatedserver.h"
#include "host/bmc/supervision.h"
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

class Library : public testing::Test {
 protected:
  Library()
      : server_(ServerFrom(R"(
machine_type = "6203"
[dot]
service_processor = [{ block = "01 02 03 04" }]
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node]]
timestamp = "9a bc de f0"
)")) {
    TServiceProcessorHub::Install(&server_, nullptr);
  }
  ~Library() override { TServiceProcessorHub::Install(nullptr, nullptr); }

  static SPLibrary& Node(int node) { return *SPLibrary::GetSplibraryInstance(node); }

  /// Sends the timestamp request in a buffer of `capacity` bytes, followed by guard bytes.
  bool AskTimestamp(int capacity, int node = 0) {
    const wire::TCommandBuffer request = Timestamp();
    buffer_ = TBytes(request.Data(), request.Data() + wire::TCommandBuffer::kSize);
    buffer_.resize(static_cast<std::size_t>(std::max(capacity, 0)), 0xEE);
    buffer_.resize(buffer_.size() + 4, 0xEE);
    length_ = kUntouched;
    return Node(node).sendIPMICommand(buffer_.data(), &length_, capacity, true);
  }

  TBytes buffer_;
  int length_ = kUntouched;
  TSimulatedServer server_;
};

TEST_F(Library, CarriesOutAnIpmiExchange) {
  ASSERT_TRUE(AskTimestamp(256));
  EXPECT_EQ(length_, 13);
  TBytes expected(260, 0);
  const TBytes head = {0x01, 0x20, 0x3A, 0x00, 0x00, 0x04, 0, 0, 0, 0x12, 0x34, 0x56, 0x78};
  std::copy(head.begin(), head.end(), expected.begin());
  std::fill(expected.end() - 4, expected.end(), 0xEE);
  EXPECT_EQ(buffer_, expected);
}

TEST_F(Library, KeepsOneHandleForEachNode) {
  EXPECT_EQ(&Node(1), &Node(1));
  EXPECT_NE(&Node(0), &Node(1));
  ASSERT_TRUE(AskTimestamp(256, 1));
  EXPECT_EQ(buffer_[9], 0x9A);
}

TEST_F(Library, FailsForANodeThatDoesNotExist) {
  for (const int node : {2, -1, 1000000}) {
    EXPECT_FALSE(AskTimestamp(256, node));
    EXPECT_EQ(length_, kUntouched);
    EXPECT_EQ(buffer_[4], 0x6F);
  }
}

TEST_F(Library, MakesNoExchangeWithABufferTooSmallForARequest) {
  for (const int capacity : {8, 1, 0, -1, -2147483647 - 1}) {
    EXPECT_FALSE(AskTimestamp(capacity)) << capacity;
    EXPECT_EQ(length_, kUntouched);
  }
}

TEST_F(Library, CutsAnAnswerToASmallBuffer) {
  for (int capacity = 9; capacity <= 13; ++capacity) {
    ASSERT_TRUE(AskTimestamp(capacity)) << capacity;
    EXPECT_EQ(length_, capacity);
    EXPECT_EQ(buffer_[5], capacity - 9);
    const TBytes guard(buffer_.end() - 4, buffer_.end());
    EXPECT_EQ(guard, TBytes(4, 0xEE));
  }
}

TEST_F(Library, LeavesWhatFollowsTheCommandBufferAlone) {
  ASSERT_TRUE(AskTimestamp(300));
  EXPECT_EQ(buffer_[255], 0x00);
  EXPECT_EQ(TBytes(buffer_.begin() + 256, buffer_.end()), TBytes(48, 0xEE));
}

TEST_F(Library, RefusesNullPointers) {
  std::array<unsigned char, 256> buffer{};
  int length = kUntouched;
  dotCmd command = BlockCommand(4096);
  EXPECT_FALSE(Node(0).sendIPMICommand(nullptr, &length, 256, true));
  EXPECT_FALSE(Node(0).sendIPMICommand(buffer.data(), nullptr, 256, true));
  EXPECT_FALSE(Node(0).sendDotCommand(nullptr, buffer.data(), &length, 0, 256));
  EXPECT_FALSE(Node(0).sendDotCommand(&command, nullptr, &length, 0, 256));
  EXPECT_FALSE(Node(0).sendDotCommand(&command, buffer.data(), nullptr, 0, 256));
  EXPECT_FALSE(Node(0).sendDotCommand(&command, buffer.data(), &length, 0, -1));
  EXPECT_EQ(length, kUntouched);
}

TEST_F(Library, CarriesOutADotCommand) {
  TBytes buffer(6, 0xEE);
  int length = kUntouched;
  dotCmd command = BlockCommand(4096);
  ASSERT_TRUE(Node(0).sendDotCommand(&command, buffer.data(), &length, 0, 6));
  EXPECT_EQ(length, 4);
  EXPECT_EQ(buffer, (TBytes{1, 2, 3, 4, 0xEE, 0xEE}));
  ASSERT_TRUE(Node(0).sendDotCommand(&command, buffer.data(), &length, 0, 0));
  EXPECT_EQ(length, 0);
  EXPECT_FALSE(Node(0).sendDotCommand(&command, buffer.data(), &length, 1, 6));
}

TEST_F(Library, ReportsWhatWasDiscovered) {
  SPLibrary library;
  EXPECT_EQ(library.GetNumberBMCNode(), 2);
  EXPECT_TRUE(library.IsIPMIDriversPresent());
  EXPECT_TRUE(library.checkSPComm());
  EXPECT_TRUE(library.isDotcommand());
  EXPECT_EQ(library.discoverSPs(), 1);
}

TEST_F(Library, HasNothingWithoutAServiceProcessor) {
  TServiceProcessorHub::Install(nullptr, nullptr);
  SPLibrary library;
  EXPECT_EQ(library.GetNumberBMCNode(), 0);
  EXPECT_FALSE(library.IsIPMIDriversPresent());
  EXPECT_FALSE(library.checkSPComm());
  EXPECT_FALSE(library.isDotcommand());
  EXPECT_EQ(library.discoverSPs(), 0);
  EXPECT_FALSE(AskTimestamp(256));
  dotCmd command = BlockCommand(4096);
  EXPECT_FALSE(library.sendDotCommand(&command, buffer_.data(), &length_, 0, 4));
}

TEST_F(Library, PassesTheStopSignalOn) {
  TStopSignal stop;
  TServiceProcessorHub::Install(&server_, &stop);
  EXPECT_TRUE(AskTimestamp(256));
  stop.RequestStop();
  EXPECT_FALSE(AskTimestamp(256));
  EXPECT_EQ(length_, kUntouched);
}

TEST_F(Library, AcceptsALengthByteThatReachesPastTheBuffer) {
  wire::TCommandBuffer request = Timestamp();
  request[5] = 0xFF;
  ExpectAnswer(Send(server_, 0, request), 0x00, {0x12, 0x34, 0x56, 0x78});
}

/// Gives the same answer to every request, even when the run is stopped.
class TAnswering : public IServiceProcessor {
 public:
  TDiscovery Discover() override { return {}; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest&, const TStopSignal&) override {
    ++reached;
    return ipmi;
  }
  std::optional<TDotAnswer> SendDot(const TDotRequest&, const TStopSignal&) override {
    ++reached;
    return dot;
  }
  TIpmiAnswer ipmi;
  TDotAnswer dot;
  int reached = 0;
};

TEST_F(Library, KeepsFalseLengthsInsideTheCallersBuffer) {
  TAnswering liar;
  liar.ipmi = {0x00, {0xA0, 0xA1}, std::uint8_t{0xFF}, 70000};
  TServiceProcessorHub::Install(&liar, nullptr);
  ASSERT_TRUE(AskTimestamp(256));
  EXPECT_EQ(length_, 256);
  EXPECT_EQ(buffer_[5], 247);
  EXPECT_EQ(TBytes(buffer_.begin() + 9, buffer_.begin() + 13), (TBytes{0xA0, 0xA1, 0x00, 0x00}));
  ASSERT_TRUE(AskTimestamp(10));
  EXPECT_EQ(length_, 10);
  EXPECT_EQ(buffer_[5], 1);
  EXPECT_EQ(TBytes(buffer_.begin() + 9, buffer_.end()), (TBytes{0xA0, 0xEE, 0xEE, 0xEE, 0xEE}));
  liar.ipmi = {0x00, {0xA0, 0xA1}, std::uint8_t{1}, -3};
  ASSERT_TRUE(AskTimestamp(256));
  EXPECT_EQ(length_, -3);
  EXPECT_EQ(buffer_[5], 1);
  EXPECT_EQ(buffer_[10], 0xA1);
}

TEST_F(Library, CutsAnAnswerThatIsTooLong) {
  TAnswering talker;
  talker.ipmi.data.assign(300, 0x55);
  talker.dot.data = {1, 2, 3};
  TServiceProcessorHub::Install(&talker, nullptr);
  ASSERT_TRUE(AskTimestamp(256));
  EXPECT_EQ(length_, 256);
  EXPECT_EQ(buffer_[5], 247);
  EXPECT_EQ(TBytes(buffer_.begin() + 255, buffer_.end()), (TBytes{0x55, 0xEE, 0xEE, 0xEE, 0xEE}));
  TBytes block(3, 0xEE);
  dotCmd command = BlockCommand(4096);
  ASSERT_TRUE(Node(0).sendDotCommand(&command, block.data(), &length_, 0, 2));
  EXPECT_EQ(length_, 2);
  EXPECT_EQ(block, (TBytes{1, 2, 0xEE}));
}

TEST_F(Library, ReturnsWhatAFailedDotCommandDelivered) {
  TAnswering failing;
  failing.dot = {{1, 2}, 70000, true};
  TServiceProcessorHub::Install(&failing, nullptr);
  TBytes block(3, 0xEE);
  dotCmd command = BlockCommand(4096);
  EXPECT_FALSE(Node(0).sendDotCommand(&command, block.data(), &length_, 0, 3));
  EXPECT_EQ(length_, 70000);
  EXPECT_EQ(block, (TBytes{1, 2, 0xEE}));
}

class TNotes : public IExchangeObserver {
 public:
  static std::string EndOf(ENoAnswer why) {
    switch (why) {
      case ENoAnswer::kNotSent: return " not sent";
      case ENoAnswer::kNotRecorded: return " not recorded";
      default: return " lost";
    }
  }
  void OnIpmi(const TIpmiExchange& exchange) override {
    text += "ipmi " + std::to_string(exchange.request.Node()) + " " + std::to_string(exchange.request.Command());
    if (exchange.answer != nullptr) {
      text += " code " + std::to_string(exchange.answer->completionCode) + " length " +
              std::to_string(exchange.answer->Length());
    } else {
      text += EndOf(exchange.noAnswer);
    }
    text += exchange.WasAttempted() ? "\n" : " refused\n";
  }
  void OnDot(const TDotExchange& exchange) override {
    text += "dot " + std::to_string(exchange.request.serviceProcessor);
    text +=
        exchange.answer != nullptr ? " length " + std::to_string(exchange.answer->Length()) : EndOf(exchange.noAnswer);
    text += exchange.WasAttempted() ? "\n" : " refused\n";
  }
  std::string text;
};

TEST_F(Library, TellsObserversOfEachExchange) {
  TNotes notes;
  TSupervisedServiceProcessor supervised(server_);
  supervised.AddObserver(notes);
  Send(supervised, 1, Timestamp());
  Send(supervised, 2, Timestamp());
  SendDot(supervised, 0, BlockCommand(4096), 6);
  SendDot(supervised, 1, BlockCommand(4096), 6);
  EXPECT_EQ(notes.text,
            "ipmi 1 111 code 0 length 13\n"
            "ipmi 2 111 lost\n"
            "dot 0 length 4\n"
            "dot 1 lost\n");
}

TEST_F(Library, SupervisionRefusesExchangesOnceTheRunIsStopped) {
  TAnswering deaf;
  TNotes notes;
  TSupervisedServiceProcessor supervised(deaf);
  supervised.AddObserver(notes);
  TStopSignal stop;
  stop.RequestStop();
  ExpectNoAnswer(Send(supervised, Timestamp(), stop));
  ExpectNoAnswer(SendDot(supervised, 0, BlockCommand(4096), 6, stop));
  EXPECT_EQ(deaf.reached, 0);
  EXPECT_EQ(notes.text, "ipmi 0 111 not sent refused\ndot 0 not sent refused\n");
  EXPECT_EQ(supervised.WhyNoAnswer(), ENoAnswer::kNotSent);
}

TEST_F(Library, SupervisionPassesOnWhyThereIsNoAnswer) {
  class TUnrecorded : public TForwardingServiceProcessor {
   public:
    using TForwardingServiceProcessor::TForwardingServiceProcessor;
    ENoAnswer WhyNoAnswer() const override { return ENoAnswer::kNotRecorded; }
  };
  TUnrecorded unrecorded(server_);
  TForwardingServiceProcessor decorator(static_cast<IServiceProcessor&>(unrecorded));
  TNotes notes;
  TSupervisedServiceProcessor supervised(decorator);
  supervised.AddObserver(notes);
  Send(supervised, 2, Timestamp());
  SendDot(supervised, 1, BlockCommand(4096), 6);
  EXPECT_EQ(notes.text, "ipmi 2 111 not recorded\ndot 1 not recorded\n");
}

TEST(DotCommand, KeepsCopiesAndReadsNothingFromNullOrNegativeLengths) {
  TBytes bytes = {1, 2, 3};
  const dotCmd command(0x02, 2, 3, bytes.data(), bytes.data());
  bytes.assign(3, 9);
  EXPECT_EQ(command.GetIdentifier(), (TBytes{1, 2}));
  EXPECT_EQ(command.GetParameters(), (TBytes{1, 2, 3}));
  const dotCmd empty(0x02, -1, 3, bytes.data(), nullptr);
  EXPECT_TRUE(empty.GetIdentifier().empty());
  EXPECT_TRUE(empty.GetParameters().empty());
}

EExchangeKind KindOf(const wire::TCommandBuffer& request) { return KindOfRequest(TIpmiRequest(0, request)); }

TEST(ExchangeKind, IsReadFromTheRequest) {
  EXPECT_EQ(KindOf(Register(0, 0)), EExchangeKind::kRegister);
  EXPECT_EQ(KindOf(Timestamp()), EExchangeKind::kTimestamp);
  EXPECT_EQ(KindOf(Open("x")), EExchangeKind::kOpen);
  EXPECT_EQ(KindOf(Size("x")), EExchangeKind::kSize);
  EXPECT_EQ(KindOf(Read(1, 0, 10)), EExchangeKind::kRead);
  EXPECT_EQ(KindOf(Close(1)), EExchangeKind::kClose);
  EXPECT_EQ(KindOf(Request(0x3A, 0x90, {})), EExchangeKind::kOther);
  EXPECT_EQ(KindOf(Request(0x2E, 0x62, {0x39, 0x30, 0x00, 0x01})), EExchangeKind::kOther);
  EXPECT_EQ(KindOf(Request(0x2E, 0x90, {0x39, 0x31, 0x00, 0x01})), EExchangeKind::kOther);
  EXPECT_EQ(KindOf(Request(0x2E, 0x90, {0x39, 0x30, 0x00, 0x03})), EExchangeKind::kOther);
  EXPECT_STREQ(NameOfKind(EExchangeKind::kRegister), "register");
  EXPECT_STREQ(NameOfKind(EExchangeKind::kDot), "dot");
  EXPECT_STREQ(NameOfKind(EExchangeKind::kOther), "other");
}

TEST(StopSignal, IsStoppedByRequestOrDeadlineForGood) {
  TStopSignal requested;
  EXPECT_FALSE(requested.IsStopped());
  EXPECT_FALSE(requested.TimeLeft());
  EXPECT_TRUE(requested.WaitFor(std::chrono::milliseconds(1)));
  requested.RequestStop();
  requested.RequestStop();
  EXPECT_TRUE(requested.IsStopped());
  EXPECT_TRUE(requested.WasRequested());
  EXPECT_FALSE(requested.WaitFor(std::chrono::milliseconds(0)));
  TStopSignal late;
  late.SetDeadline(TStopSignal::TClock::now() - std::chrono::seconds(1));
  EXPECT_TRUE(late.IsStopped());
  EXPECT_FALSE(late.WasRequested());
  EXPECT_EQ(late.TimeLeft(), std::chrono::milliseconds(0));
}

TEST(StopSignal, EndsTheLongestWaitAtItsDeadline) {
  TStopSignal stop;
  stop.SetDeadline(TStopSignal::TClock::now() + std::chrono::milliseconds(10));
  EXPECT_FALSE(stop.WaitFor(std::chrono::milliseconds::max()));
}

}  // namespace
}  // namespace tests
