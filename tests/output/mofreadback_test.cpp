// The schema reader understands what the format `mof` writes.
#include <gtest/gtest.h>

#include "host/schema/schemareader.h"
#include "tests/output/outputfixture.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

constexpr const char* kSchema = R"(
class KROSG_Target { string Key; };
class KROSG_Base { string Quotes; string Controls; };
class KROSG_Awkward : KROSG_Base {
  string NonAscii; string Empty; string Nothing; string Long;
  uint8 Bytes[]; uint8 NoBytes[]; uint8 Register[14]; string Texts[];
  sint8 Small; uint16 Middle; sint64 Lowest; uint64 Highest; boolean Yes; boolean No[];
  real32 Tenth; real64 Huge; real64 Whole; real64 Least;
  char16 Letter; char16 Quote; char16 Accent; char16 Controls16[];
  datetime Moment; datetime Span; datetime Vague[];
  KROSG_Target REF Target;
};
class KROSG_Lossy { string Invalid; real64 Endless; datetime Impossible; };
)";

class MofReadBack : public TOutputTest {
 protected:
  MofReadBack() {
    files_.Add("schema.mof", kSchema);
    cimNamespace_ = Read({"schema.mof"}).cimNamespace;
  }
  TSchemaResult Read(const std::vector<std::string>& paths) {
    TSchemaResult result = ReadSchema(paths, files_);
    for (const auto& diagnostic : result.diagnostics) {
      // The schema gives a warning, because a class has a reference without being an association.
      if (diagnostic.severity == EDiagnosticSeverity::kError) ADD_FAILURE() << FormatDiagnostic(diagnostic);
    }
    return result;
  }
  TInstancePtr New(const std::string& name, const std::vector<std::pair<std::string, TCIMValue>>& values) {
    return Make(cimNamespace_->FindClass(name), values);
  }
  /// The instance after being written and read back.
  TInstancePtr ReadBack(const TInstancePtr& instance) {
    files_.Add("instances.mof", Written(EOutputForm::kMof, {instance}, Partial()));
    const TSchemaResult result = Read({"schema.mof", "instances.mof"});
    return result.instances.size() == 1 ? result.instances[0] : TInstancePtr();
  }
  /// Writes the instance, reads it back and compares every property.
  void ExpectSameReadBack(const TInstancePtr& instance) {
    const TInstancePtr read = ReadBack(instance);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->Class().Name(), instance->Class().Name());
    const auto& properties = instance->Class().Properties();
    for (std::size_t i = 0; i < properties.size(); ++i) {
      const std::string& name = properties[i]->Definition().name;
      ASSERT_EQ(read->IsSet(i), instance->IsSet(i)) << name;
      EXPECT_EQ(read->Value(i).GetType(), instance->Value(i).GetType()) << name;
      EXPECT_TRUE(read->Value(i) == instance->Value(i)) << name << ": " << read->Value(i).ToString(10);
    }
  }
  TMemoryReader files_;
};

TCIMValue Integer(TType type, std::uint64_t bits) { return TCIMValue::FromInteger(type, bits); }
TCIMValue Real(TType type, double number) { return TCIMValue::FromReal(type, number); }

TEST_F(MofReadBack, TextsAreTheSame) {
  std::string all;
  for (int c = 1; c < 0x80; ++c) all += static_cast<char>(c);
  ExpectSameReadBack(New(
      "KROSG_Awkward",
      {{"Quotes", TCIMValue(R"("\\" 'a' \n \x41 //*/)")},
       {"Controls", TCIMValue(all + "\u0080\u009f\u00a0")},
       {"NonAscii", TCIMValue("Gr\u00fc\u00dfe \u6f22 \U0001F600")},
       {"Empty", TCIMValue("")},
       {"Nothing", NullOf(TType::kString)},
       {"Texts", Array(TType::kString, {TCIMValue("a\"b"), NullOf(TType::kString), TCIMValue(""), TCIMValue("\\")})}}));
}

