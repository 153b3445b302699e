// The slips in what registers mean, as a check and a collection report them: each at its place inside the string.
#include "host/schema/collectorneeds.h"
#include "host/schema/meaningfindings.h"

#include "tests/schema/collectorschema.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

std::string FirstLines(const std::vector<TTextDiagnostic>& findings) {
  std::string shown;
  for (const TTextDiagnostic& finding : findings) {
    const std::string whole = FormatDiagnostic(finding);
    shown += whole.substr(0, whole.find('\n') + 1);
  }
  return shown;
}

TSchemaResult Read(TSchemaText& schema, const std::string& text) {
  schema.File("base.mof", kCollectorSchema).File("a.mof", text);
  TSchemaResult result = schema.Read({"base.mof", "a.mof"});
  EXPECT_EQ(Shown(result), "");
  return result;
}

// The first line of each finding about "a.mof".
std::string Findings(const std::string& text) {
  TSchemaText schema;
  const TSchemaResult result = Read(schema, text);
  return FirstLines(CheckCollectorNeeds(*result.cimNamespace, "schema", result.sources.get()));
}

const std::string kClass = "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\nclass ";
const std::string kMemory = kClass + "KROSG_VO_MEMCTL_StatisticData : Chipset {\n";

// The registers begin on line 3.
std::string FindingsOf(const std::string& registers) { return Findings(kMemory + registers + "};\n"); }

TEST(MeaningCheck, AcceptsWhatIsRight) {
  EXPECT_EQ(
      FindingsOf("[Offset{1}, MaxLen(4), Role(\"errors\"), MaskedBy(\"Mask\"), Fields{\"31 Top\", \"31=1 set\"}]\n"
                 "uint8 Errors[];\n"
                 "[Offset{5}, MaxLen(4), Role(\"MASK\")] uint8 Mask[];\n"),
      "");
}

TEST(MeaningCheck, ASlipIsAtItsByteInTheString) {
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Fields{\"0 A\",\n"
                       "   \"5:x B\"}] uint8 P[];\n"),
            "a.mof:4:7: error: found 'x', expected the number of a bit\n");
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Fields{\n"
                       "\"0 A\", \"31\"}] uint8 P[];\n"),
            "a.mof:4:11: error: found the end of the string, expected ':', '/hex', '=' or a blank\n")
      << "at the closing quote";
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Fields{\n"
                       "\"\"}] uint8 P[];\n"),
            "a.mof:4:2: error: found the end of the string, expected the number of a bit\n");
}

TEST(MeaningCheck, TheLineIsShownWithACaret) {
  TSchemaText schema;
  const TSchemaResult result = Read(schema, kMemory + "[Offset{1}, MaxLen(4), Fields{\"32 A\"}] uint8 P[]; };\n");
  const auto findings = CheckCollectorNeeds(*result.cimNamespace, "schema", result.sources.get());
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(FormatDiagnostic(findings[0]),
            "a.mof:3:32: error: found bit 32, expected 0 to 31\n"
            "  [Offset{1}, MaxLen(4), Fields{\"32 A\"}] uint8 P[]; };\n"
            "                                 ^\n");
}

// The text is 1=0-x T; its x is in the second literal, after an escape of four characters.
TEST(MeaningCheck, EscapesCommentsAndAdjacentLiteralsAreAllowedFor) {
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Fields /* {\"7\"} */ {\"\\x30 A, \\\"}\", // , \"8\"\n"
                       " \"1\\x20\\\\\" /**/ , \"\\x31=\" // 1=\n"
                       "  /* \"no\" */ \"\\x30-x T\"}] uint8 P[];\n"),
            "a.mof:5:20: error: found 'x', expected a value\n");
}

TEST(MeaningCheck, EachByteOfAStringHasItsPlace) {
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Fields{\n"
                       "\"\\x31\"\n"
                       "\"\\x32\"\n"
                       "\"\\x33 A\"}] uint8 P[];\n"),
            "a.mof:6:2: error: found '3', expected ':', '/hex', '=' or a blank\n");
}

TEST(MeaningCheck, TheKindOfLineEndDoesNotMatter) {
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Fields{\"0 A\",\r\n"
                       "   \"1 B\", // \"\r\n"
                       "   \"0:x C\"}] uint8 P[];\r\n"),
            "a.mof:5:7: error: found 'x', expected the number of a bit\n");
}

