// The collector's requirements: a schema that meets all of them, and the finding for each violation.
#include "host/schema/collectorneeds.h"

#include "tests/schema/collectorschema.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

// Reads the complete schema followed by `more`, which starts on line 14.
TSchemaResult Schema(const std::string& more) { return ReadText(kCollectorSchema + "\n" + more); }

std::string FindingsOf(const TSchemaResult& schema) {
  EXPECT_EQ(Shown(schema), "");
  std::string text;
  for (const TTextDiagnostic& finding : CheckCollectorNeeds(*schema.cimNamespace, "schema", schema.sources.get())) {
    const bool isError = finding.severity == EDiagnosticSeverity::kError;
    text += std::to_string(finding.location.line) + ":" + std::to_string(finding.location.column) +
            (isError ? " " : " warning: ") + finding.message + "\n";
  }
  return text;
}

std::string Needs(const std::string& more) { return FindingsOf(Schema(more)); }

// A subclass of the bridges' base class, on line 14, with these qualifiers and properties.
std::string Jfr(const std::string& qualifiers, const std::string& properties) {
  return Needs("[" + qualifiers + "]\nclass J : KROSG_PCIIOBRIDGE_StatisticData {\n" + properties + "};");
}
std::string R8(const std::string& qualifiers, const std::string& properties) {
  return Needs("[" + qualifiers + "]\nclass KROSG_VO_MEMCTL_StatisticData : Chipset {\n" + properties + "};");
}
const std::string kGood = "SupportedMachineTypes{\"6203\"}, MaxInstanceCount(2)";

TEST(CollectorNeeds, ACompleteSchemaHasNoFindings) {
  EXPECT_EQ(Jfr(kGood, "[Index(509), MaxLen(8)] uint8 A[]; [Index(0)] uint8 B[];"),
            "16:31 the register 'A' of the class 'J' ends at byte 6138 for instance 1 (Index 509, MaxInstanceCount 2), "
            "expected below 4096\n");
  EXPECT_EQ(Jfr(kGood, "[Index(253), MaxLen(8)] uint8 A[]; [Index(0)] uint8 B[];"), "");
  EXPECT_EQ(R8(kGood, "[Offset{0x10}, MaxLen(8)] uint8 A[]; string ElementName;"), "");
  EXPECT_EQ(Needs(""), "") << "a missing R8 class is none of the collector's worries";
}

TEST(CollectorNeeds, ShownWithTheSourceLine) {
  const TSchemaResult schema = Schema("[SupportedMachineTypes{\"1\"}]\nclass J : KROSG_MEMCTL_StatisticData {};");
  const auto findings = CheckCollectorNeeds(*schema.cimNamespace, "schema", schema.sources.get());
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(FormatDiagnostic(findings[0]),
            "a.mof:15:7: error: the class 'J', a subclass of 'KROSG_MEMCTL_StatisticData', has no qualifier "
            "'MaxInstanceCount'\n"
            "  class J : KROSG_MEMCTL_StatisticData {};\n"
            "        ^\n");
}

TEST(CollectorNeeds, MissingClasses) {
  const TSchemaResult schema = ReadText("class A {};");
  std::string text;
  for (const TTextDiagnostic& finding : CheckCollectorNeeds(*schema.cimNamespace, "my-schema")) {
    text += FormatDiagnostic(finding);
  }
  EXPECT_EQ(
      text,
      "my-schema: error: the class 'KROSG_PCIIOBRIDGE_StatisticData' is not declared; every request starts from it\n"
      "my-schema: error: the class 'KROSG_MEMCTL_StatisticData' is not declared; every request starts from it\n"
      "my-schema: error: the class 'KROSG_L3Cache_StatisticData' is not declared; every request starts from it\n"
      "my-schema: error: the class 'KROSG_DCAPFile', which holds the capture files, is not declared\n");
}

