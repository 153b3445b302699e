// Decoding the values of one instance from a register block.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/jfr/blocktest.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TNumbers = std::vector<unsigned int>;

class BlockTime : public TBlockTest {
 protected:
  BlockTime() { Collector(Chip()); }
  std::string Time() { return collector->getTimeStamp(block.Data()).ToString(); }

  TBlock block;
};

TEST_F(BlockTime, ComesFromTheFirstCopy) {
  EXPECT_EQ(Time(), "20241231235958.000000+000");
  // Eight values: the seven header bytes and the one after them.
  EXPECT_EQ(logger.Lines(), (std::vector<TLine>{Debug("TimeStamp rawdata: \n"), Debug("\n0 24 12 31 23 59 58 7 \n")}));
}

TEST_F(BlockTime, AMonthOrDayOfZeroSelectsTheSecondCopy) {
  block.Put(2040, {0xAA, 1, 2, 3, 4, 5, 6});
  for (const std::size_t field : {2U, 3U}) {
    logger.Clear();
    block.Put(0, {0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A}).Put(field, {0});
    EXPECT_EQ(Time(), "20010203040506.000000+000");
    ASSERT_EQ(logger.Lines().size(), 4U);
    EXPECT_EQ(logger.Lines()[2], Debug("TimeStamp rawdata: \n"));
    EXPECT_EQ(logger.Lines()[3], Debug("\n170 1 2 3 4 5 6 255 \n"));  // byte 2047 = 0x7FF
  }
}

