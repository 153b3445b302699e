// What counts as a finding, and how it is judged.
#include "host/result/findings.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "host/model/cimnamespace.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A class whose registers are all of one width, and one instance of it. A test describes registers, says what was
/// read, and looks at the findings.
class Findings : public testing::Test {
 protected:
  /// The next register of the class.
  TRegisterMeaning& Describe(ERole role) {
    TRegisterMeaning& meaning = meaning_.registers.emplace_back();
    meaning.property = meaning_.registers.size() - 1;
    meaning.width = width;
    meaning.role = role;
    return meaning;
  }
  /// Register "Status", the first one: bit 0 is A, bits 5:4 are B, bit 31 is C.
  TRegisterMeaning& DescribeStatus() {
    TRegisterMeaning& status = Describe(ERole::kErrors);
    status.fields = {{{0, 0}, false, "A", {}}, {{5, 4}, false, "B", {{2, 2, "two"}}}, {{31, 31}, false, "C", {}}};
    return status;
  }
  /// In the order of the class.
  TRegisterFacts& Reads(std::size_t index, std::uint64_t value) {
    if (!facts_.registers) facts_.registers.emplace();
    TRegisterFacts& facts = facts_.registers->emplace_back();
    facts.property = index;
    facts.isNarrow = width == 32;
    facts.value = value;
    return facts;
  }
  /// "error Status 5:4 B = 2 (two)", then "masked", "first", "[Log 0x10, Other ?]", "without Mask".
  std::vector<std::string> Found() {
    const auto cimNamespace = TNamespace::Create();
    TClassBuilder builder("KROSG_A");
    for (const char* name : {"Status", "Mask", "Enable", "Severity", "First", "Log"}) builder.Bytes(name);
    const auto cimClass = cimNamespace->AddClass(builder);
    facts_.key = "KROSG_A/node0/instance3";
    facts_.origin = TOrigin{CollectorProfile::EPath::kR8, 0, 4, 3, "01 02 03 04"};
    AddMeaning(meaning_, *cimClass, facts_);
    std::vector<std::string> texts;
    for (const TFinding& finding : facts_.findings) texts.push_back(Shown(finding));
    return texts;
  }

  unsigned width = 32;
  TClassMeaning meaning_;
  TInstanceFacts facts_;

 private:
  static std::string Shown(const TFinding& finding) {
    constexpr std::array<const char*, 3> kSeverities = {"corrected", "error", "fatal"};
    const TErrorRegister& place = *finding.place;
    std::string text = kSeverities.at(static_cast<std::size_t>(finding.severity));
    text += fmt::format(" {} {} {} = {}", place.name, finding.bits, finding.name.value_or("?"), finding.value);
    if (finding.text) text += " (" + *finding.text + ")";
    if (finding.isMasked) text += ", masked";
    if (finding.isFirst) text += ", first";
    if (finding.showsEvidence) {
      for (const TEvidence& one : place.evidence) {
        text += ", " + one.registerName + (one.value ? fmt::format(" 0x{:X}", *one.value) : " ?");
      }
    }
    for (const std::string& name : place.unknown) text += ", without " + name;
    return text;
  }
};

TEST_F(Findings, AreTheFieldsOfErrorRegistersThatAreNotZero) {
  DescribeStatus();
  Reads(0, 0x00000021);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 5:4 B = 2 (two)"));
  const TErrorRegister& place = *facts_.findings[0].place;
  EXPECT_EQ(place.className, "KROSG_A");
  EXPECT_EQ(place.key, "KROSG_A/node0/instance3");
  EXPECT_EQ(place.origin.chip, 4);
  EXPECT_EQ(place.value, 0x21U);
  EXPECT_TRUE(place.isNarrow);
  EXPECT_EQ(facts_.findings[1].width, 2U);
  EXPECT_FALSE(facts_.findings[1].isKnown);
  ASSERT_EQ(facts_.registers->at(0).fields.size(), 2U);
  EXPECT_EQ(facts_.registers->at(0).meaning, &meaning_.registers[0]);
}

TEST_F(Findings, UndescribedBitsCountToo) {
  Describe(ERole::kErrors);
  Reads(0, 0x00000104);
  EXPECT_THAT(Found(), ElementsAre("error Status 2 ? = 1", "error Status 8 ? = 1"));
}

TEST_F(Findings, AZeroWithATextIsNone) {
  DescribeStatus().fields[0].texts = {{0, 0, "fine"}};
  Reads(0, 0);
  EXPECT_THAT(Found(), IsEmpty());
  EXPECT_EQ(facts_.registers->at(0).fields.size(), 1U);
}

TEST_F(Findings, OtherRolesHaveNone) {
  for (const ERole role : {ERole::kMask, ERole::kSeverity, ERole::kFirstError, ERole::kCounter, ERole::kState}) {
    meaning_.registers.clear();
    facts_ = {};
    Describe(role).fields = {{{0, 0}, false, "A", {}}};
    Reads(0, 1);
    EXPECT_THAT(Found(), IsEmpty());
  }
}