TEST(CollectorNeeds, QualifiersOfEverySubclass) {
  EXPECT_EQ(
      Needs("class J : KROSG_PCIIOBRIDGE_StatisticData {};\n"),
      "14:7 the class 'J', a subclass of 'KROSG_PCIIOBRIDGE_StatisticData', has no qualifier 'SupportedMachineTypes'\n"
      "14:7 the class 'J', a subclass of 'KROSG_PCIIOBRIDGE_StatisticData', has no qualifier 'MaxInstanceCount'\n");
  EXPECT_EQ(
      Needs("[SupportedMachineTypes{\"1\"}, MaxInstanceCount(1)] class J : KROSG_L3Cache_StatisticData {};\n"
            "class K : J {};"),
      "15:7 the class 'K', a subclass of 'KROSG_L3Cache_StatisticData', has no qualifier 'SupportedMachineTypes'\n"
      "15:7 the class 'K', a subclass of 'KROSG_L3Cache_StatisticData', has no qualifier 'MaxInstanceCount'\n")
      << "both are Restricted, so that the grandchild has none";
  EXPECT_EQ(Needs("[SupportedMachineTypes{\"1\"} : ToSubclass, MaxInstanceCount(1) : ToSubclass]\n"
                  "class J : KROSG_L3Cache_StatisticData {}; [SupportedMachineTypes{\"2\"}] class K : J {};\n"
                  "[MaxInstanceCount(2)] class L : J {};"),
            "14:2 warning: the class 'L' is hidden for the machine type '1' by the class 'J', which is declared before "
            "it, expected one subclass of 'KROSG_L3Cache_StatisticData' for each machine type\n")
      << "either is inherited";
}

TEST(CollectorNeeds, QualifiersOfTheR8Classes) {
  for (const char* name : {"KROSG_T4_MEMCTL_StatisticData", "KROSG_T4_PCIIOBRIDGE_StatisticData",
                           "KROSG_VO_MEMCTL_StatisticData", "KROSG_VO_PCIIOBRIDGE_StatisticData"}) {
    const std::string subject =
        "14:7 the class '" + std::string(name) + "', a class whose registers are read over IPMI, ";
    EXPECT_EQ(
        Needs("class " + std::string(name) + " : Chipset {};"),
        subject + "has no qualifier 'SupportedMachineTypes'\n" + subject + "has no qualifier 'MaxInstanceCount'\n");
  }
}

TEST(CollectorNeeds, ClassWithoutSuperclass) {
  EXPECT_EQ(Needs("[" + kGood + "] class KROSG_T4_MEMCTL_StatisticData {};"),
            "14:60 the class 'KROSG_T4_MEMCTL_StatisticData', a class whose registers are read over IPMI, has no "
            "superclass\n");
}

TEST(CollectorNeeds, ValuesOfTheClassQualifiers) {
  EXPECT_EQ(Jfr("SupportedMachineTypes, MaxInstanceCount", ""),
            "15:7 the qualifier 'SupportedMachineTypes' of the class 'J' has no value\n"
            "15:7 the qualifier 'MaxInstanceCount' of the class 'J' has no value\n");
  EXPECT_EQ(Jfr("SupportedMachineTypes{\"1\"}, MaxInstanceCount(65536)", ""),
            "15:7 the qualifier 'MaxInstanceCount' of the class 'J' is 65536, expected 0 to 65535\n");
  EXPECT_EQ(Jfr("SupportedMachineTypes{\"1\"}, MaxInstanceCount(0)", "[Index(60000)] uint8 A[];"),
            "14:30 warning: the class 'J' is never collected: found a MaxInstanceCount of 0, expected at least 1\n")
      << "without instances no register is outside the block";
}

TEST(CollectorNeeds, TypesOfTheClassQualifiers) {
  const TSchemaResult schema = ReadText(
      "qualifier SupportedMachineTypes : string, scope(class);\nqualifier MaxInstanceCount : string, scope(class);\n"
      "qualifier Index : uint16, scope(property);\n" +
      kRoots + kBases + kCapture +
      "[SupportedMachineTypes(\"1\"), MaxInstanceCount(\"2\")]\nclass J : KROSG_MEMCTL_StatisticData {};");
  EXPECT_EQ(
      FindingsOf(schema),
      "12:7 the qualifier 'SupportedMachineTypes' of the class 'J' has the type string, expected array of string\n"
      "12:7 the qualifier 'MaxInstanceCount' of the class 'J' has the type string, expected an integer\n");
}

