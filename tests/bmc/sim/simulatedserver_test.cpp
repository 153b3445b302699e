#include "host/bmc/sim/simulatedserver.h"

#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

/// A simulated server from lines of its file.
class TBmc : public TSimulatedServer {
 public:
  explicit TBmc(const std::string& lines) : TSimulatedServer(ServerFrom("machine_type = \"6203\"\n" + lines)) {}
  TIpmiOutcome Ask(const wire::TCommandBuffer& request, int node = 0) { return Send(*this, node, request); }
};

const std::string kArea = "[[bmc_node]]\n[[bmc_node.storage_area]]\nname = \"cpu_err\"\n";

TEST(Simulator, FindsARegisterByTheLow24BitsOfItsAddress) {
  TBmc bmc("[[bmc_node]]\nregister = [{ address = 0x12345678, value = \"01 02 03 04 05 06 07 08\" }]");
  ExpectAnswer(bmc.Ask(Register(0, 0x345678)), 0x00, {0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8});
}

TEST(Simulator, MakesUpUnlistedRegistersIfTold) {
  TBmc bmc(
      "unlisted_registers = \"pattern\"\n[[bmc_node]]\nregister = [{ address = 1, value = \"08 07 06 05 04 03 02 01\" "
      "}]");
  // Address 0xABCDEF, chip 5: ef^5^00, cd^5^11, ab^5^22, ef^5^33, cd^5^44, ab^5^55, ef^5^66, cd^5^77.
  ExpectAnswer(bmc.Ask(Register(5, 0xABCDEF)), 0x00,
               {0, 0, 0, 0, 0, 0, 0xEA, 0xD9, 0x8C, 0xD9, 0x8C, 0xFB, 0x8C, 0xBF});
  ExpectAnswer(bmc.Ask(Register(0, 1)), 0x00, {0, 0, 0, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1});
}

TEST(Simulator, PadsShortRequestsWithZeros) {
  TBmc bmc("[[bmc_node]]\nregister = [{ chip = 9, address = 0xAB0000, value = \"01 02 03 04 05 06 07 08\" }]");
  wire::TCommandBuffer request = Register(9, 0xABCDEF);
  request[5] = 2;
  ExpectAnswer(bmc.Ask(request), 0x00, {0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8});
}

TEST(Simulator, ReadsANameFromItsFieldWhateverByteFiveSays) {
  TBmc bmc(kArea + "data = \"01\"");
  for (int length = 0; length < 256; ++length) {
    wire::TCommandBuffer open = Open("cpu_err");
    wire::TCommandBuffer size = Size("cpu_err");
    open[5] = size[5] = static_cast<std::uint8_t>(length);
    ExpectAnswer(bmc.Ask(open), 0x00, {0x39, 0x30, 0x00, 0x01, 0, 0, 0});
    ExpectAnswer(bmc.Ask(size), 0x00, {0x39, 0x30, 0x00, 0x01, 0, 0, 0});
  }
}

TEST(Simulator, ComparesTheWholeNameField) {
  TBmc bmc(kArea + "data = \"01\"");
  ExpectAnswer(bmc.Ask(Open("cpu_er")), 0xCB, {0x39, 0x30, 0x00});
  ExpectAnswer(bmc.Ask(Open("cpu_err2")), 0xCB, {0x39, 0x30, 0x00});
  ExpectAnswer(bmc.Ask(Open("")), 0xCB, {0x39, 0x30, 0x00});
}

TEST(Simulator, FindsALongNameByItsFirst25Bytes) {
  TBmc bmc("[[bmc_node]]\n[[bmc_node.storage_area]]\nname = \"abcdefghijklmnopqrstuvwxyz\"\ndata = \"\"");
  ExpectAnswer(bmc.Ask(Open("abcdefghijklmnopqrstuvwxy")), 0x00, {0x39, 0x30, 0x00, 0x01, 0, 0, 0});
  ExpectAnswer(bmc.Ask(Open("abcdefghijklmnopqrstuvwx")), 0xCB, {0x39, 0x30, 0x00});
}

TEST(Simulator, ReportsTheSizeInTheFile) {
  TBmc bmc(kArea + "data = \"01\"\nsize = -2");
  ExpectAnswer(bmc.Ask(Size("cpu_err")), 0x00, {0x39, 0x30, 0x00, 0xFE, 0xFF, 0xFF, 0xFF});
  TBmc large(kArea + "data = \"01\"\nsize = 2147483647");
  ExpectAnswer(large.Ask(Size("cpu_err")), 0x00, {0x39, 0x30, 0x00, 0xFF, 0xFF, 0xFF, 0x7F});
  ExpectAnswer(large.Ask(Read(1, 0, 10)), 0x00, {0x39, 0x30, 0x00, 0x01, 0x00, 0x01});
}