TEST_F(MofReadBack, LongTextsAreTheSame) {
  std::string text;
  for (int i = 0; i < 500; ++i)
    text +=
        "\u20ac\x01"
        "0\U0001F600\"";
  ExpectSameReadBack(New("KROSG_Awkward", {{"Long", TCIMValue(text)}}));
}

TEST_F(MofReadBack, NumbersAreTheSame) {
  ExpectSameReadBack(New("KROSG_Awkward", {{"Small", Integer(TType::kSint8, 0x80)},
                                           {"Middle", Integer(TType::kUint16, 0)},
                                           {"Lowest", Integer(TType::kSint64, 1ULL << 63)},
                                           {"Highest", Integer(TType::kUint64, ~0ULL)},
                                           {"Yes", Integer(TType::kBoolean, 1)},
                                           {"No", Array(TType::kBoolean, {Integer(TType::kBoolean, 0)})},
                                           {"Tenth", Real(TType::kReal32, 0.1)},
                                           {"Huge", Real(TType::kReal64, -1e300)},
                                           {"Whole", Real(TType::kReal64, 3)},
                                           {"Least", Real(TType::kReal64, 5e-324)}}));
}

TEST_F(MofReadBack, ByteArraysAreTheSame) {
  ExpectSameReadBack(
      New("KROSG_Awkward", {{"Bytes", Array(TType::kUint8, {Integer(TType::kUint8, 255), NullOf(TType::kUint8)})},
                            {"NoBytes", Bytes({})},
                            {"Register", Bytes({0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0})}}));
}

TEST_F(MofReadBack, CharactersTimesAndReferencesAreTheSame) {
  ExpectSameReadBack(
      New("KROSG_Awkward",
          {{"Letter", Integer(TType::kChar16, 'A')},
           {"Quote", Integer(TType::kChar16, '\'')},
           {"Accent", Integer(TType::kChar16, 0xE9)},
           {"Controls16", Array(TType::kChar16, {Integer(TType::kChar16, '\n'), Integer(TType::kChar16, 0x1B),
                                                 Integer(TType::kChar16, '\\'), Integer(TType::kChar16, 0xFFFF)})},
           {"Moment", TCIMValue(Moment())},
           {"Span", TCIMValue(TCIMDateTime::FromString("00000001132312.000000:000"))},
           {"Vague", Array(TType::kDateTime, {TCIMValue(TCIMDateTime::FromString("2026013112****.******+060"))})},
           {"Target", TCIMValue::FromText(TType::kReference, "KROSG_Target.Key=\"a\\\"b\"")}}));
}

TEST_F(MofReadBack, WhatMofCannotExpressReadsBackAsTheNearestValue) {
  const TInstancePtr read =
      ReadBack(New("KROSG_Lossy", {{"Invalid", TCIMValue("a\xff"
                                                         "b")},
                                   {"Endless", Real(TType::kReal64, std::numeric_limits<double>::quiet_NaN())},
                                   {"Impossible", TCIMValue(TCIMDateTime(2255, 255, 255, 255, 255, 255, 0, 0))}}));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->Value(0).ToString(10), "a\uFFFDb");
  EXPECT_TRUE(read->Value(1).IsNull());
  EXPECT_TRUE(read->Value(2).IsNull());
}

TEST_F(MofReadBack, NoTextLeavesItsComment) {
  const auto instance = New("KROSG_Awkward", {{"Quotes", TCIMValue("x")}});
  for (const char* text : {"\ninstance of KROSG_Awkward {};\n", "\r\ninstance of KROSG_Awkward {};", "*/ \\\n\\"}) {
    TDocument document = Hostile(text);
    document.instances[0].first = instance;
    files_.Add("instances.mof", Written(EOutputForm::kMof, document));
    const TSchemaResult result = Read({"schema.mof", "instances.mof"});
    ASSERT_EQ(result.instances.size(), 1U) << text;
    EXPECT_EQ(result.instances[0]->Find("Quotes")->ToString(10), "x");
  }
}

}  // namespace
}  // namespace tests
