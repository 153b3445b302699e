// The types by code and name; constructing, setting, copying and comparing values.
#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "nkrovel20/tcimvalue.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TType = TCIMValue::TCIMType;

struct TNamedType {
  int code;
  const char* name;
};

constexpr TNamedType kTypes[] = {{1, "boolean"}, {2, "uint8"},   {3, "sint8"},   {4, "uint16"},    {5, "sint16"},
                                 {6, "uint32"},  {7, "sint32"},  {8, "uint64"},  {9, "sint64"},    {10, "real32"},
                                 {11, "real64"}, {12, "char16"}, {13, "string"}, {14, "datetime"}, {15, "ref"}};

TEST(CimType, NamesAndCodesConvertToEachOther) {
  for (const TNamedType& type : kTypes) {
    EXPECT_EQ(static_cast<int>(TType(type.name).GetCode()), type.code) << type.name;
    EXPECT_EQ(TType(static_cast<TType::ECIMType>(type.code)).ToString(), type.name);
  }
}

TEST(CimType, CodeTwoIsUnsigned8Bit) {
  EXPECT_EQ(static_cast<int>(TType::kUint8), 2);
  EXPECT_EQ(TType(static_cast<TType::ECIMType>(2)).ToString(), "uint8");
}

TEST(CimType, NamesAreFoundInAnyCase) {
  EXPECT_EQ(TType("UInt8"), TType(TType::kUint8));
  EXPECT_EQ(TType("DATETIME"), TType(TType::kDateTime));
  EXPECT_EQ(TType("DateTime").ToString(), "datetime");
}

TEST(CimType, OtherNamesAreRefused) {
  for (const char* name : {"", "uint", "uint8 ", " uint8", "reference", "octetstring", "uint128"}) {
    ExpectFailure(4, "\"" + std::string(name) + "\" is not a CIM type", [name] { TType{std::string(name)}; });
  }
}

TEST(CimType, TheTypeOfAnUntypedNullHasNoName) { EXPECT_EQ(TType(TType::kNone).ToString(), ""); }

TEST(CimType, ANumberBeyondTheTypesHasNoName) { EXPECT_EQ(TType(static_cast<TType::ECIMType>(16)).ToString(), ""); }

TEST(CimType, CopiesCompareEqual) {
  const TType original("sint16");
  TType copy = original;
  EXPECT_TRUE(copy == original);
  copy = TType("uint16");
  EXPECT_TRUE(copy != original);
}

using TType = TCIMValue::TCIMType;
using TValues = std::vector<TCIMValue>;

const TValues& ElementsOf(const TCIMValue& value) { return value; }

TCIMValue Bytes(std::initializer_list<unsigned char> bytes) {
  return TCIMValue(TType::kUint8, static_cast<unsigned int>(bytes.size()), TValues(bytes.begin(), bytes.end()));
}

TEST(CimValue, TheDefaultIsAnUntypedNull) {
  const TCIMValue value;
  EXPECT_TRUE(value.IsNull());
  EXPECT_FALSE(value.IsArray());
  EXPECT_EQ(value.GetType(), TType::kNone);
  EXPECT_EQ(value.GetDeclaredSize(), 0U);
}

TEST(CimValue, EachConstructorGivesItsType) {
  EXPECT_EQ(TCIMValue("text").GetType(), TType::kString);
  EXPECT_EQ(TCIMValue(std::string("text")).GetType(), TType::kString);
  EXPECT_EQ(TCIMValue(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60)).GetType(), TType::kDateTime);
  EXPECT_EQ(TCIMValue(static_cast<unsigned char>(7)).GetType(), TType::kUint8);
  EXPECT_EQ(TCIMValue(7).GetType(), TType::kSint32);
  EXPECT_EQ(TCIMValue(TType("sint64"), 0, {}).GetType(), TType::kSint64);
}

TEST(CimValue, NoScalarConstructorGivesANullOrAnArray) {
  for (const TCIMValue& value : {TCIMValue(""), TCIMValue(std::string()), TCIMValue(static_cast<unsigned char>(0)),
                                 TCIMValue(0), TCIMValue(TCIMDateTime(0, 0, 0, 0, 0, 0, 0, 0))}) {
    EXPECT_FALSE(value.IsNull());
    EXPECT_FALSE(value.IsArray());
    EXPECT_EQ(value.GetDeclaredSize(), 0U);
  }
}

TEST(CimValue, ANullTextPointerIsTheNullString) {
  const TCIMValue value(static_cast<const char*>(nullptr));
  EXPECT_TRUE(value.IsNull());
  EXPECT_EQ(value.GetType(), TType::kString);
}

TEST(CimValue, ATextKeepsItsZeroBytes) {
  const std::string text("a\0b", 3);
  EXPECT_EQ(static_cast<std::string>(TCIMValue(text)), text);
}

TEST(CimValue, AnEmptyArrayIsNotNull) {
  const TCIMValue value(TType::kString, 0, {});
  EXPECT_FALSE(value.IsNull());
  EXPECT_TRUE(value.IsArray());
  EXPECT_TRUE(ElementsOf(value).empty());
}

