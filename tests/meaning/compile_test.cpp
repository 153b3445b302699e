// Role, numbering, width, unit and fields of each register, and the slips in their qualifiers.
#include "host/meaning/compile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/meaning/words.h"
#include "tests/meaning/meaningfixture.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TCIMValue NullString() {
  TCIMValue value;
  value.SetNullValue(TType::kString, 0);
  return value;
}

TEST(Meaning, WithoutQualifiersARegisterIsAStateWithoutFields) {
  TCompiled compiled;
  compiled.Wide("A").Narrow("B");
  EXPECT_EQ(compiled[0].property, 1U);
  EXPECT_EQ(compiled[0].width, 64U);
  EXPECT_EQ(compiled[1].width, 32U);
  EXPECT_EQ(compiled[0].role, ERole::kState);
  EXPECT_FALSE(compiled[0].isMsb0);
  EXPECT_THAT(compiled[0].fields, IsEmpty());
  EXPECT_EQ(compiled[0].severity, ESeverity::kError);
  EXPECT_FALSE(compiled[0].maskedBy || compiled[0].enabledBy || compiled[0].fatalBy || compiled[0].firstError);
  EXPECT_THAT(compiled.Slips(), IsEmpty());
}

TEST(Meaning, EveryRoleHasItsWord) {
  const std::vector<std::pair<std::string, ERole>> roles = {
      {"errors", ERole::kErrors},         {"mask", ERole::kMask},
      {"severity", ERole::kSeverity},     {"first-error", ERole::kFirstError},
      {"counter", ERole::kCounter},       {"address", ERole::kAddress},
      {"syndrome", ERole::kSyndrome},     {"log", ERole::kLog},
      {"state", ERole::kState},           {"identity", ERole::kIdentity},
      {"First-ERROR", ERole::kFirstError}};
  for (const auto& [word, role] : roles) {
    TCompiled compiled;
    compiled.Wide("A", {{"Role", word}});
    EXPECT_EQ(compiled[0].role, role) << word;
    EXPECT_THAT(compiled.Slips(), IsEmpty());
    EXPECT_EQ(RoleOf(RoleName(role)), role);
  }
  EXPECT_EQ(RoleName(ERole::kFirstError), "first-error");
}

TEST(Meaning, AnUnknownRoleIsNoRole) {
  TCompiled compiled;
  compiled.Wide("A", {{"Role", "error"}, {"MaskedBy", "Nowhere"}}).Wide("B", {{"Role", "mask "}});
  EXPECT_EQ(compiled[0].role, ERole::kState);
  EXPECT_THAT(
      compiled.Slips(),
      ElementsAre("A.Role[0]+0: found 'error', expected 'errors', 'mask', 'severity', 'first-error', 'counter', "
                  "'address', 'syndrome', 'log', 'state' or 'identity'",
                  "B.Role[0]+0: found 'mask ', expected 'errors', 'mask', 'severity', 'first-error', 'counter', "
                  "'address', 'syndrome', 'log', 'state' or 'identity'"));
}

TEST(Meaning, ARegistersNumberingComesBeforeThatOfItsClass) {
  TCompiled compiled(TQualifiers{{"BitNumbering", "MSB0"}});
  compiled.Wide("A").Wide("B", {{"BitNumbering", "lsb0"}}).Narrow("C", {{"BitNumbering", "msb1"}});
  EXPECT_TRUE(compiled[0].isMsb0);
  EXPECT_FALSE(compiled[1].isMsb0);
  EXPECT_TRUE(compiled[2].isMsb0) << "a bad word is as if it were not there";
  EXPECT_THAT(compiled.Slips(), ElementsAre("C.BitNumbering[0]+0: found 'msb1', expected 'lsb0' or 'msb0'"));
}

TEST(Meaning, ABadNumberingOfTheClassIsLsb0) {
  TCompiled compiled(TQualifiers{{"BitNumbering", "0"}});
  compiled.Wide("A", {{"BitNumbering", "msb0"}}).Wide("B");
  EXPECT_TRUE(compiled[0].isMsb0);
  EXPECT_FALSE(compiled[1].isMsb0);
  EXPECT_THAT(compiled.Slips(), ElementsAre("BitNumbering[0]+0: found '0', expected 'lsb0' or 'msb0'"));
}

TEST(Meaning, FieldsAreThoseOfWidthAndNumbering) {
  TCompiled compiled;
  compiled.Narrow("A", {{"BitNumbering", "msb0"}, {"Fields", Strings({"31 Last", "0:1/hex First", "32 Beyond"})}})
      .Wide("B", {{"Fields", Strings({"32 Inside", "32=1 yes", "x"})}});
  ASSERT_EQ(compiled[0].fields.size(), 2U);
  EXPECT_EQ(compiled[0].fields[0].name, "Last");
  EXPECT_EQ(compiled[0].fields[0].bits, (TBits{0, 0}));
  EXPECT_EQ(compiled[0].fields[1].bits, (TBits{31, 30}));
  EXPECT_TRUE(compiled[0].fields[1].isHex);
  ASSERT_EQ(compiled[1].fields.size(), 1U);
  EXPECT_EQ(compiled[1].fields[0].bits, (TBits{32, 32}));
  EXPECT_EQ(compiled[1].fields[0].texts.at(0).text, "yes");
  EXPECT_THAT(compiled.Slips(), ElementsAre("A.Fields[2]+0: found bit 32, expected 0 to 31",
                                            "B.Fields[2]+0: found 'x', expected the number of a bit"));
}

