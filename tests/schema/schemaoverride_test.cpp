// Overriding: the name in Override, qualifiers and signatures of methods that must not change, references.
#include "tests/schema/schemafixture.h"

namespace tests {
namespace {

// Returns the messages; the text starts on line 2.
std::string Read(const std::string& text) {
  return Messages(
      ReadText("qualifier Override : string = null, scope(property, reference, method), flavor(Restricted); "
               "qualifier Fixed : uint8 = 0, scope(any), flavor(DisableOverride); "
               "qualifier Free : uint8 = 0, scope(any); "
               "qualifier Association : boolean = false, scope(association), flavor(DisableOverride);\n" +
               text));
}

TEST(OverrideName, OfAnInheritedElementOfTheSameKind) {
  EXPECT_EQ(Read("class A { string a; uint8 m(); }; class B : A { [Override(\"a\")] string a; [Override(\"M\")] uint8 "
                 "m(); };"),
            "");
  EXPECT_EQ(Read("class A { string a; }; class B : A {}; class C : B { [Override(\"a\")] string a; };"), "");
  EXPECT_EQ(Read("class A { string a; }; class B : A { [Override(NULL)] string b; [Override] string c; };"), "")
      << "no name, no override";
}

TEST(OverrideName, QualifiedByAClassAbove) {
  EXPECT_EQ(Read("class A { string a; }; class B : A {}; class C : B { [Override(\"A.a\")] string a; };"), "");
  EXPECT_EQ(Read("class A { string a; }; class B : A {}; class C : B { [Override(\"b.A\")] string a; };"), "");
  EXPECT_EQ(Read("class A { string a; }; class B { string a; };\nclass C : A { [Override(\"B.a\")] string a; };"),
            "3:25 the property 'a' overrides nothing: no superclass is named 'B'\n");
  EXPECT_EQ(Read("class A {}; class B : A { string a; };\nclass C : B { [Override(\"A.a\")] string a; };"),
            "3:25 the property 'a' overrides nothing: the class 'A' has no property of this name\n");
}

TEST(OverrideName, OfNothing) {
  EXPECT_EQ(Read("class A { [Override(\"a\")] string a; };"),
            "2:21 the property 'a' overrides nothing: the class 'A' has no superclass\n");
  EXPECT_EQ(Read("class A { string Speed; };\nclass B : A { [Override(\"Sped\")] string Sped; };"),
            "3:25 the property 'Sped' overrides nothing: the class 'A' has no property of this name; did you mean "
            "Speed?\n");
  EXPECT_EQ(Read("class A { uint8 m(); };\nclass B : A { [Override(\"n\")] uint8 n(); };"),
            "3:25 the method 'n' overrides nothing: the class 'A' has no method of this name\n");
  EXPECT_EQ(Read("class A { uint8 x(); string y; };\n"
                 "class B : A { [Override(\"x\")] uint8 x; [Override(\"y\")] uint8 y(); };"),
            "3:25 the property 'x' overrides nothing: in the class 'A' this is a method\n"
            "3:50 the method 'y' overrides nothing: in the class 'A' this is a property\n");
}

TEST(OverrideName, OfAnotherName) {
  EXPECT_EQ(Read("class A { string a; };\nclass B : A { [Override(\"a\")] string b; };"),
            "3:25 the property 'b' overrides 'a', expected 'b'; only an element of the same name "
            "can be overridden\n");
  EXPECT_EQ(Read("class A { string a; };\nclass B : A { [Override(\"A.\")] string a; };"),
            "3:25 the property 'a' overrides '', expected 'a'; only an element of the same name "
            "can be overridden\n");
}

TEST(OverrideName, BelowAnUndeclaredClass) {
  EXPECT_EQ(Read("class B : A { [Override(\"a\")] string a; };"), "2:11 the class 'A' is not declared\n");
}

TEST(OverridingMethod, KeepsFixedQualifiers) {
  EXPECT_EQ(Read("class A { [Fixed(1), Free(1)] uint8 m(); }; class B : A {};\n"
                 "class C : B { [Free(2), Fixed(2)] uint8 M(); };"),
            "3:25 the qualifier 'Fixed' has the value '2', expected the inherited value '1', which has the flavor "
            "DisableOverride\n");
  EXPECT_EQ(Read("class A { [Fixed(1)] uint8 m(); }; class B : A { [Fixed(1)] uint8 m(); };"), "") << "said again";
  EXPECT_EQ(Read("class A { uint8 m(); }; class B : A { [Fixed(1)] uint8 m(); };"), "") << "said first";
  EXPECT_EQ(
      Read("class A { [Fixed(1)] uint8 m(); }; class B : A { uint8 m(); };\nclass C : B { [Fixed(2)] uint8 m(); };"),
      "3:16 the qualifier 'Fixed' has the value '2', expected the inherited value '1', which has the flavor "
      "DisableOverride\n");
  EXPECT_EQ(Read("class A { [Free(1) : DisableOverride] uint8 m(); };\nclass B : A { [Free(2)] uint8 m(); };"),
            "3:16 the qualifier 'Free' has the value '2', expected the inherited value '1', which has the flavor "
            "DisableOverride\n");
  EXPECT_EQ(Read("class A { [Fixed(1) : Restricted] uint8 m(); }; class B : A { [Fixed(2)] uint8 m(); };"), "");
}

TEST(OverridingMethod, KeepsFixedQualifiersOfItsParameters) {
  EXPECT_EQ(Read("class A { uint8 m([Fixed(1)] uint8 p, uint8 q); };\n"
                 "class B : A { uint8 m([Fixed(2)] uint8 p, [Fixed(3)] uint8 q); };"),
            "3:24 the qualifier 'Fixed' has the value '2', expected the inherited value '1', which has the flavor "
            "DisableOverride\n");
}

TEST(OverridingMethod, KeepsItsSignature) {
  EXPECT_EQ(Read("class A { uint8 m(uint8 p, A REF q[2]); }; class B : A { uint8 m(uint8 P, B REF q[2]); };"), "");
  EXPECT_EQ(Read("class A { uint8 m(); };\nclass B : A { string m(); };"),
            "3:15 the method 'm' returns string, expected uint8 as in the class 'A', whose method it overrides\n");
  EXPECT_EQ(Read("class A { uint8 m(uint8 p); };\nclass B : A { uint8 m(); };"),
            "3:21 the method 'm' has 0 parameters, expected 1 as in the class 'A', whose method it overrides\n");
  EXPECT_EQ(Read("class A { uint8 m(uint8 p, A REF q); };\nclass B : A { uint8 m(uint8 p[], A REF r[3]); };"),
            "3:23 found the parameter 'p' of the type uint8[], expected 'p' of the type uint8 as in the class 'A', "
            "whose method it overrides\n"
            "3:34 found the parameter 'r' of the type reference to A[3], expected 'q' of the type reference to A as in "
            "the class 'A', whose method it overrides\n");
}

TEST(OverridingMethod, WithAnotherSignatureIsAWarning) {
  const TSchemaResult result = ReadText("class A { uint8 m(); }; class B : A { string m(); };");
  EXPECT_FALSE(result.HasErrors());
  EXPECT_EQ(result.warnings, 1U);
}

TEST(Association, HasTwoReferences) {
  EXPECT_EQ(Read("class A {}; [Association] class L { A REF a; A REF b; }; [Association] class M : L {};"), "");
  EXPECT_EQ(Read("class A {};\n[Association] class L { A REF a; };"),
            "3:21 the association 'L' has one reference, expected at least two\n");
  EXPECT_EQ(Read("[Association] class L {};"), "2:21 the association 'L' has no reference, expected at least two\n");
  EXPECT_EQ(Read("class A {};\n[Association] class L { A REF a; A b; };"),
            "3:34 found 'A', expected a type, or a class name and 'ref'\n")
      << "the other one may have been lost";
}

TEST(Association, IsRequiredForAReference) {
  EXPECT_EQ(Read("class A { A REF r; };"),
            "2:11 found the reference 'r' in the class 'A', expected it in an association\n");
  EXPECT_FALSE(ReadText("class A { A REF r; };").HasErrors());
}

}  // namespace
}  // namespace tests