TEST(CimValue, TheDeclaredSizeNeitherTruncatesNorPadsTheElements) {
  const TValues elements = {TCIMValue(1), TCIMValue(2), TCIMValue(3)};
  for (const unsigned int count : {0U, 2U, 3U, 8U, 0xFFFFFFFFU}) {
    const TCIMValue value(TType::kUint8, count, elements);
    EXPECT_EQ(value.GetDeclaredSize(), count);
    EXPECT_EQ(value.ToString(10), "{1, 2, 3}");
  }
}

TEST(CimValue, ElementsTakeTheTypeOfTheArray) {
  const TCIMValue value(TType::kUint8, 3, {TCIMValue(61), TCIMValue("0x20"), TCIMValue(-1)});
  ASSERT_EQ(ElementsOf(value).size(), 3U);
  for (const TCIMValue& element : ElementsOf(value)) EXPECT_EQ(element.GetType(), TType::kUint8);
  EXPECT_EQ(value.ToString(10), "{61, 32, 255}");
}

TEST(CimValue, NullElementsStayNull) {
  TCIMValue nullArray;
  nullArray.SetNullValue(TType::kUint16, 3);
  const TCIMValue value(TType::kUint8, 3, {TCIMValue(), TCIMValue(5), nullArray});
  ASSERT_EQ(ElementsOf(value).size(), 3U);
  EXPECT_TRUE(ElementsOf(value)[0].IsNull());
  EXPECT_FALSE(ElementsOf(value)[1].IsNull());
  EXPECT_TRUE(ElementsOf(value)[2].IsNull());
  for (const TCIMValue& element : ElementsOf(value)) {
    EXPECT_EQ(element.GetType(), TType::kUint8);
    EXPECT_FALSE(element.IsArray());
    EXPECT_EQ(element.GetDeclaredSize(), 0U);
  }
}

TEST(CimValue, AnElementMustNotBeAnArray) {
  ExpectMismatch("an array is not an element of an array", [] { TCIMValue(TType::kUint8, 1, {Bytes({1, 2})}); });
}

TEST(CimValue, AnUnsuitableElementLeavesTheValueAsItWas) {
  TCIMValue value = Bytes({1, 2});
  ExpectMismatch("\"three\" is not a number", [&value] { value.Set(TType::kUint8, 1, {TCIMValue("three")}); });
  EXPECT_EQ(value, Bytes({1, 2}));
}

TEST(CimValue, SettingReplacesWhatWasThere) {
  TCIMValue value("text");
  value.Set(TType("uint8"), 8, {TCIMValue(1)});
  EXPECT_TRUE(value.IsArray());
  EXPECT_EQ(value.ToString(10), "{1}");
  value.Set(TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 0));
  EXPECT_FALSE(value.IsArray());
  EXPECT_EQ(value.GetDeclaredSize(), 0U);
  EXPECT_EQ(value.ToString(10), "20260131123456.000000+000");
}

TEST(CimValue, AnArrayCanBeSetFromItsOwnElements) {
  TCIMValue value = Bytes({1, 2, 3});
  value.Set(TType::kUint16, 3, static_cast<TValues&>(value));
  EXPECT_EQ(value.GetType(), TType::kUint16);
  EXPECT_EQ(value.ToString(10), "{1, 2, 3}");
}

TEST(CimValue, TheNullValueHasItsTypeAndDeclaredSize) {
  TCIMValue value = Bytes({1, 2});
  value.SetNullValue(TType::kUint8, 14);
  EXPECT_TRUE(value.IsNull());
  EXPECT_TRUE(value.IsArray());
  EXPECT_EQ(value.GetType(), TType::kUint8);
  EXPECT_EQ(value.GetDeclaredSize(), 14U);
  EXPECT_TRUE(ElementsOf(value).empty());
}

TEST(CimValue, ANullValueOfNoDeclaredSizeIsAScalar) {
  TCIMValue value = Bytes({1, 2});
  value.SetNullValue(TType::kString, 0);
  EXPECT_TRUE(value.IsNull());
  EXPECT_FALSE(value.IsArray());
}

TEST(CimValue, CopiesAreIndependent) {
  TCIMValue original = Bytes({1, 2, 3});
  TCIMValue copy(original);
  static_cast<TValues&>(copy)[0] = TCIMValue(static_cast<unsigned char>(9));
  EXPECT_EQ(original.ToString(10), "{1, 2, 3}");
  EXPECT_EQ(copy.ToString(10), "{9, 2, 3}");
  original = TCIMValue("other");
  EXPECT_EQ(copy.ToString(10), "{9, 2, 3}");
}

TEST(CimValue, CopyIsIndependentOfElementsHandedOutBefore) {
  TCIMValue original = Bytes({1, 2, 3});
  auto& elements = static_cast<TValues&>(original);
  const TCIMValue copy(original);
  elements[0] = TCIMValue(static_cast<unsigned char>(9));
  EXPECT_EQ(original.ToString(10), "{9, 2, 3}");
  EXPECT_EQ(copy.ToString(10), "{1, 2, 3}");
}

