#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tests