TEST(CollectorNeeds, RegisterQualifiers) {
  EXPECT_EQ(Jfr(kGood, "[Offset{1}, MaxLen(8)] uint8 A[];"),
            "16:30 the register 'A' of the class 'J' has no qualifier 'Index'\n");
  EXPECT_EQ(Jfr(kGood, "[Index] uint8 A[];"),
            "16:15 the register 'A' of the class 'J' has a qualifier 'Index' without a value\n");
  EXPECT_EQ(R8(kGood, "[Index(1)] uint8 A[];"),
            "16:18 the register 'A' of the class 'KROSG_VO_MEMCTL_StatisticData' has no qualifier 'Offset'\n"
            "16:18 the register 'A' of the class 'KROSG_VO_MEMCTL_StatisticData' has no qualifier 'MaxLen'\n");
  EXPECT_EQ(R8(kGood, "[Offset{1}] uint8 A[];"),
            "16:19 the register 'A' of the class 'KROSG_VO_MEMCTL_StatisticData' has no qualifier 'MaxLen'\n");
}

TEST(CollectorNeeds, RegistersOfTheDirectSuperclassToo) {
  EXPECT_EQ(Needs("class V : Chipset {\nuint8 A[];};\n[" + kGood + "] class KROSG_VO_MEMCTL_StatisticData : V {};"),
            "15:7 the register 'A' of the class 'KROSG_VO_MEMCTL_StatisticData' has no qualifier 'Offset'\n"
            "15:7 the register 'A' of the class 'KROSG_VO_MEMCTL_StatisticData' has no qualifier 'MaxLen'\n");
  EXPECT_EQ(Needs("class V : Chipset {\nuint8 A[];}; class W : V {};\n[" + kGood +
                  "] class KROSG_VO_MEMCTL_StatisticData : W {};"),
            "")
      << "not those of the grandparent";
}

TEST(CollectorNeeds, IdentificationPropertiesAreNotRegisters) {
  EXPECT_EQ(
      Needs("class Q { string MachineType; datetime DateTimeOfCollection; datetime StatisticTime; string InstanceID;\n"
            "string ElementName; };\n[" +
            kGood + "] class KROSG_VO_MEMCTL_StatisticData : Q {};"),
      "");
  EXPECT_EQ(Needs("class Q : KROSG_MEMCTL_StatisticData { };"),
            "14:7 the class 'Q', a subclass of 'KROSG_MEMCTL_StatisticData', has no qualifier 'SupportedMachineTypes'\n"
            "14:7 the class 'Q', a subclass of 'KROSG_MEMCTL_StatisticData', has no qualifier 'MaxInstanceCount'\n");
}

TEST(CollectorNeeds, ElementNameIsARegisterOfTheBlock) {
  const TSchemaResult schema =
      ReadText(kCollectorQualifiers + kCapture +
               "class KROSG_PCIIOBRIDGE_StatisticData { string ElementName; };\n"
               "class KROSG_MEMCTL_StatisticData {}; class KROSG_L3Cache_StatisticData {};\n[" +
               kGood + "] class J : KROSG_PCIIOBRIDGE_StatisticData {};");
  EXPECT_EQ(FindingsOf(schema),
            "8:48 the register 'ElementName' of the class 'J' has no qualifier 'Index'\n"
            "8:48 warning: the register 'ElementName' of the class 'J' has the type string, expected array of uint8\n");
}

TEST(CollectorNeeds, TypeOfARegister) {
  EXPECT_EQ(Jfr(kGood, "[Index(4)] uint8 A; [Index(5)] uint16 B[]; [Index(6)] string C;"),
            "16:18 warning: the register 'A' of the class 'J' has the type uint8, expected array of uint8\n"
            "16:39 warning: the register 'B' of the class 'J' has the type array of uint16, expected array of uint8\n"
            "16:62 warning: the register 'C' of the class 'J' has the type string, expected array of uint8\n");
}

