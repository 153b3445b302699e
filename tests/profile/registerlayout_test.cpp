// The layout of register values: the profile splits what the real collector assembled.
#include <gtest/gtest.h>

#include "host/profile/collectorprofile.h"
#include "tests/profile/collectorfixture.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"
#include "wire/registerblock.h"
#include "wire/registerread.h"

namespace tests {
namespace {

namespace Profile = CollectorProfile;
using Profile::EPath;
using TBytes = std::vector<std::uint8_t>;
using TAddress = std::array<std::uint8_t, 3>;

class RegisterLayout : public TLoadedCollectorTest {
 protected:
  boost::shared_ptr<TNamespace> SchemaWith(const TClassBuilder& served) {
    auto schema = NewSchema();
    AddRoot(*schema);
    schema->AddClass(TClassBuilder("KROSG_Registers", "CIM_StatisticalData"));
    for (const std::string_view base : Profile::kJfrBaseClasses) {
      schema->AddClass(TClassBuilder(std::string(base), "KROSG_Registers"));
    }
    schema->AddClass(served);
    return schema;
  }

  // The value of "Register" in the committed instance at `index`.
  const TCIMValue& Collected(const TClassBuilder& served, const std::string& machineType, std::size_t index = 0) {
    const auto schema = SchemaWith(served);
    Collect(schema, schema->Classes().back(), machineType);
    EXPECT_GT(committed_.size(), index);
    return *committed_.at(index)->Find("Register");
  }

  static TClassBuilder R8Class(int maxLen) {
    return TClassBuilder("KROSG_VO_MEMCTL_StatisticData", "KROSG_Registers")
        .Machines({"6203", "4411", "4414", "4523", "4524"})
        .MaxInstances(1)
        .Bytes("Register", {{"Offset", TCIMValue(0x00ABCDEF)}, {"MaxLen", TCIMValue(maxLen)}});
  }

  static TClassBuilder JfrClass(int index, int instances) {
    return TClassBuilder("KROSG_Sample", "KROSG_MEMCTL_StatisticData")
        .Machines({"6203"})
        .With("MaxInstanceCount", TCIMValue(instances))
        .Bytes("Register", {{"Index", TCIMValue(index)}, {"MaxLen", TCIMValue(8)}});
  }

  // The BMC answers every register with 01 to 08, least significant byte first.
  void ExpectR8(int maxLen, const std::string& machineType, const TBytes& value) {
    const auto split = Profile::SplitRegisterValue(EPath::kR8, Collected(R8Class(maxLen), machineType));
    ASSERT_TRUE(split);
    EXPECT_EQ(split->identification, (TAddress{0xAB, 0xCD, 0xEF}));
    EXPECT_EQ(split->value, value) << machineType;
  }

  // Fills the block after its header such that each byte is the low or the high half of its own offset.
  void NumberBlock(unsigned int shift) {
    for (std::size_t i = 7; i < processor_.block.size(); ++i) {
      processor_.block.at(i) = static_cast<std::uint8_t>(i >> shift);
    }
  }

