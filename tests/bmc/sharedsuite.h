// The behaviour that every IServiceProcessor must have. Include this in one source file of a test program and
// instantiate it with a factory:
//
//   INSTANTIATE_TEST_SUITE_P(Lan, ServiceProcessorSuite, testing::Values(TNamedFactory{"Lan", MakeLan}));
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

struct TNamedFactory {
  std::string name;
  /// Makes a service processor that answers as the server file says, and owns everything it uses.
  std::function<std::unique_ptr<IServiceProcessor>(const TServerFile&)> make;
};

inline void PrintTo(const TNamedFactory& factory, std::ostream* out) { *out << factory.name; }

/// Two BMC nodes; the second only has a register, at the same address as the first node's.
class ServiceProcessorSuite : public testing::TestWithParam<TNamedFactory> {
 protected:
  ServiceProcessorSuite() : processor_(GetParam().make(ServerFrom(kServer))) {}

  TIpmiOutcome Ask(int node, const wire::TCommandBuffer& request) { return Send(*processor_, node, request); }
  IServiceProcessor& Processor() { return *processor_; }

 private:
  static constexpr const char* kServer = R"(
machine_type = "6203"
[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
chip = 7
address = 0x00ABCDEF
value = "01 02 03 04 05 06 07 08"
header = "a1 a2 a3 a4 a5 a6"
[[bmc_node.storage_area]]
name = "ioh_err"
data = ""
[[bmc_node.storage_area]]
name = "cpu_err"
data = "0a ff 00 01 02 03 04 05 06 07 08 09 0b"
[[bmc_node]]
[[bmc_node.register]]
chip = 7
address = 0x00ABCDEF
value = "11 12 13 14 15 16 17 18"
)";

  std::unique_ptr<IServiceProcessor> processor_;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ServiceProcessorSuite);

TEST_P(ServiceProcessorSuite, CountsNodesAndHasTheDriver) {
  EXPECT_EQ(Processor().Discover().bmcNodes, 2);
  EXPECT_TRUE(Processor().Discover().ipmiDriver);
}

TEST_P(ServiceProcessorSuite, ReadsARegister) {
  ExpectAnswer(Ask(0, Register(7, 0xABCDEF)), 0x00,
               {0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08});
}

TEST_P(ServiceProcessorSuite, ReadsTheRegisterOfTheRequestedNode) {
  ExpectAnswer(Ask(1, Register(7, 0xABCDEF)), 0x00, {0, 0, 0, 0, 0, 0, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18});
}

TEST_P(ServiceProcessorSuite, SaysThatARegisterIsAbsent) {
  ExpectAnswer(Ask(0, Register(6, 0xABCDEF)), 0xCB, {});
  ExpectAnswer(Ask(0, Register(7, 0xABCDEE)), 0xCB, {});
}

TEST_P(ServiceProcessorSuite, ReadsTheTimestamp) { ExpectAnswer(Ask(0, Timestamp()), 0x00, {0x12, 0x34, 0x56, 0x78}); }

TEST_P(ServiceProcessorSuite, SaysThatTheTimestampIsAbsent) { ExpectAnswer(Ask(1, Timestamp()), 0xCB, {}); }

TEST_P(ServiceProcessorSuite, OpensSizesReadsAndClosesAnArea) {
  ExpectAnswer(Ask(0, Open("cpu_err")), 0x00, {0x39, 0x30, 0x00, 0x02, 0x00, 0x00, 0x00});
  ExpectAnswer(Ask(0, Size("cpu_err")), 0x00, {0x39, 0x30, 0x00, 0x0D, 0x00, 0x00, 0x00});
  ExpectAnswer(Ask(0, Read(2, 0, 10)), 0x00,
               {0x39, 0x30, 0x00, 0x0A, 0x00, 0x0A, 0xFF, 0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07});
  ExpectAnswer(Ask(0, Read(2, 10, 10)), 0x00, {0x39, 0x30, 0x00, 0x03, 0x00, 0x08, 0x09, 0x0B});
  ExpectAnswer(Ask(0, Read(2, 13, 10)), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00});
  ExpectAnswer(Ask(0, Close(2)), 0x00, {0x39, 0x30, 0x00});
}

TEST_P(ServiceProcessorSuite, ReadsNothingOfAnEmptyArea) {
  ExpectAnswer(Ask(0, Size("ioh_err")), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00, 0x00, 0x00});
  ExpectAnswer(Ask(0, Read(1, 0, 10)), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00});
}

TEST_P(ServiceProcessorSuite, SaysThatAnAreaIsAbsent) {
  ExpectAnswer(Ask(0, Open("zyn_err")), 0xCB, {0x39, 0x30, 0x00});
  ExpectAnswer(Ask(0, Size("zyn_err")), 0xCB, {0x39, 0x30, 0x00});
  ExpectAnswer(Ask(0, Read(3, 0, 10)), 0xCB, {0x39, 0x30, 0x00});
}

TEST_P(ServiceProcessorSuite, RefusesUnknownCommands) {
  ExpectAnswer(Ask(0, Request(0x3A, 0x63, {1, 2, 3})), 0xC1, {});
  ExpectAnswer(Ask(0, Request(0x2E, 0x90, {0x39, 0x30, 0x00, 0x03})), 0xC1, {0x39, 0x30, 0x00});
}

TEST_P(ServiceProcessorSuite, ClearsTheRequestAfterTheAnswer) {
  wire::TCommandBuffer request = Timestamp();
  for (std::size_t i = 9; i < wire::TCommandBuffer::kSize; ++i) request[i] = 0x5A;
  ExpectAnswer(Ask(0, request), 0x00, {0x12, 0x34, 0x56, 0x78});
}

TEST_P(ServiceProcessorSuite, KeepsTheBytesThatAreNotPartOfTheAnswer) {
  wire::TCommandBuffer request = Timestamp();
  request[0] = 0x42;
  request[6] = 0x61;
  request[7] = 0x62;
  request[8] = 0x63;
  ExpectAnswer(Ask(0, request), 0x00, {0x12, 0x34, 0x56, 0x78});
}

TEST_P(ServiceProcessorSuite, GivesNoAnswerForANodeThatDoesNotExist) {
  ExpectNoAnswer(Ask(2, Timestamp()));
  ExpectNoAnswer(Ask(-1, Timestamp()));
}

TEST_P(ServiceProcessorSuite, GivesNoAnswerOnceTheRunIsStopped) {
  TStopSignal stop;
  stop.RequestStop();
  ExpectNoAnswer(Send(Processor(), Timestamp(), stop));
}

TEST_P(ServiceProcessorSuite, TakesNoDotCommands) {
  EXPECT_FALSE(Processor().Discover().dotCommands);
  EXPECT_FALSE(Processor().Discover().communicates);
  EXPECT_EQ(Processor().Discover().serviceProcessors, 0);
  ExpectNoAnswer(SendDot(Processor(), 0, BlockCommand(4096), 4096));
}

}  // namespace tests
