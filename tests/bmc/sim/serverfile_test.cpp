#include "host/bmc/sim/serverfile.h"

#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using std::chrono::milliseconds;

const std::string kWhole = R"(machine_type = "6203"
local_time   = 2026-01-31T12:34:56+01:00
unlisted_registers = "pattern"

[ipmi]
driver_present = false

[dot]
sp_comm = false
[[dot.service_processor]]
block = "00 18 0c 1f 17 3b 3a"
[[dot.service_processor]]
block_file = "nov0.bin"

[[bmc_node]]
timestamp = "12 34 56 78"
[[bmc_node.register]]
chip = 255
address = 0x00ABCDEF
value = "01 02 03 04 05 06 07 08"
header = "a1 a2 a3 a4 a5 a6"
[[bmc_node.register]]
address = 4294967295
value = "11 12 13 14 15 16 17 18"
[[bmc_node.storage_area]]
name = "cpu_err"
data = "0a ff 00"
[[bmc_node.storage_area]]
name = "ioh_err"
data_file = "cpu_err.bin"
size = -3
[[bmc_node]]

[[fault]]
on = "register"
node = 0
nth = 3
completion_code = 0xC3
delay_ms = 250
[[fault]]
on = "dot"
lost = true
[[fault]]
on = "ipmi"
truncate = 12
[[fault]]
on = "close"
delay_ms = 0
)";

TServerFile ReadWhole(const std::string& text) {
  TMemoryReader reader;
  reader.Add("servers/s.toml", text);
  reader.Add("servers/nov0.bin", "AB\n");
  reader.Add("servers/cpu_err.bin", std::string("\0\xFF", 2));
  return ReadFrom("servers/s.toml", reader);
}

TEST(ServerFile, ReadsEverythingBesidesTheNodes) {
  const TServerFile server = ReadWhole(kWhole);
  EXPECT_EQ(server.machineType, "6203");
  ASSERT_TRUE(server.localTime);
  EXPECT_EQ(server.localTime->ToIso8601(), "2026-01-31T12:34:56+01:00");
  EXPECT_TRUE(server.patternRegisters);
  EXPECT_FALSE(server.driverPresent);
  ASSERT_TRUE(server.dot);
  EXPECT_FALSE(server.dot->communication);
  ASSERT_EQ(server.dot->blocks.size(), 2U);
  EXPECT_EQ(AllOf(server.dot->blocks[0]), (TBytes{0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A}));
  EXPECT_EQ(AllOf(server.dot->blocks[1]), (TBytes{'A', 'B', '\n'}));
}

