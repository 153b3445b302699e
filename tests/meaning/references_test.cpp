// The registers that an errors register names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/meaning/meaningfixture.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The qualifiers of an errors register.
TQualifiers Errors(TQualifiers others) {
  others.emplace(others.begin(), "Role", "errors");
  return others;
}

TEST(References, NameRegistersOfTheClassInAnyCase) {
  TCompiled compiled;
  compiled.Wide("Status", Errors({{"MaskedBy", "mask"}, {"EnabledBy", "ENABLE"}, {"FatalBy", "Fatal"}}))
      .Wide("Mask")
      .Wide("Enable")
      .Wide("Fatal");
  EXPECT_EQ(compiled[0].maskedBy, 1U);
  EXPECT_EQ(compiled[0].enabledBy, 2U);
  EXPECT_EQ(compiled[0].fatalBy, 3U);
  EXPECT_THAT(compiled.Slips(), IsEmpty());
}

TEST(References, MayNameTheRegisterItself) {
  TCompiled compiled;
  compiled.Wide("A", Errors({{"MaskedBy", "A"}, {"FirstErrorIn", "A 5:0"}, {"Evidence", Strings({"A"})}}));
  EXPECT_EQ(compiled[0].maskedBy, 0U);
  EXPECT_EQ(compiled[0].firstError->registerIndex, 0U);
  EXPECT_THAT(compiled[0].evidence, ElementsAre(0U));
  EXPECT_THAT(compiled.Slips(), IsEmpty());
}

TEST(References, ToWhatIsNotARegisterAreBad) {
  TCompiled compiled;
  compiled.Wide("Status", Errors({{"MaskedBy", "Statsu"}, {"EnabledBy", "InstanceID"}, {"FatalBy", " Status"}}))
      .Wide("B", Errors({{"FirstErrorIn", ""}, {"Evidence", Strings({"", "B ", "b"})}}));
  EXPECT_FALSE(compiled[0].maskedBy || compiled[0].enabledBy || compiled[0].fatalBy || compiled[1].firstError);
  EXPECT_THAT(compiled[1].evidence, ElementsAre(1U));
  EXPECT_THAT(compiled.Slips(),
              ElementsAre("Status.MaskedBy[0]+0: found 'Statsu', expected a register of the class 'C'; did you mean "
                          "'Status'?",
                          "Status.EnabledBy[0]+0: found 'InstanceID', expected a register of the class 'C'",
                          "Status.FatalBy[0]+0: found ' Status', expected a register of the class 'C'; did you mean "
                          "'Status'?",
                          "B.FirstErrorIn[0]+0: found '', expected a register of the class 'C'",
                          "B.Evidence[0]+0: found '', expected a register of the class 'C'",
                          "B.Evidence[1]+0: found 'B ', expected a register of the class 'C'"));
}

TEST(References, HaveTheSameWidthIfTheirBitsMeet) {
  TCompiled compiled;
  compiled.Wide("A", Errors({{"MaskedBy", "N"}, {"EnabledBy", "N"}, {"FatalBy", "N"}}))
      .Narrow("N", Errors({{"MaskedBy", "A"}, {"FirstErrorIn", "A"}, {"Evidence", Strings({"A"})}}));
  EXPECT_FALSE(compiled[0].maskedBy || compiled[0].enabledBy || compiled[0].fatalBy || compiled[1].maskedBy);
  EXPECT_EQ(compiled[1].firstError->registerIndex, 0U) << "a number is a number";
  EXPECT_THAT(compiled[1].evidence, ElementsAre(0U)) << "it is only shown";
  const std::string found = "found a register of 32 bits, expected one of 64 as this one";
  EXPECT_THAT(compiled.Slips(),
              ElementsAre("A.MaskedBy[0]+0: " + found, "A.EnabledBy[0]+0: " + found, "A.FatalBy[0]+0: " + found,
                          "N.MaskedBy[0]+0: found a register of 64 bits, expected one of 32 as this "
                          "one"));
}

TEST(References, EverySeverityHasItsWord) {
  TCompiled compiled;
  compiled.Wide("A", Errors({{"Severity", "corrected"}}))
      .Wide("B", Errors({{"Severity", "FATAL"}}))
      .Wide("C", Errors({{"Severity", "error"}}))
      .Wide("D", Errors({{"Severity", "warning"}}));
  EXPECT_EQ(compiled[0].severity, ESeverity::kCorrected);
  EXPECT_EQ(compiled[1].severity, ESeverity::kFatal);
  EXPECT_EQ(compiled[2].severity, ESeverity::kError);
  EXPECT_EQ(compiled[3].severity, ESeverity::kError);
  EXPECT_THAT(compiled.Slips(),
              ElementsAre("D.Severity[0]+0: found 'warning', expected 'corrected', 'error' or 'fatal'"));
}

