// The warnings about what can never be collected or is surely a slip: place and text of each.
#include "host/schema/collectorneeds.h"

#include "tests/schema/collectorschema.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

// The first line of each finding about "a.mof", which follows a schema without findings.
std::string Findings(const std::string& text, const std::string& base = kCollectorSchema) {
  const TSchemaResult schema = TSchemaText().File("base.mof", base).File("a.mof", text).Read({"base.mof", "a.mof"});
  EXPECT_EQ(Shown(schema), "");
  std::string shown;
  for (const TTextDiagnostic& finding : CheckCollectorNeeds(*schema.cimNamespace, "schema", schema.sources.get())) {
    const std::string whole = FormatDiagnostic(finding);
    shown += whole.substr(0, whole.find('\n') + 1);
  }
  return shown;
}

const std::string kExpectedName =
    ", expected one of the R8 classes, a subclass of a JFR base class, or the direct superclass of such a class";

TEST(UnreadClass, HasRegistersAndIsOnNoPath) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203\"},\n"
                     " MaxInstanceCount(1)]\n"
                     "class Spare : Chipset {\n"
                     "  [Offset{0x0D0100}, MaxLen(8)] uint8 Errors[];\n"
                     "};\n"),
            "a.mof:3:7: warning: nothing reads the registers of the class 'Spare'" + kExpectedName + "\n");
  EXPECT_EQ(Findings("class Spare {\n"
                     "  [Index(4)] uint8 Errors[];\n"
                     "};\n"),
            "a.mof:1:7: warning: nothing reads the registers of the class 'Spare'" + kExpectedName + "\n");
}

TEST(UnreadClass, WhoseNameIsNearAServedOneGetsAHint) {
  EXPECT_EQ(Findings("class KROSG_T4_MEMCTRL_StatisticData : Chipset {\n"
                     "  [Offset{0x0D0100}, MaxLen(8)] uint8 Errors[];\n"
                     "};\n"),
            "a.mof:1:7: warning: nothing reads the registers of the class 'KROSG_T4_MEMCTRL_StatisticData'" +
                kExpectedName + "; did you mean 'KROSG_T4_MEMCTL_StatisticData'?\n");
}

TEST(UnreadClass, WhoseNameDiffersInCaseOnlyIsToldSo) {
  EXPECT_EQ(Findings("class KROSG_T4_MEMCTL_STATISTICDATA : Chipset {\n"
                     "  [Offset{0x0D0100}, MaxLen(8)] uint8 Errors[];\n"
                     "};\n"),
            "a.mof:1:7: warning: nothing reads the registers of the class 'KROSG_T4_MEMCTL_STATISTICDATA'" +
                kExpectedName + "; did you mean 'KROSG_T4_MEMCTL_StatisticData', which differs only in case?\n");
}

TEST(UnreadClass, IsNotADirectSuperclassOfAReadOne) {
  const std::string registers = " { [Offset{0x0D0100}, MaxLen(8)] uint8 Errors[]; };\n";
  const std::string readClass =
      "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\nclass KROSG_T4_MEMCTL_StatisticData : ";
  EXPECT_EQ(Findings("class Near : Chipset" + registers + readClass + "Near {};"), "");
  EXPECT_EQ(Findings("class Far : Chipset" + registers + "class Near : Far {};\n" + readClass + "Near {};"),
            "a.mof:1:7: warning: nothing reads the registers of the class 'Far'" + kExpectedName + "\n")
      << "registers declared further up are not read";
}

TEST(HiddenClass, OfEachMachineTypeThatAnEarlierClassServes) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203-AC1\", \"6204\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_MEMCTL_StatisticData {};\n"
                     "[MaxInstanceCount(1),\n"
                     "   SupportedMachineTypes{\"6204/6205/6203\", \"6203\"}]\n"
                     "class J2 : KROSG_MEMCTL_StatisticData {};\n"),
            "a.mof:4:4: warning: the class 'J2' is hidden for the machine type '6203' by the class 'J1', which is "
            "declared before it, expected one subclass of 'KROSG_MEMCTL_StatisticData' for each machine type\n"
            "a.mof:4:4: warning: the class 'J2' is hidden for the machine type '6204' by the class 'J1', which is "
            "declared before it, expected one subclass of 'KROSG_MEMCTL_StatisticData' for each machine type\n");
}

