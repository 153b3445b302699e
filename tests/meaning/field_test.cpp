#include "host/meaning/field.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TFieldMeaning Field(unsigned high, unsigned low, const std::string& name, std::vector<TValueText> texts = {}) {
  return {{high, low}, false, name, std::move(texts)};
}

TRegisterMeaning Register(ERole role, std::vector<TFieldMeaning> fields, unsigned width = 32) {
  TRegisterMeaning meaning;
  meaning.width = width;
  meaning.role = role;
  meaning.fields = std::move(fields);
  return meaning;
}

/// "5:4 Speed = 1 (2.5 GT/s)"; an undescribed bit is "7 ? = 1".
std::vector<std::string> Shown(const TRegisterMeaning& meaning, std::uint64_t value) {
  std::vector<std::string> texts;
  for (const TField& field : DecodeFields(meaning, value)) {
    std::string text = BitsText(field.bits, meaning.width, meaning.isMsb0);
    text += " " + std::string(field.name.value_or("?")) + " = " + std::to_string(field.value);
    if (field.text) text += " (" + std::string(*field.text) + ")";
    if (field.isHex) text += " hex";
    texts.push_back(text);
  }
  return texts;
}

TEST(DecodeFields, ShowsThoseThatAreNotZeroFromTheLeastSignificant) {
  const auto meaning = Register(ERole::kErrors, {Field(0, 0, "A"), Field(5, 4, "B"), Field(31, 28, "C")});
  EXPECT_THAT(Shown(meaning, 0xB0000021), ElementsAre("0 A = 1", "5:4 B = 2", "31:28 C = 11"));
  EXPECT_THAT(Shown(meaning, 0x00000010), ElementsAre("5:4 B = 1"));
  EXPECT_THAT(Shown(meaning, 0), IsEmpty());
}

TEST(DecodeFields, ShowsAZeroThatHasAText) {
  const auto meaning =
      Register(ERole::kState, {Field(0, 0, "Link", {{0, 0, "down"}, {1, 1, "up"}}), Field(2, 1, "Lanes")});
  EXPECT_THAT(Shown(meaning, 0), ElementsAre("0 Link = 0 (down)"));
  EXPECT_THAT(Shown(meaning, 5), ElementsAre("0 Link = 1 (up)", "2:1 Lanes = 2"));
}

TEST(DecodeFields, ARangeOfValuesHasOneText) {
  const auto meaning = Register(ERole::kState, {Field(3, 0, "Speed", {{1, 1, "slow"}, {8, 15, "reserved"}})});
  EXPECT_THAT(Shown(meaning, 1), ElementsAre("3:0 Speed = 1 (slow)"));
  EXPECT_THAT(Shown(meaning, 2), ElementsAre("3:0 Speed = 2"));
  EXPECT_THAT(Shown(meaning, 7), ElementsAre("3:0 Speed = 7"));
  EXPECT_THAT(Shown(meaning, 8), ElementsAre("3:0 Speed = 8 (reserved)"));
  EXPECT_THAT(Shown(meaning, 15), ElementsAre("3:0 Speed = 15 (reserved)"));
}

TEST(DecodeFields, KeepsWhatIsReadInHex) {
  auto meaning = Register(ERole::kLog, {Field(47, 32, "Device")}, 64);
  meaning.fields[0].isHex = true;
  EXPECT_THAT(Shown(meaning, 0x0000ABCD00000000), ElementsAre("47:32 Device = 43981 hex"));
}

TEST(DecodeFields, SetBitsThatNoFieldDescribesHaveNoName) {
  const auto meaning = Register(ERole::kErrors, {Field(5, 4, "B")});
  EXPECT_THAT(Shown(meaning, 0x80000059), ElementsAre("0 ? = 1", "3 ? = 1", "5:4 B = 1", "6 ? = 1", "31 ? = 1"));
  EXPECT_THAT(Shown(meaning, 0x00000001), ElementsAre("0 ? = 1"));
}

TEST(DecodeFields, RegistersOfBitsShowThemWithoutAnyField) {
  for (const ERole role : {ERole::kErrors, ERole::kMask, ERole::kSeverity}) {
    EXPECT_THAT(Shown(Register(role, {}), 0x10), ElementsAre("4 ? = 1"));
  }
}

TEST(DecodeFields, OtherRegistersWithoutAFieldAreNumbers) {
  for (const ERole role : {ERole::kFirstError, ERole::kCounter, ERole::kAddress, ERole::kSyndrome, ERole::kLog,
                           ERole::kState, ERole::kIdentity}) {
    EXPECT_THAT(Shown(Register(role, {}), 0x10), IsEmpty());
    EXPECT_THAT(Shown(Register(role, {Field(0, 0, "A")}), 0x10), ElementsAre("4 ? = 1"));
  }
}

TEST(DecodeFields, ReachesBothEndsOfEachWidth) {
  const auto wide = Register(ERole::kErrors, {Field(0, 0, "Low"), Field(63, 63, "High")}, 64);
  EXPECT_THAT(Shown(wide, 0x8000000000000001), ElementsAre("0 Low = 1", "63 High = 1"));
  const auto whole = Register(ERole::kErrors, {Field(63, 0, "All")}, 64);
  EXPECT_THAT(Shown(whole, 0xFEDCBA9876543210), ElementsAre("63:0 All = 18364758544493064720"));
  EXPECT_EQ(DecodeFields(Register(ERole::kErrors, {}, 64), 0xFFFFFFFFFFFFFFFF).size(), 64U);
  const auto narrow = Register(ERole::kErrors, {Field(31, 0, "All")});
  EXPECT_THAT(Shown(narrow, 0xFFFFFFFF), ElementsAre("31:0 All = 4294967295"));
}

TEST(DecodeFields, Msb0OnlyChangesTheNumbers) {
  auto meaning = Register(ERole::kErrors, {Field(0, 0, "Last"), Field(27, 26, "B")});
  meaning.isMsb0 = true;
  EXPECT_THAT(Shown(meaning, 0x88000001), ElementsAre("31 Last = 1", "4:5 B = 2", "0 ? = 1"));
}

TEST(DecodeFields, TakesNoMemoryIfThereIsNothingToShow) {
  const auto meaning = Register(ERole::kErrors, {Field(0, 0, "A"), Field(5, 4, "B")});
  EXPECT_EQ(DecodeFields(meaning, 0).capacity(), 0U);
  EXPECT_EQ(DecodeFields(Register(ERole::kCounter, {}), 0xFFFF).capacity(), 0U);
}

TEST(BitsText, CountsAsTheRegisterDoes) {
  EXPECT_EQ(BitsText({16, 16}, 32, false), "16");
  EXPECT_EQ(BitsText({5, 4}, 32, false), "5:4");
  EXPECT_EQ(BitsText({63, 0}, 64, false), "63:0");
  EXPECT_EQ(BitsText({31, 31}, 32, true), "0");
  EXPECT_EQ(BitsText({0, 0}, 64, true), "63");
  EXPECT_EQ(BitsText({5, 4}, 32, true), "26:27");
  EXPECT_EQ(BitsText({63, 32}, 64, true), "0:31");
}

TEST(MaskOf, HasTheBitsInPlace) {
  EXPECT_EQ(MaskOf({0, 0}), 1U);
  EXPECT_EQ(MaskOf({5, 4}), 0x30U);
  EXPECT_EQ(MaskOf({63, 32}), 0xFFFFFFFF00000000U);
  EXPECT_EQ(MaskOf({63, 0}), 0xFFFFFFFFFFFFFFFFU);
}

}  // namespace
}  // namespace tests