// (Index + 256 x instance) x 8 + 18 must be less than 4096: 509 fits and 510 does not.
TEST(CollectorNeeds, RecordsInsideTheBlock) {
  const auto findings = [](const std::string& index, const std::string& count) {
    return Jfr("SupportedMachineTypes{\"1\"}, MaxInstanceCount(" + count + ")", "[Index(" + index + ")] uint8 A[];");
  };
  const auto outside = [](const std::string& end, const std::string& instance, const std::string& index,
                          const std::string& count) {
    return "16:" + std::to_string(17 + index.size()) + " the register 'A' of the class 'J' ends at byte " + end +
           " for instance " + instance + " (Index " + index + ", MaxInstanceCount " + count +
           "), expected below 4096\n";
  };
  EXPECT_EQ(findings("509", "1"), "");
  EXPECT_EQ(findings("510", "1"), outside("4098", "0", "510", "1"));
  EXPECT_EQ(findings("253", "2"), "");
  EXPECT_EQ(findings("254", "2"), outside("4098", "1", "254", "2"));
  EXPECT_EQ(findings("65535", "1"), outside("524298", "0", "65535", "1"));
  EXPECT_EQ(findings("65536", "1"),
            "16:22 the register 'A' of the class 'J' has the Index 65536, expected 0 to 65535\n");
  EXPECT_EQ(
      findings("0", "3"),
      "8:68 the register 'Common' of the class 'J' ends at byte 4130 for instance 2 (Index 2, MaxInstanceCount 3), "
      "expected below 4096\n" +
          outside("4114", "2", "0", "3"));
}

TEST(CollectorNeeds, PropertiesOfTheCaptureClass) {
  const TSchemaResult schema = ReadText(kCollectorQualifiers + kRoots + kBases +
                                        "class Log { string RecordID; };\n"
                                        "class KROSG_DCAPFile : Log { string filename; string ErrRawData[];\n"
                                        "string MessageTimestamp; uint8 SourceNode; string LogName; };");
  EXPECT_EQ(
      FindingsOf(schema),
      "12:54 the property 'ErrRawData' of the class 'KROSG_DCAPFile' has the type array of string, expected string\n"
      "13:8 the property 'MessageTimestamp' of the class 'KROSG_DCAPFile' has the type string, expected datetime\n"
      "13:32 the property 'SourceNode' of the class 'KROSG_DCAPFile' has the type uint8, expected string\n"
      "12:7 the class 'KROSG_DCAPFile' has no property 'CreationClassName'\n"
      "12:7 the class 'KROSG_DCAPFile' has no property 'LogCreationClassName'\n");
}

TEST(CollectorNeeds, OverridingPropertyThatIsNotRead) {
  EXPECT_EQ(Jfr(kGood, "[Index(9)] string Status;"),
            "16:19 warning: the property 'Status' is not read for the class 'J': it overrides a property of the class "
            "'Root'; only properties that the class or its superclass introduces are registers\n");
  EXPECT_EQ(
      R8(kGood, "[Offset{9}, MaxLen(8)] string Status;"),
      "16:31 warning: the property 'Status' is not read for the class 'KROSG_VO_MEMCTL_StatisticData': it overrides "
      "a property of the class 'Root'; only properties that the class or its superclass introduces are registers\n");
  EXPECT_EQ(Jfr(kGood, "string Status; [Index(9)] string ElementName;"),
            "16:34 warning: the property 'ElementName' is not read for the class 'J': it overrides a property of the "
            "class 'Root'; only properties that the class or its superclass introduces are registers\n")
      << "without a register's qualifier it is not a surprise";
  EXPECT_EQ(Jfr(kGood, "[Index(9)] string InstanceID; [Index(10)] uint8 Common[];"), "")
      << "skipped by name, and read: its origin is the direct superclass";
}

TEST(CollectorNeeds, FindingsAreBounded) {
  std::string text;
  for (int i = 0; i < 600; ++i) text += "class J" + std::to_string(i) + " : KROSG_MEMCTL_StatisticData {};\n";
  const TSchemaResult schema = Schema(text);
  const auto findings = CheckCollectorNeeds(*schema.cimNamespace, "schema", schema.sources.get());
  ASSERT_EQ(findings.size(), 1001U);
  EXPECT_EQ(findings.back().message, "and 200 more findings");
}

// 512 instances of 256 reads each are 131,072 reads.
TEST(CollectorNeeds, NoMoreReadsThanTheCollectorCanHoldInMemory) {
  std::string registers;
  for (int i = 0; i < 256; ++i) {
    registers += "[Offset{" + std::to_string(i) + "}, MaxLen(8)] uint8 R" + std::to_string(i) + "[];";
  }
  EXPECT_EQ(R8("SupportedMachineTypes{\"6203\"}, MaxInstanceCount(512)", registers), "");
  EXPECT_EQ(
      R8("SupportedMachineTypes{\"6203\"}, MaxInstanceCount(513)", registers),
      "14:33 the class 'KROSG_VO_MEMCTL_StatisticData' with a MaxInstanceCount of 513 takes 131328 register reads, "
      "expected at most 131072\n");
}