TEST_F(BlockTime, OnlyMonthAndDayDecide) {
  block.Put(0, {0, 0, 1, 1, 0, 0, 0});
  EXPECT_EQ(Time(), "20000101000000.000000+000");
  block.Put(0, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
  EXPECT_EQ(Time(), "2255255255255255255.000000+000") << "fields are kept as they are";
}

TEST_F(BlockTime, NeitherCopyThrowsStatus21) {
  for (const TBytes& monthAndDay : {TBytes{0, 1}, TBytes{1, 0}, TBytes{0, 0}}) {
    block.Put(2, monthAndDay).Put(2042, monthAndDay);
    ExpectFailure(21, "", [this] { Time(); });
  }
  EXPECT_EQ(logger.Lines().size(), 12U);
}

class Record : public TBlockTest {
 protected:
  // The register with this index of one instance, in a block with a valid first header copy.
  TNumbers Decoded(std::uint16_t index, int instance) {
    Collector(Chip().Record("R", index));
    collector->getTimeStamp(block.Data());
    return NumbersOf(collector->getRegisterData(Property("R"), block.Data(), instance));
  }
  TNumbers InSecondCopy(std::uint16_t index, int instance) {
    block.TimeInSecondCopy();
    return Decoded(index, instance);
  }

  TBlock block;
};

// Byte i of the block is i & 0xFF, so a record shows where it was read.
TEST_F(Record, RecordsOfTheFirstCopyStartAfterItsHeader) {
  EXPECT_EQ(Decoded(0, 0), (TNumbers{7, 8, 9, 32, 61, 32, 10, 11, 12, 13, 14, 15, 16, 17}));
}

TEST_F(Record, IndexFiveOfInstanceOne) {
  // 7 + (5 + 256) * 8 = 2095 = 0x82F.
  EXPECT_EQ(Decoded(5, 1), (TNumbers{0x2F, 0x30, 0x31, 32, 61, 32, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39}));
}

TEST_F(Record, RecordsOfTheSecondCopyStartAtTheBlocksStart) {
  // (5 + 256) * 8 = 2088 = 0x828: the offset of the second copy, 2040, is not added.
  EXPECT_EQ(InSecondCopy(5, 1),
            (TNumbers{0x28, 0x29, 0x2A, 32, 61, 32, 0x2B, 0x2C, 0x2D, 0x2E, 0x2F, 0x30, 0x31, 0x32}));
}

TEST_F(Record, TheFlagBelongsToTheLatestTime) {
  EXPECT_EQ(InSecondCopy(1, 0)[0], 8U);
  block.Put(0, {0x00, 0x18, 0x0C, 0x1F, 0x17, 0x3B, 0x3A});
  collector->getTimeStamp(block.Data());
  EXPECT_EQ(NumbersOf(collector->getRegisterData(Property("R"), block.Data(), 0))[0], 15U);
}

TEST_F(Record, ABlockWithoutATimeLeavesTheSecondCopysBase) {
  Collector(Chip().Record("R", 1));
  block.WithoutTime();
  EXPECT_THROW(collector->getTimeStamp(block.Data()), TVELException);
  EXPECT_EQ(NumbersOf(collector->getRegisterData(Property("R"), block.Data(), 0))[0], 8U);
}

TEST_F(Record, ARecordAcrossTheEndIsFilledWith48) {
  // 7 + (255 + 256) * 8 = 4095: one byte of the block, then ten of fill.
  EXPECT_EQ(Decoded(255, 1), (TNumbers{0xFF, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48}));
  StartAnew();
  // With the second copy: bytes 4088 to 4098, eight in the block and three of fill.
  EXPECT_EQ(InSecondCopy(255, 1), (TNumbers{0xF8, 0xF9, 0xFA, 32, 61, 32, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF, 48, 48, 48}));
}

TEST_F(Record, ARecordBeyondTheEndIsAllFill) {
  const TNumbers fill = {48, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48};
  EXPECT_EQ(Decoded(0, 2), fill);
  for (const int instance : {3, 300, 65534}) {
    EXPECT_EQ(NumbersOf(collector->getRegisterData(Property("R"), block.Data(), instance)), fill);
  }
  StartAnew();
  EXPECT_EQ(Decoded(65535, 0), fill);
}

TEST_F(Record, ARecordBeforeTheBlockIsFilledToo) {
  // 7 - 256 * 8 = -2041: the whole record is before the block.
  EXPECT_EQ(Decoded(0, -1), (TNumbers{48, 48, 48, 32, 61, 32, 48, 48, 48, 48, 48, 48, 48, 48}));
  StartAnew();
  // 7 + (255 - 256) * 8 = -1: one byte of fill, then the header.
  EXPECT_EQ(Decoded(255, -1), (TNumbers{48, 0x00, 0x18, 32, 61, 32, 0x0C, 0x1F, 0x17, 0x3B, 0x3A, 7, 8, 9}));
}

TEST_F(Record, TheDeclaredTypeIsKeptAndTheCountIs14) {
  Collector(Chip().Property(TType::kUint32, "R", true, {{"Index", Number(TType::kUint16, 0)}}));
  const TCIMValue value = collector->getRegisterData(Property("R"), block.Data(), 0);
  EXPECT_EQ(value.GetType().GetCode(), TType::kUint32);
  EXPECT_EQ(value.GetDeclaredSize(), 14U);
  EXPECT_EQ(NumbersOf(value).size(), 14U);
}

TEST_F(Record, WithoutDataItIsAnEmptyArray) {
  Collector(Chip().Record("R", 0));
  const TCIMValue value = collector->getRegisterData(Property("R"), nullptr, 0);
  EXPECT_FALSE(value.IsNull());
  EXPECT_TRUE(NumbersOf(value).empty());
  EXPECT_EQ(value.GetDeclaredSize(), 0U);
  EXPECT_EQ(value.GetType().GetCode(), TType::kUint8);
  EXPECT_EQ(logger.Lines(),
            std::vector<TLine>{Debug("getRegisterData - Invalid data passed to getRegisterData. Unable to parse data "
                                     "for register value")});
  EXPECT_EQ(TextOf(collector->getChipsetErrorRegisterValues(nullptr, 0), "R"), "{}") << "and the property is added";
}

TEST_F(Record, WithoutDataNoQualifierIsLookedUp) {
  Collector(Chip().Bytes("R"));
  EXPECT_TRUE(NumbersOf(collector->getRegisterData(Property("R"), nullptr, 0)).empty());
}

TEST_F(Record, BeforeAnyTimeTheFirstCopyIsAssumed) {
  Collector(Chip().Record("R", 1));
  EXPECT_EQ(NumbersOf(collector->getRegisterData(Property("R"), block.Data(), 0))[0], 15U);
}

TEST_F(Record, MaxLenIsLookedUpAfterIndexAndHasNoEffect) {
  Collector(Chip().Bytes("R", {{"Index", Number(TType::kUint16, 0)}, {"MaxLen", TCIMValue("no number")}}));
  const auto property = Property("R");
  probe.Clear();
  EXPECT_EQ(NumbersOf(collector->getRegisterData(property, block.Data(), 0)).size(), 14U);
  EXPECT_EQ(probe.Calls(),
            (std::vector<std::string>{"R.GetType() {}", "R.GetQualifier(Index) {}", "R.GetQualifier(MaxLen) {}"}));
}

TEST_F(Record, AnAbsentIndexAsserts) {
  Collector(Chip().Bytes("R"));
  EXPECT_THROW(collector->getRegisterData(Property("R"), block.Data(), 0), TAssertionFailure);
}

TEST_F(Record, AnIndexIsAnUnsigned16BitNumber) {
  Collector(Chip().Bytes("R", {{"Index", Number(TType::kUint32, 65537)}}));
  collector->getTimeStamp(block.Data());
  EXPECT_EQ(NumbersOf(collector->getRegisterData(Property("R"), block.Data(), 0))[0], 15U) << "index 1";
}

class BlockSelection : public TBlockTest {
 protected:
  TBlock block;
};

TEST_F(BlockSelection, OwnAndDirectlyInheritedPropertiesAreDecoded) {
  ns->AddClass(TClassBuilder("PARENT", kBridgeBase).Record("Near", 2));
  Collector(TClassBuilder("Bridge6203", "PARENT").Record("Own", 1).Record("MachineType", 9));
  const TPropertyMap map = collector->getChipsetErrorRegisterValues(block.Data(), 0);
  EXPECT_EQ(map.size(), 2U);
  EXPECT_TRUE(map.contains("Near") && map.contains("Own"));
}

TEST_F(BlockSelection, APropertyOfAnUnrelatedClassIsLoggedButNotDecoded) {
  const auto unrelated = ns->AddClass(TClassBuilder("UNRELATED").Record("Elsewhere", 3));
  probe.EnumerateAlso(unrelated->Properties()[unrelated->FindProperty("Elsewhere")]);
  Collector(Chip().Record("Own", 1));
  const TPropertyMap map = collector->getChipsetErrorRegisterValues(block.Data(), 0);
  EXPECT_EQ(map.size(), 1U);
  EXPECT_TRUE(map.contains("Own"));
  EXPECT_EQ(logger.Count(Verbose("propertyDecl = Elsewhere. classOrigin = UNRELATED. superClass = "
                                 "KROSG_PCIIOBRIDGE_StatisticData")),
            1U);
}

TEST_F(BlockSelection, TheTraceNamesEveryProperty) {
  Collector(Chip().Record("R", 0));
  collector->getChipsetErrorRegisterValues(block.Data(), 0);
  const std::string inherited = ". classOrigin = KROSG_StatisticBase. superClass = KROSG_PCIIOBRIDGE_StatisticData";
  EXPECT_EQ(logger.Lines(),
            (std::vector<TLine>{
                Verbose("In getChipsetErrorRegisterValues()"), Verbose("propertyDecl = InstanceID" + inherited),
                Verbose("propertyDecl = ElementName" + inherited), Verbose("propertyDecl = MachineType" + inherited),
                Verbose("propertyDecl = StatisticTime" + inherited),
                Verbose("propertyDecl = R. classOrigin = Bridge6203. superClass = KROSG_PCIIOBRIDGE_StatisticData"),
                Verbose("Completed getChipsetErrorRegisterValues()")}));
}

TEST_F(BlockSelection, FourNamesAreSkippedAndElementNameIsNot) {
  ns->AddClass(TClassBuilder("PARENT"));
  TClassBuilder definition("Bridge6203", "PARENT");
  for (const char* const name : {"MachineType", "DateTimeOfCollection", "StatisticTime", "InstanceID", "ElementName"}) {
    definition.Record(name, 0);
  }
  Collector(definition);
  const TPropertyMap map = collector->getChipsetErrorRegisterValues(block.Data(), 0);
  EXPECT_EQ(map.size(), 1U);
  EXPECT_TRUE(map.contains("ElementName"));
}

TEST_F(BlockSelection, AnOverridingPropertyKeepsItsOriginAndIsSkipped) {
  ns->AddClass(TClassBuilder("TOP").Record("R", 0));
  ns->AddClass(TClassBuilder("MIDDLE", "TOP"));
  Collector(TClassBuilder("Bridge6203", "MIDDLE").Record("R", 1));
  EXPECT_TRUE(collector->getChipsetErrorRegisterValues(block.Data(), 0).empty());
}

TEST_F(BlockSelection, AClassWithoutASuperClassAsserts) {
  Collector(TClassBuilder("Bridge6203").Record("R", 0));
  EXPECT_THROW(collector->getChipsetErrorRegisterValues(block.Data(), 0), TAssertionFailure);
}

TEST_F(BlockSelection, TheTimeIsReadFirstAndJoinsTheRegisters) {
  Collector(Chip().Record("R", 0));
  const TPropertyMap map = collector->getChipErrorInfo(block.TimeInSecondCopy().Data(), 0);
  EXPECT_EQ(TextOf(map, "StatisticTime"), "20010203040506.000000+000");
  EXPECT_EQ(NumbersOf(map.at("R"))[1], 0x18U) << "read from the block's start: the header's year";
  EXPECT_EQ(logger.Lines().front(), Debug("TimeStamp rawdata: \n"));
  EXPECT_THROW(collector->getChipErrorInfo(block.WithoutTime().Data(), 0), TVELException);
}

}  // namespace
}  // namespace tests