TEST(ServerFile, ReadsTheNodes) {
  const TServerFile server = ReadWhole(kWhole);
  ASSERT_EQ(server.nodes.size(), 2U);
  const TSimulatedNode& node = server.nodes[0];
  EXPECT_EQ(node.timestamp, (std::array<std::uint8_t, 4>{0x12, 0x34, 0x56, 0x78}));
  ASSERT_EQ(node.registers.size(), 2U);
  EXPECT_EQ(node.registers.at(0xFFABCDEF).value, (std::array<std::uint8_t, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(node.registers.at(0xFFABCDEF).header, (std::array<std::uint8_t, 6>{0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6}));
  EXPECT_EQ(node.registers.at(0x00FFFFFF).header, (std::array<std::uint8_t, 6>{}));
  ASSERT_EQ(node.areas.size(), 2U);
  EXPECT_EQ(node.areas[0].name, "cpu_err");
  EXPECT_EQ(AllOf(node.areas[0].data), (TBytes{0x0A, 0xFF, 0x00}));
  EXPECT_EQ(node.areas[0].size, 3);
  EXPECT_EQ(AllOf(node.areas[1].data), (TBytes{0x00, 0xFF}));
  EXPECT_EQ(node.areas[1].size, -3);
  EXPECT_FALSE(server.nodes[1].timestamp);
  EXPECT_TRUE(server.nodes[1].registers.empty());
}

TEST(ServerFile, ReadsTheFaults) {
  const TServerFile server = ReadWhole(kWhole);
  ASSERT_EQ(server.faults.size(), 4U);
  EXPECT_EQ(server.faults[0].on, EExchangeKind::kRegister);
  EXPECT_EQ(server.faults[0].node, 0);
  EXPECT_EQ(server.faults[0].nth, 3);
  EXPECT_EQ(server.faults[0].completionCode, 0xC3);
  EXPECT_EQ(server.faults[0].delay, milliseconds(250));
  EXPECT_FALSE(server.faults[0].lost);
  EXPECT_EQ(server.faults[1].on, EExchangeKind::kDot);
  EXPECT_TRUE(server.faults[1].lost);
  EXPECT_FALSE(server.faults[1].node);
  EXPECT_FALSE(server.faults[1].nth);
  EXPECT_FALSE(server.faults[2].on);
  EXPECT_EQ(server.faults[2].truncate, 12U);
  EXPECT_EQ(server.faults[3].on, EExchangeKind::kClose);
  EXPECT_EQ(server.faults[3].delay, milliseconds(0));
}

TEST(ServerFile, RequiresOnlyAMachineType) {
  const TServerFile server = ServerFrom("machine_type = \"\"");
  EXPECT_EQ(server.machineType, "");
  EXPECT_FALSE(server.localTime);
  EXPECT_FALSE(server.patternRegisters);
  EXPECT_TRUE(server.driverPresent);
  EXPECT_FALSE(server.dot);
  EXPECT_TRUE(server.nodes.empty());
  EXPECT_TRUE(server.faults.empty());
}

TEST(ServerFile, AcceptsEveryKindOfExchangeInAFault) {
  const std::vector<std::pair<std::string, std::optional<EExchangeKind>>> kinds = {
      {"register", EExchangeKind::kRegister}, {"timestamp", EExchangeKind::kTimestamp},
      {"open", EExchangeKind::kOpen},         {"size", EExchangeKind::kSize},
      {"read", EExchangeKind::kRead},         {"close", EExchangeKind::kClose},
      {"dot", EExchangeKind::kDot},           {"ipmi", std::nullopt}};
  for (const auto& [name, kind] : kinds) {
    const TServerFile server = ServerFrom("machine_type = \"\"\nfault = [{ on = \"" + name + "\", lost = true }]");
    EXPECT_EQ(server.faults.at(0).on, kind) << name;
  }
}

TEST(ServerFile, AcceptsHexPairsOnSeveralLinesInEitherCaseAndNone) {
  const TServerFile server = ServerFrom(
      "machine_type = \"\"\n[dot]\nservice_processor = [{ block = \"\"\"\naA 0b\n\t0C0d\"\"\" }, { block = \"\" }]");
  ASSERT_EQ(server.dot->blocks.size(), 2U);
  EXPECT_EQ(AllOf(server.dot->blocks[0]), (TBytes{0xAA, 0x0B, 0x0C, 0x0D}));
  EXPECT_EQ(AllOf(server.dot->blocks[1]), TBytes{});
}

TEST(ServerFile, FindsDataFilesFromItsOwnFolder) {
  TMemoryReader reader;
  reader.Add("plain.toml",
             "machine_type = \"\"\n[dot]\nservice_processor = [{ block_file = \"b\" }, { block_file = \"a/b..\" }]");
  reader.Add("b", "1");
  reader.Add("a/b..", "2");
  const TServerFile server = ReadFrom("plain.toml", reader);
  ASSERT_EQ(server.dot->blocks.size(), 2U);
  EXPECT_EQ(AllOf(server.dot->blocks[0]), TBytes{'1'});
  EXPECT_EQ(AllOf(server.dot->blocks[1]), TBytes{'2'});
}

/// The text, cut at any byte, is either read or refused at a place within it.
TEST(ServerFile, IsReadOrRefusedWithAPlaceWhereverItIsCut) {
  for (std::size_t size = 0; size <= kWhole.size(); ++size) {
    try {
      ReadWhole(kWhole.substr(0, size));
    } catch (const THostError& error) {
      EXPECT_EQ(error.Kind(), EFailure::kMalformed);
      EXPECT_THAT(error.what(), testing::MatchesRegex("servers/s\\.toml:[0-9]+:[0-9]+: error: (.|\n)*")) << size;
    }
  }
}

TEST(ServerFile, IsReadOrRefusedWhateverByteIsChanged) {
  int refused = 0;
  for (std::size_t at = 0; at < kWhole.size(); ++at) {
    for (const char byte : {'\0', '\n', ' ', '"', '.', '=', '[', '}', '9', '\x80'}) {
      std::string text = kWhole;
      text[at] = byte;
      try {
        ReadWhole(text);
      } catch (const THostError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith("servers/s.toml:"));
        ++refused;
      }
    }
  }
  EXPECT_GT(refused, 4000);
}

TEST(ServerFileInput, MayBeMissing) {
  TMemoryReader reader;
  ExpectHostError(EFailure::kAbsent, "cannot open none.toml: No such file or directory",
                  [&] { ReadFrom("none.toml", reader); });
}

TEST(ServerFileInput, NamesThePlaceOfADataFileThatIsMissing) {
  TMemoryReader reader;
  reader.Add("a/s.toml", "machine_type = \"\"\n[[dot.service_processor]]\nblock_file = \"b.bin\"");
  ExpectHostError(EFailure::kAbsent,
                  "a/s.toml:3:14: error: cannot open a/b.bin: No such file or directory\n"
                  "  block_file = \"b.bin\"\n"
                  "               ^\n",
                  [&] { ReadFrom("a/s.toml", reader); });
}

TEST(ServerFileInput, LimitsTheSizeOfABlock) {
  TMemoryReader reader;
  reader.Add("s.toml", "machine_type = \"\"\n[[dot.service_processor]]\nblock_file = \"b.bin\"");
  reader.Add("b.bin", std::string((std::size_t{1} << 20U) + 1, 'x'));
  ExpectHostError(EFailure::kTooLarge,
                  "s.toml:3:14: error: b.bin is larger than the limit of 1048576 bytes\n"
                  "  block_file = \"b.bin\"\n"
                  "               ^\n",
                  [&] { ReadFrom("s.toml", reader); });
}

/// Nesting up to the limits and beyond: nothing may overflow the stack.
TEST(ServerFileInput, MayNestDeeply) {
  std::string dotted = "a";
  for (int i = 0; i < 15; ++i) dotted += ".a";
  std::string nested = "x = ";
  for (int i = 0; i < 7; ++i) nested += "[\n{" + dotted + " = ";
  nested += "1";
  for (int i = 0; i < 7; ++i) nested += "}]";
  EXPECT_THROW(ServerFrom(nested), THostError);
  EXPECT_THROW(ServerFrom("x = " + std::string(100000, '[')), THostError);
}

}  // namespace
}  // namespace tests