TEST(CimValue, AssignmentCopiesEverything) {
  const TCIMValue original(TType::kUint16, 8, {TCIMValue(1)});
  TCIMValue copy("text");
  copy = original;
  EXPECT_EQ(copy, original);
  EXPECT_EQ(copy.GetDeclaredSize(), 8U);
  copy = TCIMValue();
  EXPECT_TRUE(copy.IsNull());
  EXPECT_EQ(copy.GetType(), TType::kNone);
}

TEST(CimValue, ElementsCanBeChangedInPlace) {
  TCIMValue value = Bytes({1});
  static_cast<TValues&>(value).emplace_back(static_cast<unsigned char>(2));
  EXPECT_EQ(value.ToString(10), "{1, 2}");
}

TEST(CimValue, MovingLeavesANullOfTheSameType) {
  TCIMValue source("text");
  const TCIMValue target(std::move(source));
  EXPECT_EQ(target, TCIMValue("text"));
  EXPECT_TRUE(source.IsNull());
  EXPECT_EQ(source.ToString(10), "");
  EXPECT_EQ(static_cast<unsigned int>(source), 0U);
}

TEST(CimValue, AMovedFromArrayHasNoElements) {
  TCIMValue source = Bytes({1, 2});
  TCIMValue target;
  target = std::move(source);
  EXPECT_EQ(target, Bytes({1, 2}));
  EXPECT_TRUE(source.IsNull());
  EXPECT_TRUE(ElementsOf(source).empty());
  EXPECT_EQ(source, source);
  source = Bytes({3});
  EXPECT_EQ(source.ToString(10), "{3}");
}

TEST(CimValue, SelfAssignmentKeepsTheValue) {
  TCIMValue value = Bytes({1, 2});
  TCIMValue& same = value;
  value = same;
  EXPECT_EQ(value, Bytes({1, 2}));
  value = std::move(same);
  EXPECT_EQ(value, Bytes({1, 2}));
}

TEST(CimValue, AnElementCanReplaceItsArray) {
  TCIMValue copied = Bytes({7, 8});
  copied = ElementsOf(copied)[1];
  EXPECT_EQ(copied, TCIMValue(static_cast<unsigned char>(8)));
  TCIMValue moved(TType::kString, 1, {TCIMValue("a text that is longer than a short string's own buffer")});
  moved = std::move(static_cast<TValues&>(moved)[0]);
  EXPECT_EQ(moved.ToString(10), "a text that is longer than a short string's own buffer");
}

TEST(CimValue, MovingDoesNotThrow) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<TCIMValue>);
  EXPECT_TRUE(std::is_nothrow_move_assignable_v<TCIMValue>);
}

TEST(CimValue, EqualityComparesTypeNullnessAndContent) {
  EXPECT_EQ(TCIMValue(5), TCIMValue(5));
  EXPECT_NE(TCIMValue(5), TCIMValue(6));
  EXPECT_NE(TCIMValue(5), TCIMValue(static_cast<unsigned char>(5)));
  EXPECT_NE(TCIMValue("5"), TCIMValue(5));
  EXPECT_EQ(TCIMValue("a"), TCIMValue("a"));
  EXPECT_NE(TCIMValue("a"), TCIMValue("A"));
  EXPECT_NE(TCIMValue(""), TCIMValue(static_cast<const char*>(nullptr)));
  EXPECT_EQ(TCIMValue(TType::kUint8, 1, {TCIMValue(1)}), TCIMValue(TType::kUint8, 14, {TCIMValue(1)}));
  EXPECT_NE(Bytes({1}), Bytes({1, 1}));
  EXPECT_NE(TCIMValue(TType::kUint8, 1, {TCIMValue(1)}), TCIMValue(static_cast<unsigned char>(1)));
  EXPECT_NE(TCIMValue(TType::kUint8, 0, {}), TCIMValue(TType::kSint8, 0, {}));
  EXPECT_EQ(TCIMValue(TCIMDateTime(2026, 1, 31, 0, 0, 0, 0, 0)), TCIMValue(TCIMDateTime(2026, 1, 31, 0, 0, 0, 0, 0)));
  EXPECT_NE(TCIMValue(TCIMDateTime(2026, 1, 31, 0, 0, 0, 0, 0)), TCIMValue(TCIMDateTime(2026, 1, 30, 0, 0, 0, 0, 0)));
}

TEST(CimValue, NullValuesOfOneTypeAreEqualWhateverTheirDeclaredSize) {
  TCIMValue small;
  TCIMValue large;
  small.SetNullValue(TType::kUint8, 8);
  large.SetNullValue(TType::kUint8, 14);
  EXPECT_EQ(small, large);
  EXPECT_NE(small, TCIMValue());
}

TEST(CimValue, MapsAreIteratedInAscendingOrderOfNames) {
  const TPropertyMap map = {{"b", TCIMValue(2)}, {"B", TCIMValue(1)}, {"a", TCIMValue(3)}};
  std::string names;
  for (const auto& entry : map) names += entry.first;
  EXPECT_EQ(names, "Bab");
}

}  // namespace
}  // namespace tests
