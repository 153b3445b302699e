#include <gtest/gtest.h>

#include "host/base/hosterror.h"
#include "host/bmc/smbios/smbios.h"
#include "tests/bmc/smbios/smbiostable.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

TEST(SmbiosTable, GivesTheProductNameByItsStringNumber) {
  TSmbiosTable table;
  table.Add(0, {1, 2}, {"Maker", "1.0"}).Add(1, {1, 2, 3}, {"Maker", "Server -[6203AC1]-", "v"}).Add(127, {});
  const TSmbiosFacts facts = ParseSmbiosTable(table.Bytes());
  EXPECT_EQ(facts.productName, "Server -[6203AC1]-");
  EXPECT_FALSE(facts.declaresIpmiDevice);
  EXPECT_EQ(facts.defect, "");
}

TEST(SmbiosTable, ReadsATableWrittenByHand) {
  // Type 1, length 6, handle 1; manufacturer string 0, product name string 1; "A1", end.
  const std::vector<std::uint8_t> bytes = {0x01, 0x06, 0x01, 0x00, 0x00, 0x01, 0x41, 0x31, 0x00,
                                           0x00, 0x26, 0x05, 0x02, 0x00, 0x01, 0x00, 0x00};
  const TSmbiosFacts facts = ParseSmbiosTable(bytes);
  EXPECT_EQ(facts.productName, "A1");
  EXPECT_TRUE(facts.declaresIpmiDevice);
  EXPECT_EQ(facts.defect, "");
}

// Type 1 up to the UUID: strings by number, then the 16 bytes.
const std::vector<std::uint8_t> kSystem = {1,    2,    0,    3,    0x33, 0x22, 0x11, 0x00, 0x55, 0x44,
                                           0x77, 0x66, 0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

TEST(SmbiosTable, GivesSerialNumberAndUuid) {
  TSmbiosTable table;
  table.Add(1, kSystem, {"Maker", "Server", "S123"}).Add(1, kSystem, {"Maker", "Other", "S124"});
  const TSmbiosFacts facts = ParseSmbiosTable(table.Bytes());
  EXPECT_EQ(facts.serialNumber, "S123");
  ASSERT_TRUE(facts.uuid);
  EXPECT_EQ(*facts.uuid, (TSmbiosUuid{0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66, 0x88, 0x99, 0xAA, 0xBB, 0xCC,
                                      0xDD, 0xEE, 0xFF}));
}

TEST(SmbiosTable, ShorterStructureHasNoUuid) {
  for (std::size_t size = 0; size < kSystem.size(); ++size) {
    TSmbiosTable table;
    table.Add(1, {kSystem.begin(), kSystem.begin() + static_cast<long>(size)}, {"Maker", "Server", "S123"});
    const TSmbiosFacts facts = ParseSmbiosTable(table.Bytes());
    EXPECT_EQ(facts.serialNumber, size >= 4 ? "S123" : "") << size;
    EXPECT_FALSE(facts.uuid) << size;
  }
}

TEST(SmbiosTable, UuidOfZerosOrOnesIsNotSet) {
  for (const int filler : {0x00, 0xFF, 0x11}) {
    std::vector<std::uint8_t> system = {1, 2, 0, 3};
    system.resize(20, static_cast<std::uint8_t>(filler));
    EXPECT_EQ(ParseSmbiosTable(TSmbiosTable().Add(1, system, {"Maker"}).Bytes()).uuid.has_value(), filler == 0x11);
  }
}

TEST(SmbiosUuid, BeginsWithLittleEndianFieldsFromVersion26On) {
  const TSmbiosUuid uuid = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                            0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};
  const std::string swapped = "00112233-4455-6677-8899-aabbccddeeff";
  const std::string plain = "33221100-5544-7766-8899-aabbccddeeff";
  using TBytes = std::vector<std::uint8_t>;
  EXPECT_EQ(UuidText(uuid, {}), swapped);
  EXPECT_EQ(UuidText(uuid, TBytes{'_', 'S', 'M', '_', 0, 0, 2, 6}), swapped);
  EXPECT_EQ(UuidText(uuid, TBytes{'_', 'S', 'M', '_', 0, 0, 2, 5}), plain);
  EXPECT_EQ(UuidText(uuid, TBytes{'_', 'S', 'M', '_', 0, 0, 2}), swapped);
  EXPECT_EQ(UuidText(uuid, TBytes{'_', 'S', 'M', '3', '_', 0, 0, 3, 0}), swapped);
  EXPECT_EQ(UuidText(uuid, TBytes{'_', 'S', 'M', '3', '_', 0, 0, 2, 5}), plain);
}

TEST(SmbiosTable, FirstSystemStructureWins) {
  TSmbiosTable table;
  table.Add(1, {0, 1}, {"first"}).Add(1, {0, 1}, {"second"});
  EXPECT_EQ(ParseSmbiosTable(table.Bytes()).productName, "first");
}