  // The offset of the record whose value the collector returns, derived from two readings of a numbered
  // block.
  std::size_t PlaceOfRecord(int index, int instance, std::size_t byte) {
    std::array<std::size_t, 2> halves{};
    for (const unsigned int half : {0U, 1U}) {
      NumberBlock(8 * half);
      const TCIMValue& value = Collected(JfrClass(index, 2), "6203", static_cast<std::size_t>(instance));
      const auto split = Profile::SplitRegisterValue(EPath::kJfr, value);
      EXPECT_TRUE(split);
      TBytes record(split->identification.begin(), split->identification.end());
      record.insert(record.end(), split->value.begin(), split->value.end());
      EXPECT_EQ(record.size(), 11U);
      halves.at(half) = record.at(byte);
    }
    return halves[1] * 256 + halves[0];
  }
};

TEST_F(RegisterLayout, R8ValuesOfSixtyFourBitsAreTheSameInBothFamilies) {
  ExpectR8(8, "4411", {8, 7, 6, 5, 4, 3, 2, 1});
  ExpectR8(8, "6203", {8, 7, 6, 5, 4, 3, 2, 1});
}

TEST_F(RegisterLayout, R8ValuesOfThirtyTwoBitsAreFoldedAccordingToTheFamily) {
  ExpectR8(4, "4411", {0x0C, 0x07, 0x06, 0x05});
  ExpectR8(4, "6203", {0x04, 0x03, 0x02, 0x03});
}

// The folded value shows the family. One element of the class's qualifier contains every type.
TEST_F(RegisterLayout, TheEightByteFamilyIsTheCollectorsForEveryFourDigitType) {
  std::string all;
  for (int number = 0; number < 10000; ++number) all += std::to_string(10000 + number).substr(1) + ",";
  const auto schema = SchemaWith(R8Class(4));
  const auto served = schema->AddClass(TClassBuilder("KROSG_T4_MEMCTL_StatisticData", "KROSG_Registers")
                                           .Machines({all, "44110"})
                                           .MaxInstances(1)
                                           .Bytes("Register", {{"Offset", TCIMValue(1)}, {"MaxLen", TCIMValue(4)}}));
  int eightByteTypes = 0;
  const auto collectedAsEightBytes = [&](const std::string& machineType) {
    Collect(schema, served, machineType);
    const auto split = Profile::SplitRegisterValue(EPath::kR8, *committed_.at(0)->Find("Register"));
    return split.value().value == TBytes{0x0C, 0x07, 0x06, 0x05};
  };
  for (int number = 0; number < 10000; ++number) {
    const std::string machineType = std::to_string(10000 + number).substr(1);
    const bool predicted = Profile::IsEightByteFamily(machineType);
    ASSERT_EQ(collectedAsEightBytes(machineType), predicted) << machineType;
    eightByteTypes += predicted ? 1 : 0;
  }
  EXPECT_EQ(eightByteTypes, 4);
  for (const char* other : {"", "441", "44110"}) {
    EXPECT_FALSE(Profile::IsEightByteFamily(other));
    EXPECT_FALSE(collectedAsEightBytes(other));
  }
}

TEST_F(RegisterLayout, JfrValuesAreInBufferOrderAfterTheEqualsSign) {
  const TBytes record = {0x0A, 0x0B, 0x0C, 1, 2, 3, 4, 5, 6, 7, 8};
  std::copy(record.begin(), record.end(), processor_.block.begin() + 7 + 5 * 8);
  const TCIMValue& value = Collected(JfrClass(5, 1), "6203");
  EXPECT_EQ(value.ToString(10), "{10, 11, 12, 32, 61, 32, 1, 2, 3, 4, 5, 6, 7, 8}");
  const auto split = Profile::SplitRegisterValue(EPath::kJfr, value);
  ASSERT_TRUE(split);
  EXPECT_EQ(split->identification, (TAddress{10, 11, 12}));
  EXPECT_EQ(split->value, (TBytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

// Seven bytes of header, then a record at every eighth byte; 256 records are one instance's.
TEST_F(RegisterLayout, RecordsOfElevenBytesStartEightApart) {
  struct TPlace {
    int instance;
    int index;
    std::size_t start;
  };
  for (const TPlace& place : {TPlace{0, 0, 7}, TPlace{0, 1, 15}, TPlace{0, 5, 47}, TPlace{0, 253, 2031},
                              TPlace{1, 0, 2055}, TPlace{1, 1, 2063}, TPlace{1, 5, 2095}, TPlace{1, 253, 4079}}) {
    EXPECT_EQ(PlaceOfRecord(place.index, place.instance, 0), place.start);
    EXPECT_EQ(PlaceOfRecord(place.index, place.instance, 10), place.start + 10);
  }
}

TEST_F(RegisterLayout, WithTheSecondHeaderRecordsBeginAtTheStartOfTheBlock) {
  processor_.block[2] = 0;
  EXPECT_EQ(PlaceOfRecord(5, 1, 0), 2088U);
}

// Record 509 is the last that fits with the larger base: 7 + 509 * 8 + 11 = 4090.
TEST_F(RegisterLayout, TheLastRecordEndsBeforeTheProfilesBlockDoes) {
  NumberBlock(0);
  const auto lastByte = [this](int index) {
    const auto& value = Collected(JfrClass(index, 2), "6203", 1);
    return Profile::SplitRegisterValue(EPath::kJfr, value)->value.back();
  };
  EXPECT_EQ(wire::RegisterBlock::kSize, 4096U);
  EXPECT_EQ(lastByte(253), 4089 % 256);
  EXPECT_EQ(lastByte(254), '0') << "past the block the collector reads its fill";
}

// The class declares exactly the properties that the profile lists; any other would be refused.
TEST_F(RegisterLayout, ACaptureFileHasTheProfilesProperties) {
  TClassBuilder captureClass{std::string(Profile::kCaptureClass)};
  for (const std::string_view property : Profile::kCaptureProperties) captureClass.Text(std::string(property));
  const auto schema = SchemaWith(captureClass);
  processor_.hasStorageAreas = true;
  Collect(schema, schema->Classes().back(), "6203");
  ASSERT_EQ(committed_.size(), 3U);
  for (std::size_t i = 0; i < Profile::kCaptureProperties.size(); ++i) {
    EXPECT_TRUE(committed_[0]->IsSet(i)) << Profile::kCaptureProperties.at(i);
  }
  EXPECT_EQ(Profile::kCaptureProperties.size(), 8U);
}

}  // namespace
}  // namespace tests