TEST(HiddenClass, AlsoByAMachineTypeThatIsPartOfALongerNumber) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"162039\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_L3Cache_StatisticData {};\n"
                     "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J2 : KROSG_L3Cache_StatisticData {};\n"),
            "a.mof:3:2: warning: the class 'J2' is hidden for the machine type '6203' by the class 'J1', which is "
            "declared before it, expected one subclass of 'KROSG_L3Cache_StatisticData' for each machine type\n");
}

TEST(HiddenClass, OfAMachineTypeWithoutFourDigitsIsTheWholeElement) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"rack model B\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_L3Cache_StatisticData {};\n"
                     "[SupportedMachineTypes{\"model B\", \"model C\"}, MaxInstanceCount(1)]\n"
                     "class J2 : KROSG_L3Cache_StatisticData {};\n"),
            "a.mof:3:2: warning: the class 'J2' is hidden for the machine type 'model B' by the class 'J1', which is "
            "declared before it, expected one subclass of 'KROSG_L3Cache_StatisticData' for each machine type\n");
}

TEST(HiddenClass, IsNotOneBelowAnotherBaseClassOrAfterIt) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_L3Cache_StatisticData {};\n"
                     "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J2 : KROSG_MEMCTL_StatisticData {};\n"),
            "");
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_L3Cache_StatisticData {};\n"
                     "[SupportedMachineTypes{\"162039\"}, MaxInstanceCount(1)]\n"
                     "class J2 : KROSG_L3Cache_StatisticData {};\n"),
            "")
      << "162039 is a machine type that only J2 has";
}

TEST(HiddenClass, ThatIsReadOnTheOtherPathIsNotHidden) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_MEMCTL_StatisticData {};\n"
                     "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class KROSG_VO_MEMCTL_StatisticData : KROSG_MEMCTL_StatisticData {};\n"),
            "");
}

TEST(HiddenClass, BelowTwoBaseClassesIsReadForEither) {
  const std::string bases = kCollectorQualifiers + kRoots + kCapture +
                            "class KROSG_MEMCTL_StatisticData : Chipset {};\n"
                            "class KROSG_PCIIOBRIDGE_StatisticData : Chipset {};\n"
                            "[SupportedMachineTypes{\"6101\"}, MaxInstanceCount(1)]\n"
                            "class KROSG_L3Cache_StatisticData : KROSG_MEMCTL_StatisticData {};\n";
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J1 : KROSG_MEMCTL_StatisticData {};\n"
                     "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class J2 : KROSG_L3Cache_StatisticData {};\n",
                     bases),
            "");
}

TEST(NoInstances, AreWarnedOfAtTheQualifier) {
  EXPECT_EQ(Findings("[SupportedMachineTypes{\"6203\"},\n"
                     "   MaxInstanceCount(0)]\n"
                     "class J : KROSG_MEMCTL_StatisticData {};\n"),
            "a.mof:2:4: warning: the class 'J' is never collected: found a MaxInstanceCount of 0, expected at least "
            "1\n");
}

TEST(NoMachineType, IsAnEmptyList) {
  EXPECT_EQ(Findings("[MaxInstanceCount(1),\n"
                     " SupportedMachineTypes{}]\n"
                     "class J : KROSG_MEMCTL_StatisticData {};\n"),
            "a.mof:2:2: warning: no machine is served by the class 'J': found an empty list in "
            "'SupportedMachineTypes', expected at least one machine type\n");
}

TEST(NoMachineType, IsAnEmptyElement) {
  EXPECT_EQ(Findings("[MaxInstanceCount(1),\n"
                     " SupportedMachineTypes{\"6203\", \"\", \"\"}]\n"
                     "class J : KROSG_MEMCTL_StatisticData {};\n"),
            "a.mof:2:2: warning: element 2 of 'SupportedMachineTypes' of the class 'J' is empty, expected a machine "
            "type\n");
}

// The class has these registers, from line 3 on.
std::string R8(const std::string& registers) {
  return Findings(
      "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
      "class KROSG_VO_MEMCTL_StatisticData : Chipset {\n" +
      registers + "};\n");
}
std::string Jfr(const std::string& registers) {
  return Findings(
      "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
      "class J : KROSG_MEMCTL_StatisticData {\n" +
      registers + "};\n");
}
const std::string kOfVo = "' of the class 'KROSG_VO_MEMCTL_StatisticData' has ";

