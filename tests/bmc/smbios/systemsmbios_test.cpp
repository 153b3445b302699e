#include "host/bmc/smbios/smbios.h"

#include <gtest/gtest.h>

#include "host/base/hosterror.h"
#include "tests/bmc/smbios/smbiostable.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

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