TEST_F(Findings, ARegisterThatWasNotReadHasNone) {
  DescribeStatus();
  Describe(ERole::kMask);
  Reads(1, 1);
  EXPECT_THAT(Found(), IsEmpty());
  EXPECT_EQ(facts_.registers->at(0).meaning, &meaning_.registers[1]);
}

TEST_F(Findings, AnInstanceWithoutAPlaceHasNone) {
  DescribeStatus();
  EXPECT_THAT(Found(), IsEmpty());
}

TEST_F(Findings, AFieldIsMaskedIfAllOfItsSetBitsAre) {
  DescribeStatus().maskedBy = 1;
  Describe(ERole::kMask);
  Reads(0, 0x80000031);
  Reads(1, 0x80000010);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 5:4 B = 3", "error Status 31 C = 1, masked"));
}

TEST_F(Findings, ABitThatIsNotEnabledIsMasked) {
  DescribeStatus().enabledBy = 2;
  Describe(ERole::kMask);
  Describe(ERole::kMask);
  Reads(0, 0x80000001);
  Reads(2, 0x80000000);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1, masked", "error Status 31 C = 1"));
}

TEST_F(Findings, AMaskAndAnEnableBothMask) {
  TRegisterMeaning& status = DescribeStatus();
  status.maskedBy = 1;
  status.enabledBy = 2;
  Describe(ERole::kMask);
  Describe(ERole::kMask);
  Reads(0, 0x80000021);
  Reads(1, 0x00000001);
  Reads(2, 0x80000001);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1, masked", "error Status 5:4 B = 2 (two), masked",
                                   "error Status 31 C = 1"));
}

TEST_F(Findings, AreFatalIfABitThatIsNotMaskedIs) {
  TRegisterMeaning& status = DescribeStatus();
  status.maskedBy = 1;
  status.fatalBy = 3;
  Describe(ERole::kMask);
  Describe(ERole::kMask);
  Describe(ERole::kSeverity);
  Reads(0, 0x80000031);
  Reads(1, 0x80000010);  // the lower bit of B, and C
  Reads(3, 0x80000010);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 5:4 B = 3", "fatal Status 31 C = 1, masked"));
  facts_.findings.clear();
  facts_.registers->at(2).value = 0x00000021;
  EXPECT_THAT(Found(), ElementsAre("fatal Status 0 A = 1", "fatal Status 5:4 B = 3", "error Status 31 C = 1, masked"));
}

TEST_F(Findings, HaveTheSeverityOfTheirRegister) {
  DescribeStatus().severity = ESeverity::kCorrected;
  Reads(0, 1);
  EXPECT_THAT(Found(), ElementsAre("corrected Status 0 A = 1"));
}

TEST_F(Findings, TheRegisterThatTellsFatalOnesDecidesBeforeTheSeverity) {
  TRegisterMeaning& status = DescribeStatus();
  status.severity = ESeverity::kCorrected;
  status.fatalBy = 3;
  for (int i = 0; i < 3; ++i) Describe(ERole::kSeverity);
  Reads(0, 1).upper = 7;
  Reads(3, 0);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "corrected Status 63:32 ? = 7"));
}

TEST_F(Findings, RegistersThatWereNotReadCountAsZeroAndAnEnableAsOnes) {
  TRegisterMeaning& status = DescribeStatus();
  status.maskedBy = 1;
  status.enabledBy = 2;
  status.fatalBy = 3;
  status.firstError = {4, {4, 0}};
  status.evidence = {5, 3};
  for (int i = 0; i < 5; ++i) Describe(ERole::kState);
  Reads(0, 0x80000001);
  EXPECT_THAT(
      Found(),
      ElementsAre(
          "error Status 0 A = 1, Log ?, Severity ?, without Mask, without Enable, without Severity, without First",
          "error Status 31 C = 1, Log ?, Severity ?, without Mask, without Enable, without Severity, without "
          "First"));
}

TEST_F(Findings, AnUnreadRegisterOfSeveralRolesIsNamedOnce) {
  TRegisterMeaning& status = DescribeStatus();
  status.maskedBy = 1;
  status.fatalBy = 1;
  status.firstError = {1, {4, 0}};
  Describe(ERole::kMask);
  Reads(0, 1);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1, without Mask"));
}

TEST_F(Findings, TheFirstErrorIsTheOneWhoseBitIsNamed) {
  TRegisterMeaning& status = DescribeStatus();
  status.firstError = {4, {12, 8}};
  status.evidence = {5};
  for (int i = 0; i < 5; ++i) Describe(ERole::kLog);
  Reads(0, 0x80000021);
  Reads(4, 0xFFFFE5FF);  // 5 in bits 12:8
  Reads(5, 0xABC);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 5:4 B = 2 (two), first, Log 0xABC",
                                   "error Status 31 C = 1"));
  facts_.findings.clear();
  facts_.registers->at(1).value = 0x00001F00;  // 31
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 5:4 B = 2 (two)",
                                   "error Status 31 C = 1, first, Log 0xABC"));
  facts_.findings.clear();
  facts_.registers->at(1).value = 0x00000400;  // 4, which is in B but not set
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 5:4 B = 2 (two)", "error Status 31 C = 1"));
}