TEST(Address, AboveTwentyFourBitsIsSentWithoutItsHighestByte) {
  EXPECT_EQ(R8("  [MaxLen(8), Offset{0x1ABCDEF}] uint8 A[];\n"),
            "a.mof:3:15: warning: the register 'A" + kOfVo +
                "an address above 24 bits: 0x1ABCDEF is sent as 0xABCDEF, expected at most 0xFFFFFF\n");
  EXPECT_EQ(R8("  [Offset{0x01000001}, MaxLen(8)] uint8 A[];\n"),
            "a.mof:3:4: warning: the register 'A" + kOfVo +
                "an address above 24 bits: 0x1000001 is sent as 0x000001, expected at most 0xFFFFFF\n");
  EXPECT_EQ(R8("  [Offset{0xFFFFFF}, MaxLen(8)] uint8 A[];\n"), "");
}

TEST(Address, IsOneForEachRegister) {
  EXPECT_EQ(R8("  [Offset{0x10, 0x20, 0x30}, MaxLen(8)] uint8 A[];\n"),
            "a.mof:3:4: warning: the register 'A" + kOfVo + "3 addresses in its qualifier 'Offset', expected one\n");
  EXPECT_EQ(R8("  [MaxLen(8), Offset{}] uint8 A[];\n"),
            "a.mof:3:15: warning: the register 'A" + kOfVo + "no address in its qualifier 'Offset', expected one\n");
}

TEST(Address, BelongsToOneRegister) {
  EXPECT_EQ(R8("  [Offset{0x0D0100}, MaxLen(8)] uint8 A[];\n"
               "  [Offset{0x0D0108}, MaxLen(8)] uint8 B[];\n"
               "  [Offset{0x0D0100}, MaxLen(4)] uint8 C[];\n"),
            "a.mof:5:4: warning: the register 'C" + kOfVo +
                "the address 0x0D0100 of the register 'A', expected one of its own\n");
}

TEST(Address, OfLowTwentyFourBitsBelongsToOneRegister) {
  EXPECT_EQ(R8("  [Offset{0xABCDEF}, MaxLen(8)] uint8 A[];\n"
               "  [Offset{0x12ABCDEF}, MaxLen(8)] uint8 B[];\n"),
            "a.mof:4:4: warning: the register 'B" + kOfVo +
                "an address above 24 bits: 0x12ABCDEF is sent as 0xABCDEF, expected at most 0xFFFFFF\n"
                "a.mof:4:4: warning: the register 'B" +
                kOfVo + "the address 0xABCDEF of the register 'A', expected one of its own\n");
}

TEST(Address, OfTheSuperclassCounts) {
  EXPECT_EQ(Findings("class Super : Chipset { [Offset{0x10}, MaxLen(8)] uint8 A[]; };\n"
                     "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\n"
                     "class KROSG_VO_MEMCTL_StatisticData : Super {\n"
                     "  [Offset{0x10}, MaxLen(8)] uint8 B[]; };\n"),
            "a.mof:4:4: warning: the register 'B" + kOfVo +
                "the address 0x000010 of the register 'A', expected one of its own\n");
}

TEST(Index, BelongsToOneRegister) {
  EXPECT_EQ(Jfr("  [Index(5)] uint8 A[];\n"
                "  [MaxLen(8), Index(5)] uint8 B[];\n"),
            "a.mof:4:15: warning: the register 'B' of the class 'J' has the Index 5 of the register 'A', expected one "
            "of its own\n");
}

TEST(Length, OfAnR8RegisterIsFourOrEight) {
  EXPECT_EQ(R8("  [Offset{0x10}, MaxLen(6)] uint8 A[];\n"
               "  [Offset{0x18}, MaxLen(4)] uint8 B[];\n"
               "  [Offset{0x20}, MaxLen(8)] uint8 C[];\n"),
            "a.mof:3:18: warning: the register 'A" + kOfVo + "a MaxLen of 6, expected 4 or 8\n");
}

TEST(Length, OfAJfrRegisterIsEightWhereItIsGiven) {
  EXPECT_EQ(Jfr("  [Index(5), MaxLen(4)] uint8 A[];\n"
                "  [Index(6), MaxLen(8)] uint8 B[];\n"
                "  [Index(7)] uint8 C[];\n"),
            "a.mof:3:14: warning: the register 'A' of the class 'J' has a MaxLen of 4, expected 8\n");
}

TEST(CollectorWarnings, ConcernOnlyClassesOnAPath) {
  EXPECT_EQ(Findings("[MaxInstanceCount(0), SupportedMachineTypes{\"\"}]\n"
                     "class Other : Chipset { [MaxLen(6)] string Name; };\n"),
            "");
}