TEST(MeaningCheck, WordsAndReferencesAreCheckedToo) {
  EXPECT_EQ(
      FindingsOf("[Offset{1}, MaxLen(4), Role ( /* a */ \"erors\" ), BitNumbering(\"msb\")] uint8 P[];\n"
                 "[Offset{5}, MaxLen(8), Role(\"errors\"), MaskedBy(\"P\"), EnabledBy(\"Maks\"), FatalBy(\"Q\"),\n"
                 " Severity(\"mild\"), FirstErrorIn(\"P 40:0\"), Evidence{\"P\", \"InstanceID\", null, \"p\"}]\n"
                 "uint8 Q[];\n"),
      "a.mof:3:40: error: found 'erors', expected 'errors', 'mask', 'severity', 'first-error', 'counter', "
      "'address', 'syndrome', 'log', 'state' or 'identity'\n"
      "a.mof:3:64: error: found 'msb', expected 'lsb0' or 'msb0'\n"
      "a.mof:4:50: error: found a register of 32 bits, expected one of 64 as this one\n"
      "a.mof:4:66: error: found 'Maks', expected a register of the class 'KROSG_VO_MEMCTL_StatisticData'\n"
      "a.mof:5:2: warning: found 'Severity' together with 'FatalBy', expected one of them\n"
      "a.mof:5:12: error: found 'mild', expected 'corrected', 'error' or 'fatal'\n"
      "a.mof:5:36: error: found bit 40, expected 0 to 31\n"
      "a.mof:5:59: error: found 'InstanceID', expected a register of the class "
      "'KROSG_VO_MEMCTL_StatisticData'\n"
      "a.mof:5:72: error: found null, expected a string\n"
      "a.mof:5:79: error: found 'p' again, expected each register once\n");
}

TEST(MeaningCheck, AQualifierThatIsWrongAsAWholeIsAtItsName) {
  EXPECT_EQ(FindingsOf("[Offset{1}, MaxLen(4), Role,\n"
                       " Evidence{\"P\"}, Fields(null)] uint8 P[];\n"),
            "a.mof:3:24: error: the qualifier 'Role' has no value\n"
            "a.mof:4:17: error: the qualifier 'Fields' has no value\n")
      << "with a bad role it is not known whether evidence has an effect";
}

TEST(MeaningCheck, AnInheritedSlipIsReportedOnceWhereItIsWritten) {
  EXPECT_EQ(Findings("[BitNumbering(\"x\")] class Common : Chipset {\n"
                     " [Offset{1}, MaxLen(8), Fields{\"y\"}, Role(\"errors\"), MaskedBy(\"Own\")] uint8 P[]; };\n" +
                     kClass + "KROSG_T4_MEMCTL_StatisticData : Common {};\n" + kClass +
                     "KROSG_VO_MEMCTL_StatisticData : Common { [Offset{2}, MaxLen(8)] uint8 Own[]; };\n"),
            "a.mof:1:16: error: found 'x', expected 'lsb0' or 'msb0'\n"
            "a.mof:2:33: error: found 'y', expected the number of a bit\n"
            "a.mof:2:64: error: found 'Own', expected a register of the class 'KROSG_T4_MEMCTL_StatisticData'\n");
}

TEST(MeaningCheck, OnlyRegistersThatAreReadAreChecked) {
  EXPECT_EQ(Findings("class Spare : Chipset { [Fields{\"y\"}, Role(\"x\")] uint8 P[]; };\n" + kClass +
                     "KROSG_VO_MEMCTL_StatisticData : Chipset { [Role(\"x\")] string InstanceID; };\n"),
            "");
}

TEST(MeaningCheck, ARegisterOfABlockHas64Bits) {
  EXPECT_EQ(Findings(kClass + "J1 : KROSG_MEMCTL_StatisticData {\n"
                              "  [Index(1), MaxLen(8), Fields{\"63 A\", \"64 B\"}] uint8 P[]; };\n"),
            "a.mof:3:41: error: found bit 64, expected 0 to 63\n");
}

TEST(MeaningCheck, ADefaultThatDoesNotFitIsReportedWhereItIsUsed) {
  EXPECT_EQ(Findings("Qualifier Role : string = \"x\", Scope(property);\n" + kMemory +
                     "[Offset{1}, MaxLen(4),\n"
                     " Role] uint8 P[]; };\n"),
            "a.mof:5:2: error: the declared default of the qualifier 'Role' does not fit here: found 'x', expected "
            "'errors', 'mask', 'severity', 'first-error', 'counter', 'address', 'syndrome', 'log', 'state' or "
            "'identity'\n");
}