TEST(Simulator, ReadsByA16BitCountAndA32BitOffset) {
  TBmc bmc(kArea + "data = \"01 02 03\"");
  wire::TCommandBuffer request = Read(1, 1, 1);
  ExpectAnswer(bmc.Ask(request), 0x00, {0x39, 0x30, 0x00, 0x01, 0x00, 0x02});
  ExpectAnswer(bmc.Ask(Read(1, 1, 0x100)), 0x00, {0x39, 0x30, 0x00, 0x02, 0x00, 0x02, 0x03});
  ExpectAnswer(bmc.Ask(Read(1, 1, 0)), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00});
  request[20] = 0x01;  // the offset's highest byte
  ExpectAnswer(bmc.Ask(request), 0x00, {0x39, 0x30, 0x00, 0x00, 0x00});
}

TEST(Simulator, NeverReturnsMoreThanTheBufferHolds) {
  TMemoryReader reader;
  reader.Add("s", "machine_type=\"\"\n[[bmc_node]]\nstorage_area=[{name=\"a\",data_file=\"d\"}]");
  reader.Add("d", std::string(300, '\x5A'));
  TSimulatedServer bmc(ReadFrom("s", reader));
  // 247 data bytes: the manufacturer id, the count 242, and 242 bytes.
  ExpectAnswer(Send(bmc, Read(1, 0, 0xFF)), 0x00, TBytes{0x39, 0x30, 0x00, 0xF2, 0x00} + TBytes(242, 0x5A));
}

TEST(Simulator, RefusesHandlesThatWereNeverIssued) {
  TBmc bmc(kArea + "data = \"01\"");
  ExpectAnswer(bmc.Ask(Read(0, 0, 1)), 0xCB, {0x39, 0x30, 0x00});
  wire::TCommandBuffer high = Read(1, 0, 1);
  high[16] = 0x01;  // the handle's highest byte
  ExpectAnswer(bmc.Ask(high), 0xCB, {0x39, 0x30, 0x00});
}

TEST(Simulator, ClosesWhateverHandleItIsGiven) {
  TBmc bmc("[[bmc_node]]");
  ExpectAnswer(bmc.Ask(Close(9)), 0x00, {0x39, 0x30, 0x00});
}

TEST(Simulator, RefusesWhatItDoesNotKnow) {
  TBmc bmc("[[bmc_node]]");
  ExpectAnswer(bmc.Ask(Request(0x06, 0x01, {})), 0xC1, {});
  ExpectAnswer(bmc.Ask(Request(0x3A, 0x90, {0x39, 0x30, 0x00, 0x01})), 0xC1, {});
  ExpectAnswer(bmc.Ask(Request(0x2E, 0x91, {0x39, 0x30, 0x00, 0x01})), 0xC1, {0x39, 0x30, 0x00});
  ExpectAnswer(bmc.Ask(Request(0x2E, 0x62, {})), 0xC1, {0x39, 0x30, 0x00});
  ExpectAnswer(bmc.Ask(Request(0x2E, 0x90, {0x39, 0x30, 0x00})), 0xC1, {0x39, 0x30, 0x00});
}

TEST(Simulator, AnswersAnotherManufacturersRequestWithItsId) {
  TBmc bmc(kArea + "data = \"01\"");
  wire::TCommandBuffer open = Open("cpu_err");
  open[11] = 0x01;
  ExpectAnswer(bmc.Ask(open), 0xC1, {0x39, 0x30, 0x01});
}

TEST(Simulator, HasNoExchangeWithoutTheDriver) {
  TBmc bmc("[ipmi]\ndriver_present = false\n[[bmc_node]]\ntimestamp = \"01 02 03 04\"");
  EXPECT_EQ(bmc.Discover().bmcNodes, 1);
  EXPECT_FALSE(bmc.Discover().ipmiDriver);
  ExpectNoAnswer(bmc.Ask(Timestamp()));
}

TEST(Simulator, HasNoNodesUnlessTheFileListsThem) {
  TBmc bmc("");
  EXPECT_EQ(bmc.Discover().bmcNodes, 0);
  EXPECT_TRUE(bmc.Discover().ipmiDriver);
  ExpectNoAnswer(bmc.Ask(Timestamp()));
}

TEST(Simulator, LimitsAnswersToTheTransportsCapacity) {
  const TServerFile server = ServerFrom("machine_type=\"\"\n" + kArea + "data = \"01 02 03 04 05\"");
  const TIpmiRequest read(0, Read(1, 0, 5));
  const auto answer = AnswerIpmi(server, read, 8);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->data, (TBytes{0x39, 0x30, 0x00, 0x03, 0x00, 0x01, 0x02, 0x03}));
  EXPECT_EQ(AnswerIpmi(server, read, 4)->data, (TBytes{0x39, 0x30, 0x00, 0x00}));
  EXPECT_EQ(AnswerIpmi(server, TIpmiRequest(0, 0x2E, 0, 0x90, {}), 0)->data, TBytes{});
}