TEST(Meaning, ANullElementIsBadAndThoseAfterItKeepTheirPlaces) {
  TCompiled compiled;
  compiled.Wide("A", {{"Fields", TCIMValue(TType::kString, 0, {"1 F", NullString(), "y"})}});
  EXPECT_EQ(compiled[0].fields.size(), 1U);
  EXPECT_THAT(compiled.Slips(), ElementsAre("A.Fields[1]+0: found null, expected a string",
                                            "A.Fields[2]+0: found 'y', expected the number of a bit"));
}

TEST(Meaning, AQualifierWithoutAValueIsBad) {
  TCIMValue nullArray;
  nullArray.SetNullValue(TType::kString, 1);
  TCompiled compiled(TQualifiers{{"BitNumbering", NullString()}});
  compiled.Wide("A", {{"Fields", nullArray}, {"Role", NullString()}});
  EXPECT_EQ(compiled[0].role, ERole::kState);
  EXPECT_THAT(compiled.Slips(), ElementsAre("BitNumbering[0]: the qualifier 'BitNumbering' has no value",
                                            "A.Role[0]: the qualifier 'Role' has no value",
                                            "A.Fields[0]: the qualifier 'Fields' has no value"));
}

TEST(Meaning, AQualifierOfAnotherTypeIsSomebodyElses) {
  TCompiled compiled(TQualifiers{{"BitNumbering", Strings({"msb0"})}});
  compiled.Wide("A", {{"Fields", "0 F"}, {"Role", Strings({"errors"})}, {"MaskedBy", 5}, {"Severity", Numbers({1})}});
  EXPECT_EQ(compiled[0].role, ERole::kState);
  EXPECT_FALSE(compiled[0].isMsb0);
  EXPECT_THAT(compiled[0].fields, IsEmpty());
  EXPECT_THAT(compiled.Slips(), IsEmpty());
}

TEST(Meaning, OnlyACounterHasAUnit) {
  TCompiled compiled;
  compiled.Wide("A", {{"Role", "counter"}, {"Units", "Errors"}, {"PUnit", "count"}})
      .Wide("B", {{"Role", "counter"}, {"Units", ""}, {"PUnit", "count"}})
      .Wide("C", {{"Role", "counter"}, {"PUnit", 5}})
      .Wide("D", {{"Units", "Errors"}});
  EXPECT_EQ(compiled[0].unit, "Errors");
  EXPECT_EQ(compiled[1].unit, "count");
  EXPECT_EQ(compiled[2].unit, "");
  EXPECT_EQ(compiled[3].unit, "");
}

TEST(Meaning, OnlyAnErrorsRegisterIsMaskedOrHasEvidence) {
  TCompiled compiled;
  compiled.Wide("A", {{"MaskedBy", "A"}, {"EnabledBy", "A"}, {"FatalBy", "A"}, {"FirstErrorIn", "A"}})
      .Wide("B", {{"Role", "mask"}, {"Severity", "fatal"}, {"Evidence", Strings({"A"})}});
  EXPECT_FALSE(compiled[0].maskedBy || compiled[0].enabledBy || compiled[0].fatalBy || compiled[0].firstError);
  EXPECT_EQ(compiled[1].severity, ESeverity::kError);
  EXPECT_THAT(compiled[1].evidence, IsEmpty());
  const std::string state = "has no effect on a register of the role 'state', expected the role 'errors'";
  const std::string mask = "has no effect on a register of the role 'mask', expected the role 'errors'";
  EXPECT_THAT(compiled.Slips(), ElementsAre("A.MaskedBy[0]: the qualifier 'MaskedBy' " + state,
                                            "A.EnabledBy[0]: the qualifier 'EnabledBy' " + state,
                                            "A.FatalBy[0]: the qualifier 'FatalBy' " + state,
                                            "A.FirstErrorIn[0]: the qualifier 'FirstErrorIn' " + state,
                                            "B.Severity[0]: the qualifier 'Severity' " + mask,
                                            "B.Evidence[0]: the qualifier 'Evidence' " + mask));
}

TEST(Meaning, ManySlipsAreCounted) {
  TCompiled compiled;
  compiled.Wide("A", {{"Fields", Strings(std::vector<std::string>(1003, "x"))}});
  const std::vector<std::string> slips = compiled.Slips();
  ASSERT_EQ(slips.size(), 1001U);
  EXPECT_EQ(slips[999], "A.Fields[999]+0: found 'x', expected the number of a bit");
  EXPECT_EQ(slips[1000], ": and 3 more slips in the qualifiers of this class");
}

TEST(Meaning, NobodyNeedsToAskForTheSlips) {
  const auto cimClass = TNamespace::Create()->AddClass(TClassBuilder("C").Bytes("A", {{"Role", "x"}}));
  EXPECT_EQ(CompileMeaning(*cimClass, {{0, false}}, nullptr).registers.at(0).role, ERole::kState);
}

}  // namespace
}  // namespace tests