TEST(MeaningCheck, HiddenTextsAreNotQuoted) {
  TSchemaText schema;
  schema
      .File("in/base.mof", "#pragma include(\"../secret\")\n" + kCollectorSchema + kMemory +
                               "[Offset{1}, MaxLen(4), Role, Fields{\"hm\"}] uint8 P[]; };\n")
      .File("secret",
            "Qualifier Role : string = \"hunter2\", Scope(property);\n"
            "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
            "class KROSG_T4_MEMCTL_StatisticData : Chipset {\n"
            " [Offset{1}, MaxLen(4), Fields{\"hunter2\"}] uint8 hunter2[]; };\n");
  const TSchemaResult result = schema.Read({"in/base.mof"});
  EXPECT_EQ(Shown(result), "");
  const std::string shown = FirstLines(CheckCollectorNeeds(*result.cimNamespace, "schema", result.sources.get()));
  EXPECT_EQ(shown.find("hunter"), std::string::npos) << shown;
  EXPECT_NE(shown.find("secret:4:33: error: there is a problem here that is not shown"), std::string::npos) << shown;
  EXPECT_NE(shown.find("error: the declared default of the qualifier 'Role' does not fit here\n"), std::string::npos)
      << shown;
  EXPECT_NE(shown.find("error: found 'h', expected the number of a bit\n"), std::string::npos) << shown;
}

TEST(MeaningCheck, StopsBeforeItTakesTooLong) {
  TSchemaText schema;
  const std::string registers = "Chipset { [Offset{1}, MaxLen(8), Fields{\"x\", \"y\", \"z\"}] uint8 P[]; };\n";
  const TSchemaResult result = Read(schema, kClass + "KROSG_T4_MEMCTL_StatisticData : " + registers + kClass +
                                                "KROSG_VO_MEMCTL_StatisticData : " + registers);
  const auto findings = [&result](std::size_t mostSteps) {
    const TClassPaths paths(*result.cimNamespace);
    TNeedFindings kept(result.sources.get());
    TMeaningCheck check(paths, kept, mostSteps);
    for (const auto& cimClass : result.cimNamespace->Classes()) check.Check(*cimClass);
    check.Finish({"schema", 0, 0});
    return kept.Finish("schema");
  };
  EXPECT_EQ(findings(4).size(), 6U) << "a register and three strings";
  ASSERT_EQ(findings(3).size(), 4U);
  EXPECT_EQ(FormatDiagnostic(findings(3).back()),
            "schema: warning: there are too many fields to check those of all classes\n");
}

class MeaningWarningsOfAPlan : public testing::Test {
 protected:
  // Of both classes, in the order in which they are planned.
  std::string Warnings(const std::string& text) {
    TSchemaText schema;
    const TSchemaResult result = Read(schema, text);
    TPlanInput input{*result.cimNamespace, "6203", {2, true, true, true, 2}, {}, true, {}};
    input.isCollectable = [&result](const TCIMClass& cimClass) {
      return MeetsCollectorNeeds(*result.cimNamespace, cimClass);
    };
    for (const char* name : {"KROSG_VO_MEMCTL_StatisticData", "KROSG_T4_MEMCTL_StatisticData"}) {
      if (const auto cimClass = result.cimNamespace->FindClass(name)) input.requests.push_back({{cimClass, true}});
    }
    return FirstLines(MeaningWarnings(MakePlan(input), "base.mof, a.mof", *result.sources));
  }
};

TEST_F(MeaningWarningsOfAPlan, AreTheSlipsOfItsClasses) {
  const std::string registers = "Chipset { [Offset{1}, MaxLen(8), Fields{\"x\"}] uint8 P[]; };\n";
  EXPECT_EQ(Warnings(kClass + "KROSG_T4_MEMCTL_StatisticData : " + registers + kClass +
                     "KROSG_VO_MEMCTL_StatisticData : " + registers + kClass +
                     "KROSG_VO_PCIIOBRIDGE_StatisticData : " + registers),
            "a.mof:4:80: warning: found 'x', expected the number of a bit\n"
            "a.mof:2:80: warning: found 'x', expected the number of a bit\n");
}

TEST_F(MeaningWarningsOfAPlan, AreAtMostAHundredAndTheirNumber) {
  std::string elements;
  for (int i = 0; i < 103; ++i) elements += i == 0 ? "\"x\"" : ",\n\"x\"";
  const std::string shown = Warnings(kMemory + "[Offset{1}, MaxLen(8), Fields{" + elements + "}] uint8 P[]; };\n");
  EXPECT_THAT(shown, testing::HasSubstr("\na.mof:102:2: warning: found 'x', expected the number of a bit\n"
                                        "base.mof, a.mof: warning: and 3 more findings\n"));
}

}  // namespace
}  // namespace tests