TEST(SmbiosTable, NothingCountsAfterTheEndOfTable) {
  TSmbiosTable table;
  table.Add(127, {}).Add(1, {0, 1}, {"late"}).Add(38, {1});
  const TSmbiosFacts facts = ParseSmbiosTable(table.Bytes());
  EXPECT_EQ(facts.productName, "");
  EXPECT_FALSE(facts.declaresIpmiDevice);
}

TEST(SmbiosTable, MissingStringGivesAnEmptyName) {
  for (const std::uint8_t number : std::vector<std::uint8_t>{0, 2, 3, 255}) {
    TSmbiosTable table;
    table.Add(1, {0, number}, {"only"});
    EXPECT_EQ(ParseSmbiosTable(table.Bytes()).productName, "") << int{number};
  }
  TSmbiosTable shortStructure;
  shortStructure.Add(1, {1}, {"only"});
  EXPECT_EQ(ParseSmbiosTable(shortStructure.Bytes()).productName, "");
}

TEST(SmbiosTable, EmptyTableHasNoFactsAndNoDefect) {
  const TSmbiosFacts facts = ParseSmbiosTable({});
  EXPECT_EQ(facts.productName, "");
  EXPECT_EQ(facts.defect, "");
}

TEST(SmbiosTable, EveryTruncationKeepsWhatIsWhole) {
  TSmbiosTable table;
  table.Add(38, {1}).Add(1, {0, 1}, {"Server 6203"});
  // 38: 5 + 2 bytes; 1: 6 + 11 + 2 bytes.
  ASSERT_EQ(table.Bytes().size(), 26U);
  for (std::size_t size = 0; size < 26; ++size) {
    // An exact-size copy, so that a sanitizer detects reads past the end.
    const std::vector<std::uint8_t> cut(table.Bytes().begin(), table.Bytes().begin() + static_cast<long>(size));
    const TSmbiosFacts facts = ParseSmbiosTable(cut);
    EXPECT_EQ(facts.declaresIpmiDevice, size >= 7) << size;
    EXPECT_EQ(facts.productName, "") << size;
    EXPECT_EQ(facts.defect.empty(), size == 0 || size == 7) << size;
  }
  EXPECT_EQ(ParseSmbiosTable(table.Bytes()).productName, "Server 6203");
}

TEST(SmbiosTable, NamesTheDefectAndItsPlace) {
  TSmbiosTable good;
  good.Add(38, {1});
  const auto defectBehind = [&good](const std::vector<std::uint8_t>& bytes) {
    return ParseSmbiosTable(TSmbiosTable(good).AddRaw(bytes).Bytes()).defect;
  };
  EXPECT_EQ(defectBehind({1, 3}), "at offset 0x7: a structure header needs 4 bytes, but the table ends before that");
  EXPECT_EQ(defectBehind({1, 3, 0, 0, 0, 0}),
            "at offset 0x7: the structure's length is less than its header's 4 bytes");
  EXPECT_EQ(defectBehind({1, 7, 0, 0, 0, 0}),
            "at offset 0x7: the structure's length reaches beyond the end of the table");
  EXPECT_EQ(defectBehind({1, 6, 0, 0, 0, 1, 'A', 0}), "at offset 0x7: the structure's strings are not terminated");
}

TEST(SmbiosEntryPoint, GivesTheTableSizeOfBothForms) {
  std::vector<std::uint8_t> entry32(31);
  std::copy_n("_SM_", 4, entry32.begin());
  entry32[0x16] = 0x34;
  entry32[0x17] = 0x12;
  EXPECT_EQ(SmbiosTableSize(entry32), 0x1234U);
  std::vector<std::uint8_t> entry64(24);
  std::copy_n("_SM3_", 5, entry64.begin());
  entry64[0x0C] = 0x78;
  entry64[0x0D] = 0x56;
  entry64[0x0E] = 0x34;
  entry64[0x0F] = 0x12;
  EXPECT_EQ(SmbiosTableSize(entry64), 0x12345678U);
}

TEST(SmbiosEntryPoint, AnythingElseGivesNoSize) {
  EXPECT_EQ(SmbiosTableSize({}), std::nullopt);
  for (const std::string anchor : {"_SM_", "_SM3_", "_DMI_"}) {
    for (std::size_t size = 0; size < 16; ++size) {
      std::vector<std::uint8_t> entry(anchor.begin(), anchor.end());
      entry.resize(size);
      EXPECT_EQ(SmbiosTableSize(entry), std::nullopt) << anchor << size;
    }
  }
}

TEST(MachineType, IsTheFirstRunOfExactlyFourDigits) {
  EXPECT_EQ(MachineTypeOf("Server M1 -[6203AC1]-"), "6203");
  EXPECT_EQ(MachineTypeOf("6101"), "6101");
  EXPECT_EQ(MachineTypeOf("4411 and 6203"), "4411");
  EXPECT_EQ(MachineTypeOf("Server 62035 -[6203AC1]-"), "6203");
  EXPECT_EQ(MachineTypeOf("Server 620 6203"), "6203");
}