TEST(CollectorNeeds, NoMorePropertiesOfInstancesThanTheCollectorCanHoldInMemory) {
  std::string properties;
  for (int i = 0; i < 60; ++i) properties += "string P" + std::to_string(i) + ";";
  const auto needs = [&](const std::string& count) {
    return Needs("class Wide : Chipset {" + properties + "}; class Super : Wide {}; [SupportedMachineTypes{\"1\"}, " +
                 "MaxInstanceCount(" + count + ")]\nclass KROSG_VO_MEMCTL_StatisticData : Super {};");
  };
  EXPECT_EQ(needs("32263"), "") << "65 properties, 2,097,095 in all";
  EXPECT_EQ(
      needs("32264"),
      "14:728 the class 'KROSG_VO_MEMCTL_StatisticData' with a MaxInstanceCount of 32264 takes 2097160 properties of "
      "instances, expected at most 2097152\n");
}

TEST(CollectorNeeds, NoMoreThan256AddressesOfARegister) {
  std::string addresses = "0";
  for (int i = 1; i < 257; ++i) addresses += ",0";
  EXPECT_EQ(R8(kGood, "[Offset{" + addresses + "}, MaxLen(8)] uint8 A[];"),
            "16:542 the register 'A' of the class 'KROSG_VO_MEMCTL_StatisticData' has 257 addresses in its qualifier "
            "'Offset', expected at most 256\n");
}

// Whether the class meets the needs in the complete schema followed by `more`.
bool Meets(const std::string& className, const std::string& more) {
  const TSchemaResult schema = Schema(more);
  EXPECT_EQ(Shown(schema), "");
  return MeetsCollectorNeeds(*schema.cimNamespace, *schema.cimNamespace->FindClass(className));
}

TEST(CollectorNeeds, AskedOfOneClass) {
  const std::string classes = "[" + kGood + "] class A : KROSG_MEMCTL_StatisticData { [Index(1)] uint8 R[]; };\n[" +
                              kGood + "] class B : KROSG_MEMCTL_StatisticData { uint8 R[]; };";
  EXPECT_TRUE(Meets("A", classes));
  EXPECT_FALSE(Meets("B", classes));
  EXPECT_TRUE(Meets("Root", classes));
  EXPECT_TRUE(Meets("KROSG_DCAPFile", classes));
}

TEST(CollectorNeeds, WarningsDoNotCountForOneClass) {
  EXPECT_TRUE(Meets("A", "[" + kGood + "] class A : KROSG_MEMCTL_StatisticData { [Index(1)] uint16 R; };"));
}

TEST(CollectorNeeds, AnErrorAfterAThousandWarningsCountsForOneClass) {
  std::string registers;
  for (int i = 0; i < 1000; ++i) registers += "[Index(1)] uint16 R" + std::to_string(i) + ";";
  const std::string open = "[" + kGood + "] class A : KROSG_MEMCTL_StatisticData {" + registers;
  EXPECT_TRUE(Meets("A", open + "};"));
  EXPECT_FALSE(Meets("A", open + "uint8 Last[]; };"));
}

TEST(CollectorNeeds, AMissingBaseClassConcernsNoSingleClass) {
  const TSchemaResult schema = ReadText(kCapture);
  const auto& capture = *schema.cimNamespace->FindClass("KROSG_DCAPFile");
  EXPECT_TRUE(MeetsCollectorNeeds(*schema.cimNamespace, capture));
  EXPECT_EQ(CheckCollectorNeeds(*schema.cimNamespace, "schema").size(), 3U);
}

TEST(CollectorNeeds, MachineTypesOfAllClassesTogether) {
  std::string text = "[SupportedMachineTypes{\"" + std::string(600000, '1') + "\"} : ToSubclass] class A0 {};\n";
  for (int i = 1; i < 7; ++i) text += "class A" + std::to_string(i) + " : A0 {};\n";
  EXPECT_EQ(
      Needs(text),
      "0:0 the classes have 4200112 bytes in their qualifiers 'SupportedMachineTypes', including inherited ones and "
      "16 for each element, expected at most 4194304\n");
}

}  // namespace
}  // namespace tests