const std::string kDot =
    "[dot]\n[[dot.service_processor]]\nblock = \"01 02 03 04\"\n[[dot.service_processor]]\nblock = \"\"\n";

TEST(SimulatedDot, IsDescribedByItsTable) {
  TBmc none("");
  EXPECT_FALSE(none.Discover().dotCommands);
  EXPECT_FALSE(none.Discover().communicates);
  EXPECT_EQ(none.Discover().serviceProcessors, 0);
  TBmc two(kDot);
  EXPECT_TRUE(two.Discover().dotCommands);
  EXPECT_TRUE(two.Discover().communicates);
  EXPECT_EQ(two.Discover().serviceProcessors, 2);
  TBmc deaf("[dot]\nsp_comm = false");
  EXPECT_TRUE(deaf.Discover().dotCommands);
  EXPECT_FALSE(deaf.Discover().communicates);
  EXPECT_EQ(deaf.Discover().serviceProcessors, 0);
}

TEST(SimulatedDot, ReturnsTheBlockAndLeavesTheRestOfTheBuffer) {
  TBmc bmc(kDot);
  const TDotOutcome outcome = SendDot(bmc, 0, BlockCommand(4096), 6);
  EXPECT_TRUE(outcome.answered);
  EXPECT_EQ(outcome.length, 4);
  EXPECT_EQ(outcome.buffer, (TBytes{1, 2, 3, 4, 0xEE, 0xEE}));
}

TEST(SimulatedDot, AnswersWithAnEmptyBlock) {
  TBmc bmc(kDot);
  const TDotOutcome outcome = SendDot(bmc, 1, BlockCommand(4096), 2);
  EXPECT_TRUE(outcome.answered);
  EXPECT_EQ(outcome.length, 0);
  EXPECT_EQ(outcome.buffer, (TBytes{0xEE, 0xEE}));
}

TEST(SimulatedDot, CutsTheBlockToTheSizeInTheParametersAndToTheBuffer) {
  TBmc bmc(kDot);
  EXPECT_EQ(SendDot(bmc, 0, BlockCommand(3), 8).Block(), (TBytes{1, 2, 3}));
  EXPECT_EQ(SendDot(bmc, 0, BlockCommand(4096), 2).Block(), (TBytes{1, 2}));
  EXPECT_EQ(SendDot(bmc, 0, BlockCommand(0x0100), 8).Block(), (TBytes{1, 2, 3, 4}));
  EXPECT_EQ(SendDot(bmc, 0, BlockCommand(0), 8).Block(), TBytes{});
}

TEST(SimulatedDot, GivesNoAnswerToAnyOtherCommand) {
  TBmc bmc(kDot);
  const TBytes id = {0x0E, 0x06, 0x00};
  const TBytes wrongId = {0x0E, 0x07};
  const TBytes size = {0x00, 0x00, 0x00, 0x10, 0x00};
  ExpectNoAnswer(SendDot(bmc, 0, dotCmd(0x03, 2, 4, id.data(), size.data()), 8));
  ExpectNoAnswer(SendDot(bmc, 0, dotCmd(0x02, 2, 4, wrongId.data(), size.data()), 8));
  ExpectNoAnswer(SendDot(bmc, 0, dotCmd(0x02, 1, 4, id.data(), size.data()), 8));
  ExpectNoAnswer(SendDot(bmc, 0, dotCmd(0x02, 3, 4, id.data(), size.data()), 8));
  ExpectNoAnswer(SendDot(bmc, 0, dotCmd(0x02, 2, 3, id.data(), size.data()), 8));
  ExpectNoAnswer(SendDot(bmc, 0, dotCmd(0x02, 2, 5, id.data(), size.data()), 8));
}

TEST(SimulatedDot, GivesNoAnswerForAServiceProcessorThatDoesNotExist) {
  TBmc bmc(kDot);
  ExpectNoAnswer(SendDot(bmc, 2, BlockCommand(4096), 8));
  ExpectNoAnswer(SendDot(bmc, -1, BlockCommand(4096), 8));
  TStopSignal stopped;
  stopped.RequestStop();
  ExpectNoAnswer(SendDot(bmc, 0, BlockCommand(4096), 8, stopped));
}

TEST(SimulatedEnvironment, GivesTheFilesMachineTypeAndClock) {
  const TServerFile server = ServerFrom("machine_type = \"4411\"\nlocal_time = 2026-01-31T12:34:56.789+01:00");
  TSimulatedEnvironment environment(server);
  EXPECT_EQ(environment.MachineType(), "4411");
  EXPECT_EQ(environment.LocalTime().ToString(), "20260131123456.789000+060");
}

}  // namespace
}  // namespace tests
