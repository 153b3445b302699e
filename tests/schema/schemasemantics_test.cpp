// Semantic errors in schemas that are syntactically correct: each with its place, what was found and what was
// expected.
#include "tests/schema/schemafixture.h"

namespace tests {
namespace {

std::string Errors(const std::string& text) {
  TSchemaResult result = ReadQualified(text);
  const auto isWarning = [](const TTextDiagnostic& finding) {
    return finding.severity == EDiagnosticSeverity::kWarning;
  };
  std::erase_if(result.diagnostics, isWarning);
  return Messages(result);
}

TEST(SchemaSemantics, ShownWithLineAndCaret) {
  EXPECT_EQ(Shown(ReadText("class B : CIM_Setings {};\nclass CIM_Settings {};")),
            "a.mof:1:11: error: the class 'CIM_Setings' is not declared; did you mean CIM_Settings?\n"
            "  class B : CIM_Setings {};\n"
            "            ^\n");
}

TEST(SchemaSemantics, QualifierDeclarations) {
  EXPECT_EQ(Errors("qualifier KEY : boolean, scope(any);"),
            "2:11 the qualifier 'KEY' is already declared in a.mof:1\n");
  EXPECT_EQ(Errors("qualifier Q : uint8 = \"x\", scope(any);"),
            "2:23 found '\"x\"', expected a uint8 for the qualifier 'Q'\n");
  EXPECT_EQ(Errors("qualifier Q : uint8, scope(any), flavor(EnableOverride, DisableOverride, ToSubclass, Restricted);"),
            "2:57 found 'DisableOverride' together with its opposite, expected EnableOverride or DisableOverride\n"
            "2:86 found 'Restricted' together with its opposite, expected ToSubclass or Restricted\n");
}

TEST(SchemaSemantics, QualifierUses) {
  EXPECT_EQ(Errors("[Levle(1)] class A {};"), "2:2 the qualifier 'Levle' is not declared; did you mean Level?\n");
  EXPECT_EQ(Errors("[Nothing] class A {};"), "2:2 the qualifier 'Nothing' is not declared\n");
  EXPECT_EQ(Errors("[Level(1), level(2)] class A {};"), "2:12 the qualifier 'level' is given twice for one element\n");
  EXPECT_EQ(Errors("[Level(\"1\")] class A {};"), "2:8 found '\"1\"', expected a uint16 for the qualifier 'Level'\n");
  EXPECT_EQ(Errors("[Level(65536)] class A {};"),
            "2:8 found '65536', expected a uint16 from 0 to 65535 for the qualifier 'Level'\n");
  EXPECT_EQ(Errors("[Level{1}] class A {};"), "2:7 found an array, expected a uint16 for the qualifier 'Level'\n");
  EXPECT_EQ(Errors("class A { [Values(\"x\")] string a; };"),
            "2:19 found '\"x\"', expected an array of string in braces for the qualifier 'Values'\n");
  EXPECT_EQ(Errors("[Level(1) : Restricted ToSubclass] class A {};"),
            "2:24 found 'ToSubclass' together with its opposite, expected ToSubclass or Restricted\n");
}

TEST(SchemaSemantics, ScopeOfEveryElement) {
  EXPECT_EQ(Errors("[Key] class A {};"),
            "2:2 the qualifier 'Key' is on an element of kind class, expected property, reference\n");
  EXPECT_EQ(Errors("[Association, Level(1)] class A {};"),
            "2:15 the qualifier 'Level' is on an element of kind association, expected class, property\n");
  EXPECT_EQ(Errors("class A { [Abstract] string a; };"),
            "2:12 the qualifier 'Abstract' is on an element of kind property, expected class, association\n");
  EXPECT_EQ(Errors("class A { [Level(1)] A REF a; };"),
            "2:12 the qualifier 'Level' is on an element of kind reference, expected class, property\n");
  EXPECT_EQ(Errors("class A { [Key] uint8 M(); };"),
            "2:12 the qualifier 'Key' is on an element of kind method, expected property, reference\n");
  EXPECT_EQ(Errors("class A { uint8 M([Key] string p); };"),
            "2:20 the qualifier 'Key' is on an element of kind parameter, expected property, reference\n");
  EXPECT_EQ(
      Messages(ReadText("qualifier Indication : boolean, scope(indication); qualifier C : boolean, scope(class);\n"
                        "[Indication, C] class A {};")),
      "2:14 the qualifier 'C' is on an element of kind indication, expected class\n");
}

TEST(SchemaSemantics, SubclassOfAnAssociationIsAnAssociation) {
  EXPECT_EQ(Errors("[Association] class A {}; [Level(1)] class B : A {};"),
            "2:28 the qualifier 'Level' is on an element of kind association, expected class, property\n");
}

TEST(SchemaSemantics, DisableOverride) {
  EXPECT_EQ(Errors("class A { [Key] string a; }; class B : A { [Key(false)] string a; };"),
            "2:45 the qualifier 'Key' has the value 'false', expected the inherited value 'true', which has the "
            "flavor DisableOverride\n");
  EXPECT_EQ(Errors("[Level(1) : DisableOverride] class A {}; class B : A {}; [Level(2)] class C : B {};"),
            "2:59 the qualifier 'Level' has the value '2', expected the inherited value '1', which has the flavor "
            "DisableOverride\n");
  EXPECT_EQ(Errors("class A { [Key] string a; }; class B : A { [Key] string a; };"), "") << "said again";
  EXPECT_EQ(Errors("[Level(1) : DisableOverride Restricted] class A {}; [Level(2)] class B : A {};"), "")
      << "not inherited";
}

TEST(SchemaSemantics, DuplicateDeclarations) {
  EXPECT_EQ(Errors("class A {};\nclass a {};"), "3:7 the class 'a' is already declared in a.mof:2\n");
  EXPECT_EQ(Errors("class A { string a; uint8 A; };"), "2:27 the property 'A' is declared twice in the class 'A'\n");
  EXPECT_EQ(Errors("class A { uint8 M(); uint8 m(); };"), "2:28 the method 'm' is declared twice in the class 'A'\n");
  EXPECT_EQ(Errors("class A { uint8 M(string p, string P); };"),
            "2:36 the parameter 'P' is declared twice in the method 'M'\n");
}

TEST(SchemaSemantics, UnknownClasses) {
  EXPECT_EQ(Errors("class A : Nowhere {};"), "2:11 the class 'Nowhere' is not declared\n");
  EXPECT_EQ(Errors("class A { Nowhere REF r; };"), "2:11 the class 'Nowhere' is not declared\n");
  EXPECT_EQ(Errors("class A { uint8 M(Nowhere REF p); };"), "2:19 the class 'Nowhere' is not declared\n");
  EXPECT_EQ(Errors("qualifier EmbeddedInstance : string, scope(property);\n"
                   "class A { [EmbeddedInstance(\"Nowhere\")] string a; };"),
            "3:29 the class 'Nowhere' is not declared\n");
  EXPECT_EQ(
      Errors("qualifier EmbeddedInstance : string, scope(method, parameter);\n"
             "class A { [EmbeddedInstance(\"Not\" \"here\")] string M([EmbeddedInstance(\"Neither\")] string p); };"),
      "3:29 the class 'Nothere' is not declared\n3:71 the class 'Neither' is not declared\n");
  EXPECT_EQ(Errors("instance of Nowhere {};"), "2:13 the class 'Nowhere' is not declared\n");
}

TEST(SchemaSemantics, ClassBelowAnUndeclaredOne) {
  const TSchemaResult result =
      ReadQualified("class A : Nowhere { [Key(1)] string a; }; class B : A { uint8 b = 256; };");
  EXPECT_EQ(Messages(result),
            "2:11 the class 'Nowhere' is not declared\n"
            "2:26 found '1', expected true or false for the qualifier 'Key'\n"
            "2:67 found '256', expected a uint8 from 0 to 255\n")
      << "what can be checked is checked, and the class below is not reported again";
  EXPECT_FALSE(result.cimNamespace->FindClass("A"));
  EXPECT_FALSE(result.cimNamespace->FindClass("B"));
}

TEST(SchemaSemantics, CircularInheritance) {
  EXPECT_EQ(Errors("class A : A {};"), "2:11 the class 'A' derives from itself (A : A)\n");
  const TSchemaResult result =
      ReadQualified("class D : B {}; class A : C {}; class B : A {}; class C : B {}; class E {};");
  EXPECT_EQ(Messages(result), "2:43 the class 'B' derives from itself (B : A : C : B)\n");
  EXPECT_EQ(result.cimNamespace->Classes().size(), 1U);
}

TEST(SchemaSemantics, OverrideOfAnotherType) {
  EXPECT_EQ(
      Errors("class A { string a; }; class B : A { uint8 A; };"),
      "2:44 the property 'A' has the type uint8, expected string as in the class 'A', whose property it overrides\n");
  EXPECT_EQ(Errors("class A { uint8 a; }; class B : A {}; class C : B { uint8 a[]; };"),
            "2:59 the property 'a' has the type array of uint8, expected uint8 as in the class 'A', whose property it "
            "overrides\n");
  EXPECT_EQ(Errors("class S {}; class T : S {}; class A { S REF a; }; class B : A { T REF a; };"), "") << "narrowed";
  EXPECT_EQ(Errors("class S {}; class T : S {}; class A { T REF a; }; class B : A { S REF a; };"),
            "2:71 the property 'a' has the type reference to S, expected reference to T as in the class 'A', whose "
            "property it overrides\n");
}

TEST(SchemaSemantics, InstanceErrors) {
  EXPECT_EQ(Errors("class A { string Name; }; instance of A { other = \"1\"; };"),
            "2:43 the class 'A' has no property 'other'\n");
  EXPECT_EQ(Errors("class A { string FileName; }; instance of A { FilName = \"1\"; };"),
            "2:47 the class 'A' has no property 'FilName'; did you mean FileName?\n");
  EXPECT_EQ(Errors("class A { string a; }; instance of A { a = 1; };"), "2:44 found '1', expected a string\n");
  EXPECT_EQ(Errors("class A { string a; }; instance of A { a = \"1\"; A = \"2\"; };"),
            "2:49 the property 'A' is set twice\n");
  EXPECT_EQ(Errors("[Abstract] class A {}; instance of A {};"),
            "2:36 the class 'A' is abstract, expected one that can have instances\n");
}

TEST(SchemaSemantics, Aliases) {
  EXPECT_EQ(Errors("class A { A REF a; }; instance of A { a = $other; }; instance of A as $othr {};"),
            "2:43 the alias '$other' is not declared; did you mean $othr?\n");
  EXPECT_EQ(Errors("class A {}; instance of A as $a {}; instance of A as $A {};"),
            "2:54 the alias '$A' is already declared\n");
  EXPECT_EQ(Errors("class A { A REF a; }; class B {}; instance of A { a = $b; }; instance of B as $b {};"),
            "2:55 the alias '$b' is an instance of 'B', expected one of 'A' or of a subclass\n");
  EXPECT_EQ(Errors("class A { A REF a = $b; };"), "2:21 the alias '$b' is not declared\n");
  EXPECT_EQ(Errors("class A { A REF a; }; instance of A { a = 5; };"),
            "2:43 found '5', expected an object path in double quotes or an alias\n");
}

TEST(SchemaSemantics, Methods) {
  const TSchemaResult result = ReadQualified(
      "class A { [Description(\"x\")] uint32 Start([Values{\"a\"}] string p[], A REF q, A REF r[4], datetime s); };");
  EXPECT_EQ(Shown(result), "");
  EXPECT_TRUE(result.cimNamespace->FindClass("A")->Properties().empty()) << "checked, not kept";
  EXPECT_EQ(Errors("class A { [Description(5)] uint32 M(); };"),
            "2:24 found '5', expected a string for the qualifier 'Description'\n");
}

}  // namespace
}  // namespace tests