TEST(References, SeverityBesideFatalByIsAWarningAndBothAreKept) {
  TCompiled compiled;
  compiled.Wide("A", Errors({{"FatalBy", "B"}, {"Severity", "corrected"}})).Wide("B");
  EXPECT_EQ(compiled[0].fatalBy, 1U);
  EXPECT_EQ(compiled[0].severity, ESeverity::kCorrected);
  EXPECT_THAT(compiled.Slips(),
              ElementsAre("warning: A.Severity[0]: found 'Severity' together with 'FatalBy', expected one of them"));
}

TBits FirstErrorBits(const std::string& text, bool isNarrow = false, bool isMsb0 = false) {
  TCompiled compiled;
  const TQualifiers numbering = {{"BitNumbering", isMsb0 ? "msb0" : "lsb0"}};
  compiled.Wide("A", Errors({{"FirstErrorIn", text}}));
  isNarrow ? compiled.Narrow("F", numbering) : compiled.Wide("F", numbering);
  EXPECT_THAT(compiled.Slips(), IsEmpty());
  const auto place = compiled[0].firstError;
  EXPECT_TRUE(place);
  EXPECT_EQ(place->registerIndex, 1U);
  return place->bits;
}

TEST(FirstError, IsAWholeRegisterOrItsBits) {
  EXPECT_EQ(FirstErrorBits("F"), (TBits{63, 0}));
  EXPECT_EQ(FirstErrorBits("F", true), (TBits{31, 0}));
  EXPECT_EQ(FirstErrorBits("f 4:0"), (TBits{4, 0}));
  EXPECT_EQ(FirstErrorBits("F   3:3"), (TBits{3, 3}));
}

TEST(FirstError, CountsInTheNumberingOfTheRegisterThatHasIt) {
  EXPECT_EQ(FirstErrorBits("F 27:31", true, true), (TBits{4, 0}));
  EXPECT_EQ(FirstErrorBits("F 59:63", false, true), (TBits{4, 0}));
}

TEST(FirstError, OfOtherFormsIsBad) {
  const auto slip = [](const std::string& text, const TQualifiers& numbering = {}) {
    TCompiled compiled;
    compiled.Wide("A", Errors({{"FirstErrorIn", text}})).Narrow("F", numbering);
    EXPECT_FALSE(compiled[0].firstError) << text;
    const auto slips = compiled.Slips();
    return slips.size() == 1 ? slips[0] : "not one slip";
  };
  EXPECT_EQ(slip("F 5"), "A.FirstErrorIn[0]+3: found the end of the string, expected ':'");
  EXPECT_EQ(slip("F "), "A.FirstErrorIn[0]+2: found the end of the string, expected the number of a bit");
  EXPECT_EQ(slip("F 4:0 "), "A.FirstErrorIn[0]+5: found a blank, expected the end of the string");
  EXPECT_EQ(slip("F 32:0"), "A.FirstErrorIn[0]+2: found bit 32, expected 0 to 31");
  EXPECT_EQ(slip("F 0:4"),
            "A.FirstErrorIn[0]+2: found 0:4 in a register of the numbering lsb0, expected the more significant end "
            "first, 4:0");
  EXPECT_EQ(slip("F 4:0", {{"BitNumbering", "msb0"}}),
            "A.FirstErrorIn[0]+2: found 4:0 in a register of the numbering msb0, expected the more significant end "
            "first, 0:4");
  EXPECT_EQ(slip(" F"), "A.FirstErrorIn[0]+0: found '', expected a register of the class 'C'");
  EXPECT_EQ(slip("F\t4:0"), "A.FirstErrorIn[0]+0: found 'F\t4:0', expected a register of the class 'C'");
}

TEST(Evidence, KeepsItsOrderAndCountsOnce) {
  TCompiled compiled;
  compiled.Wide("A", Errors({{"Evidence", Strings({"C", "B", "c", "D", "X"})}})).Wide("B").Narrow("C").Wide("D");
  EXPECT_THAT(compiled[0].evidence, ElementsAre(2U, 1U, 3U));
  EXPECT_THAT(compiled.Slips(), ElementsAre("A.Evidence[2]+0: found 'c' again, expected each register once",
                                            "A.Evidence[4]+0: found 'X', expected a register of the class 'C'"));
}

}  // namespace
}  // namespace tests