TEST_F(Findings, ANumberBeyondTheRegisterIsOfNoBit) {
  DescribeStatus().firstError = {1, {31, 0}};
  Describe(ERole::kFirstError);
  Reads(0, 0x80000001);
  TRegisterFacts& first = Reads(1, 32);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 31 C = 1"));
  facts_.findings.clear();
  first.value = 0xFFFFFFFF;
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1", "error Status 31 C = 1"));
}

TEST_F(Findings, TheFirstErrorIsCountedAsItsRegisterCounts) {
  TRegisterMeaning& status = DescribeStatus();
  status.isMsb0 = true;
  status.firstError = {1, {4, 0}};
  Describe(ERole::kFirstError);
  Reads(0, 0x80000021);
  Reads(1, 0);
  EXPECT_THAT(Found(),
              ElementsAre("error Status 31 A = 1", "error Status 26:27 B = 2 (two)", "error Status 0 C = 1, first"));
}

TEST_F(Findings, AMaskedOneCanBeTheFirst) {
  TRegisterMeaning& status = DescribeStatus();
  status.maskedBy = 1;
  status.firstError = {2, {4, 0}};
  Describe(ERole::kMask);
  Describe(ERole::kFirstError);
  Reads(0, 1);
  Reads(1, 1);
  Reads(2, 0);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1, masked, first"));
}

TEST_F(Findings, WithoutAFirstErrorEachHasTheEvidence) {
  DescribeStatus().evidence = {5, 1};
  for (int i = 0; i < 5; ++i) Describe(ERole::kLog);
  Reads(0, 0x80000001);
  Reads(5, 0x10);
  EXPECT_THAT(Found(),
              ElementsAre("error Status 0 A = 1, Log 0x10, Mask ?", "error Status 31 C = 1, Log 0x10, Mask ?"));
}

TEST_F(Findings, TheUpperHalfIsNeverMaskedOrFirst) {
  TRegisterMeaning& status = DescribeStatus();
  status.isMsb0 = true;
  status.maskedBy = 1;
  status.firstError = {2, {4, 0}};
  status.evidence = {3};
  for (int i = 0; i < 3; ++i) Describe(ERole::kLog);
  Reads(0, 0).upper = 0x80000001;
  Reads(1, 0xFFFFFFFF);
  Reads(2, 0);
  EXPECT_THAT(Found(), ElementsAre("error Status 63:32 ? = 2147483649"));
  EXPECT_EQ(facts_.findings[0].width, 32U);
  EXPECT_EQ(facts_.findings[0].place->value, 0U);
}

TEST_F(Findings, TheUpperHalfHasTheEvidenceIfTheFirstIsNotKnown) {
  TRegisterMeaning& status = DescribeStatus();
  status.evidence = {1};
  Describe(ERole::kLog);
  Reads(0, 1).upper = 2;
  Reads(1, 0x10);
  EXPECT_THAT(Found(), ElementsAre("error Status 0 A = 1, Mask 0x10", "error Status 63:32 ? = 2, Mask 0x10"));
}

TEST_F(Findings, WideRegistersReachBit63) {
  width = 64;
  TRegisterMeaning& status = DescribeStatus();
  status.fields[2].bits = {63, 60};
  status.maskedBy = 1;
  status.fatalBy = 2;
  status.firstError = {3, {5, 0}};
  for (int i = 0; i < 3; ++i) Describe(ERole::kLog);
  Reads(0, 0xC000000000000000);
  Reads(1, 0x8000000000000000);
  Reads(2, 0x4000000000000000);
  Reads(3, 63);
  EXPECT_THAT(Found(), ElementsAre("fatal Status 63:60 C = 12, first"));
  EXPECT_FALSE(facts_.findings[0].place->isNarrow);
}

TEST_F(Findings, SeveralErrorRegistersFollowTheClass) {
  DescribeStatus();
  DescribeStatus().severity = ESeverity::kCorrected;
  Reads(0, 0x80000000);
  Reads(1, 1);
  EXPECT_THAT(Found(), ElementsAre("error Status 31 C = 1", "corrected Mask 0 A = 1"));
}

TEST(SortFindings, UnmaskedThenTheWorstThenTheOrderFound) {
  std::vector<TFinding> findings;
  for (const auto& [name, severity, isMasked] : {std::tuple("a", ESeverity::kCorrected, false),
                                                 {"b", ESeverity::kFatal, true},
                                                 {"c", ESeverity::kError, false},
                                                 {"d", ESeverity::kFatal, false},
                                                 {"e", ESeverity::kCorrected, true},
                                                 {"f", ESeverity::kError, false},
                                                 {"g", ESeverity::kFatal, false},
                                                 {"h", ESeverity::kError, true}}) {
    TFinding& finding = findings.emplace_back();
    finding.name = name;
    finding.severity = severity;
    finding.isMasked = isMasked;
  }
  SortFindings(findings);
  std::string order;
  for (const TFinding& finding : findings) order += *finding.name;
  EXPECT_EQ(order, "dgcfabhe");
}

}  // namespace
}  // namespace tests