TEST(CollectorWarnings, ShowTheLineOfTheQualifier) {
  const TSchemaResult schema = ReadText(kCollectorSchema + "[SupportedMachineTypes{\"1\"}, MaxInstanceCount(0)]\n" +
                                        "class J : KROSG_MEMCTL_StatisticData {};");
  const auto findings = CheckCollectorNeeds(*schema.cimNamespace, "schema", schema.sources.get());
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(FormatDiagnostic(findings[0]),
            "a.mof:13:30: warning: the class 'J' is never collected: found a MaxInstanceCount of 0, expected at least "
            "1\n  [SupportedMachineTypes{\"1\"}, MaxInstanceCount(0)]\n"
            "                               ^\n");
}

// Reads `hidden`, a file outside the folder of the schema, before or after `shown`, and gives the findings about both.
std::string FindingsWithHidden(const std::string& shown, const std::string& hidden, bool hiddenFirst) {
  const std::string include = "#pragma include(\"../secret\")\n";
  const TSchemaResult schema =
      TSchemaText()
          .File("in/a.mof", kCollectorSchema + (hiddenFirst ? include + shown : shown + include))
          .File("secret", hidden)
          .Read({"in/a.mof"});
  EXPECT_EQ(Shown(schema), "");
  std::string text;
  for (const TTextDiagnostic& finding : CheckCollectorNeeds(*schema.cimNamespace, "in", schema.sources.get())) {
    text += FormatDiagnostic(finding);
  }
  return text;
}

TEST(CollectorWarnings, DoNotQuoteHiddenClasses) {
  const std::string qualifiers = "[SupportedMachineTypes{\"6203\"} : ToSubclass, MaxInstanceCount(1) : ToSubclass]\n";
  const std::string hidden =
      FindingsWithHidden(qualifiers + "class J : KROSG_MEMCTL_StatisticData {};\n", "class Hunter : J {};", false);
  EXPECT_THAT(hidden, testing::StartsWith("in/a.mof:13:2: warning: " + std::string(kHiddenMessage) + "\n"));
  EXPECT_THAT(hidden, testing::Not(testing::HasSubstr("Hunter")));
  EXPECT_THAT(FindingsWithHidden(qualifiers + "class J : KROSG_MEMCTL_StatisticData {};\n",
                                 qualifiers + "class Hunter : KROSG_MEMCTL_StatisticData {};", true),
              testing::StartsWith("in/a.mof:14:2: warning: the class 'J' is hidden for the machine type '6203' by "
                                  "another class, which is declared before it"));
}

TEST(CollectorWarnings, DoNotQuoteHiddenRegisters) {
  const std::string classes =
      "[SupportedMachineTypes{\"6203\"}, MaxInstanceCount(1)]\nclass KROSG_VO_MEMCTL_StatisticData : Super {\n"
      "[Offset{0x10}, MaxLen(8)] uint8 A[]; };\n";
  EXPECT_THAT(FindingsWithHidden(classes, "class Super : Chipset { [Offset{0x10}, MaxLen(8)] uint8 Hunter[]; };", true),
              testing::StartsWith("in/a.mof:16:2: warning: the register 'A" + kOfVo +
                                  "the address 0x000010 of an earlier register, expected one of its own\n"));
}

TEST(CollectorWarnings, AreBoundedLikeErrors) {
  std::string text;
  for (int i = 0; i < 1001; ++i) text += "class S" + std::to_string(i) + " { [Index(4)] uint8 R[]; };\n";
  const std::string findings = Findings(text);
  EXPECT_THAT(findings, testing::EndsWith("\nschema: warning: and 1 more finding\n"));
  EXPECT_EQ(std::count(findings.begin(), findings.end(), '\n'), 1001);
}

// Every part of an element of 500,000 letters would have to be looked up in 1,000 lengths.
TEST(CollectorWarnings, ThatWouldTakeTooLongAreLeftOutWithAWarning) {
  std::string types;
  for (std::size_t i = 1; i <= 1000; ++i) types += "\"" + std::string(i, 'a') + "\", ";
  const std::string findings = Findings("[SupportedMachineTypes{" + types + "\"" + std::string(500000, 'b') +
                                        "\"}, MaxInstanceCount(1)] class J : KROSG_MEMCTL_StatisticData {};\n");
  EXPECT_EQ(findings, "schema: warning: there are too many machine types to find all classes that hide each other\n");
}

}  // namespace
}  // namespace tests
