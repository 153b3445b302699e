// The qualifiers of meaning, which need no declaration: what a reader makes of them with and without one.
#include <gmock/gmock.h>

#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

// The value of a qualifier of a property; "none" without one.
std::string ValueOf(const TSchemaResult& result, const std::string& className, const std::string& property,
                    const std::string& qualifier) {
  const auto cimClass = result.cimNamespace->FindClass(className);
  const auto found = cimClass->Properties().at(cimClass->FindProperty(property))->GetQualifier(qualifier, kNoContext);
  return found ? found->GetValue().ToString(10) : "none";
}

TEST(QualifiersOfMeaning, NeedNoDeclaration) {
  const TSchemaResult result = ReadText(
      "[BitNumbering(\"msb0\")] class A {\n"
      "  [Fields{\"0 F\", \"0=1 on\"}, BitNumbering(\"lsb0\"), Role(\"errors\"), MaskedBy(\"q\"), EnabledBy(\"q\"),\n"
      "   FatalBy(\"q\"), SEVERITY(\"fatal\"), FirstErrorIn(\"q 5:0\"), Evidence{\"q\"}] uint8 p[];\n"
      "  uint8 q[]; };\n");
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ValueOf(result, "A", "p", "Fields"), "{0 F, 0=1 on}");
  EXPECT_EQ(ValueOf(result, "A", "p", "Severity"), "fatal");
  EXPECT_EQ(ValueOf(result, "A", "p", "evidence"), "{q}");
  EXPECT_EQ(ValueOf(result, "A", "q", "Fields"), "none");
  EXPECT_EQ(result.cimNamespace->FindClass("A")->GetQualifier("BitNumbering", kNoContext)->GetValue().ToString(10),
            "msb0");
}

TEST(QualifiersOfMeaning, AreInheritedAndMayBeOverridden) {
  const TSchemaResult result = ReadText(
      "class A { [Role(\"errors\"), Fields{\"0 F\"}] uint8 p[]; [Role(\"mask\")] uint8 q[]; };\n"
      "class B : A { [Role(\"counter\")] uint8 p[]; uint8 q[]; };\n");
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ValueOf(result, "B", "p", "Role"), "counter");
  EXPECT_EQ(ValueOf(result, "B", "p", "Fields"), "{0 F}");
  EXPECT_EQ(ValueOf(result, "B", "q", "Role"), "mask");
}

TEST(QualifiersOfMeaning, HaveTypesAndScopes) {
  EXPECT_EQ(Messages(ReadText("class A { [Fields(\"0 F\"),\n Role{\"mask\"}, Severity(5)] uint8 p[]; };")),
            "1:19 found '\"0 F\"', expected an array of string in braces for the qualifier 'Fields'\n"
            "2:6 found an array, expected a string for the qualifier 'Role'\n"
            "2:25 found '5', expected a string for the qualifier 'Severity'\n");
}

TEST(QualifiersOfMeaning, OfAClassIsOnlyTheNumbering) {
  EXPECT_EQ(
      Messages(ReadText("[Role(\"mask\"), BitNumbering(\"msb0\")]\nclass A { [BitNumbering(\"x\")] uint8 m(); };")),
      "1:2 the qualifier 'Role' is on an element of kind class, expected property\n"
      "2:12 the qualifier 'BitNumbering' is on an element of kind method, expected class, property\n");
}

TEST(QualifiersOfMeaning, MayBeFixedByTheirUse) {
  EXPECT_EQ(Messages(ReadText("class A { [Role(\"mask\") : DisableOverride] uint8 p[]; };\n"
                              "class B : A { [Role(\"log\")] uint8 p[]; };")),
            "2:16 the qualifier 'Role' has the value 'log', expected the inherited value 'mask', which has the flavor "
            "DisableOverride\n");
}

TEST(QualifiersOfMeaning, MayBeDeclaredWithTheirTypes) {
  const TSchemaResult result = ReadText(
      "Qualifier fields : string[] = {\"0 F\"}, Scope(property), Flavor(Restricted);\n"
      "Qualifier Role : string = \"mask\", Scope(any), Flavor(DisableOverride);\n"
      "[Role] class A { [Fields, Role] uint8 p[]; };\n"
      "class B : A { uint8 p[]; };\n");
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ValueOf(result, "A", "p", "Fields"), "{0 F}");
  EXPECT_EQ(ValueOf(result, "A", "p", "Role"), "mask");
  EXPECT_EQ(ValueOf(result, "B", "p", "Fields"), "none") << "the declaration's flavor counts";
  EXPECT_EQ(ValueOf(result, "B", "p", "Role"), "mask");
}

TEST(QualifiersOfMeaning, OfOtherTypesAreWarnings) {
  const TSchemaResult result = ReadText(
      "Qualifier Fields : string, Scope(property);\nQualifier Role : uint8 = 1, Scope(property);\n"
      "Qualifier Evidence : uint8[], Scope(property);\nQualifier Severity : string[4], Scope(property);\n"
      "class A { [Fields(\"x\"), Role(200), Evidence{1}, Severity{\"x\"}] uint8 p[]; };");
  EXPECT_EQ(Messages(result),
            "1:11 the qualifier 'Fields' is declared as string, expected array of string; it will not describe "
            "registers\n"
            "2:11 the qualifier 'Role' is declared as uint8, expected string; it will not describe registers\n"
            "3:11 the qualifier 'Evidence' is declared as array of uint8, expected array of string; it will not "
            "describe registers\n"
            "4:11 the qualifier 'Severity' is declared as array of string, expected string; it will not describe "
            "registers\n");
  EXPECT_FALSE(result.HasErrors());
  EXPECT_EQ(ValueOf(result, "A", "p", "Role"), "200") << "the qualifier is that of the schema";
}

TEST(QualifiersOfMeaning, AreSuggestedForOthers) {
  EXPECT_EQ(Messages(ReadText("class A { [Feilds{\"0 F\"}] uint8 p[]; };")),
            "1:12 the qualifier 'Feilds' is not declared; did you mean Fields?\n");
}

}  // namespace
}  // namespace tests