TEST(MachineType, IsEmptyWithoutSuchARun) {
  EXPECT_EQ(MachineTypeOf(""), "");
  EXPECT_EQ(MachineTypeOf("Server"), "");
  EXPECT_EQ(MachineTypeOf("62 03"), "");
  EXPECT_EQ(MachineTypeOf("62030"), "");
  EXPECT_EQ(MachineTypeOf("\xD9\xA6\xD9\xA2\xD9\xA0\xD9\xA3"), "");
}

const std::string kTable = "/r/firmware/dmi/tables/DMI";
const std::string kEntryPoint = "/r/firmware/dmi/tables/smbios_entry_point";
const std::string kProductNameFile = "/r/class/dmi/id/product_name";

/// Serves texts, but denies the table itself, as the kernel does to everyone but root.
class TDeniedTable : public TMemoryReader {
 public:
  std::string Read(const std::string& path, std::size_t limit) override {
    if (path == kTable) throw THostError(EFailure::kDenied, "cannot open " + path);
    return TMemoryReader::Read(path, limit);
  }
};

TSmbiosTable Server() {
  TSmbiosTable table;
  table.Add(1, {0, 1}, {"Server -[6203AC1]-"}).Add(38, {1});
  return table;
}

TEST(SystemSmbios, ReadsTheTable) {
  TMemoryReader reader;
  reader.Add(kTable, Server().Text());
  const TSystemSmbios smbios = ReadSystemSmbios(reader, "/r");
  EXPECT_EQ(smbios.status, ESmbiosStatus::kRead);
  EXPECT_EQ(smbios.machineType, "6203");
  EXPECT_TRUE(smbios.facts.declaresIpmiDevice);
}

TEST(SystemSmbios, GivesTheUuidInTheOrderOfTheVersion) {
  std::vector<std::uint8_t> system = {0, 1, 0, 2};
  system.resize(20, 0x11);
  system[4] = 0xA0;
  TMemoryReader reader;
  reader.Add(kTable, TSmbiosTable().Add(1, system, {"Server", "S1"}).Text());
  const TSystemSmbios newer = ReadSystemSmbios(reader, "/r");
  EXPECT_EQ(newer.facts.serialNumber, "S1");
  EXPECT_EQ(newer.uuid, "111111a0-1111-1111-1111-111111111111");
  std::string entryPoint(31, '\0');
  entryPoint.replace(0, 4, "_SM_");
  entryPoint[0x06] = 2;
  entryPoint[0x16] = 35;
  reader.Add(kEntryPoint, entryPoint);
  EXPECT_EQ(ReadSystemSmbios(reader, "/r").uuid, "a0111111-1111-1111-1111-111111111111");
}

TEST(SystemSmbios, ReadsNoFurtherThanTheEntryPointSays) {
  TMemoryReader reader;
  reader.Add(kTable, Server().Text());
  std::string entryPoint(31, '\0');
  entryPoint.replace(0, 4, "_SM_");
  entryPoint[0x16] = 26;  // the first structure: 6 bytes, 18 characters, 2 NULs
  reader.Add(kEntryPoint, entryPoint);
  const TSystemSmbios smbios = ReadSystemSmbios(reader, "/r");
  EXPECT_EQ(smbios.status, ESmbiosStatus::kRead);
  EXPECT_EQ(smbios.machineType, "6203");
  EXPECT_FALSE(smbios.facts.declaresIpmiDevice);
}

TEST(SystemSmbios, MalformedTableKeepsWhatPrecedesTheDefect) {
  TMemoryReader reader;
  reader.Add(kTable, Server().AddRaw({1, 1}).Text());
  const TSystemSmbios smbios = ReadSystemSmbios(reader, "/r");
  EXPECT_EQ(smbios.status, ESmbiosStatus::kMalformed);
  EXPECT_EQ(smbios.machineType, "6203");
  EXPECT_TRUE(smbios.facts.declaresIpmiDevice);
}

TEST(SystemSmbios, MissingTableIsAbsent) {
  TMemoryReader reader;
  const TSystemSmbios smbios = ReadSystemSmbios(reader, "/r");
  EXPECT_EQ(smbios.status, ESmbiosStatus::kAbsent);
  EXPECT_EQ(smbios.machineType, "");
}

TEST(SystemSmbios, DeniedTableLeavesThePublicProductName) {
  TDeniedTable reader;
  reader.Add(kProductNameFile, "Server -[6203AC1]-\n");
  const TSystemSmbios smbios = ReadSystemSmbios(reader, "/r");
  EXPECT_EQ(smbios.status, ESmbiosStatus::kDenied);
  EXPECT_EQ(smbios.facts.productName, "Server -[6203AC1]-");
  EXPECT_EQ(smbios.machineType, "6203");
  EXPECT_FALSE(smbios.facts.declaresIpmiDevice);
}

}  // namespace
}  // namespace tests
