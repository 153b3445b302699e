// Strings that hold MOF: errors in them are reported where their text is.
#include "tests/schema/schemafixture.h"

namespace tests {
namespace {

const std::string kClasses =
    "qualifier EmbeddedInstance : string = null, scope(any); qualifier EmbeddedObject : boolean = false, scope(any); "
    "class A { uint8 n; string s; }; class B : A {}; class C {}; "
    "class H { [EmbeddedInstance(\"A\")] string i; [EmbeddedObject] string o; [EmbeddedInstance(\"A\")] string l[]; "
    "string t; [EmbeddedInstance(\"H\")] string h; }; ";

// Reads an instance of H with "PROPERTY = VALUE;" on line 3.
std::string Assign(const std::string& assignment) {
  return Messages(ReadText(kClasses + "instance of H {\n\n" + assignment + "\n};"));
}

TEST(EmbeddedInstance, OfItsClassOrOneBelow) {
  EXPECT_EQ(Assign(R"(i = "instance of A { n = 1; };";)"), "");
  EXPECT_EQ(Assign(R"(i = "instance of b { N = 1; s = \"x\"; };";)"), "");
  EXPECT_EQ(Assign(R"(i = NULL; l = { "instance of A {};", NULL }; t = "any text";)"), "");
  EXPECT_EQ(Assign(R"(i = "instance of C {};";)"),
            "3:18 found an instance of 'C', expected one of 'A' or of a subclass\n");
  EXPECT_EQ(Assign(R"(i = "instance of X {};";)"), "3:18 the class 'X' is not declared\n");
}

TEST(EmbeddedInstance, ValuesAreChecked) {
  EXPECT_EQ(Assign(R"(i = "instance of A { n = 256; };";)"), "3:26 found '256', expected a uint8 from 0 to 255\n");
  EXPECT_EQ(Assign(R"(l = { "instance of A {};", "instance of A { m = 1; };" };)"),
            "3:45 the class 'A' has no property 'm'\n");
}

TEST(EmbeddedInstance, SyntaxErrors) {
  EXPECT_EQ(Assign(R"(i = "instance of A { n 1; };";)"), "3:24 found '1', expected '='\n");
  EXPECT_EQ(Assign(R"(i = "instance of A { n = 1; }";)"), "3:30 found the end of the embedded string, expected ';'\n");
  EXPECT_EQ(Assign(R"(i = "hello";)"),
            "3:6 found 'hello', expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the embedded "
            "string\n");
  EXPECT_EQ(Assign(R"(i = "";)"), "3:5 found an empty string, expected an instance of 'A'\n");
  EXPECT_EQ(Assign(R"(o = "// nothing";)"), "3:5 found an empty string, expected an instance or a class\n");
}

TEST(EmbeddedInstance, PlacesAfterEscapesAndInLaterLiterals) {
  EXPECT_EQ(Assign(R"(i = "instance of A { s = \"\x41\\n\"; n = x; };";)"),
            "3:43 found 'x', expected a value or '{'\n");
  EXPECT_EQ(Assign("i = \"instance of A { \"\n    \"n = 300; \" \"s = 5; };\";"),
            "4:10 found '300', expected a uint8 from 0 to 255\n4:22 found '5', expected a string\n");
  EXPECT_EQ(Assign(R"(i = "\xFEFFinstance of A { n = 300; };";)"),
            "3:32 found '300', expected a uint8 from 0 to 255\n");
}

TEST(EmbeddedInstance, ShownWithItsLine) {
  EXPECT_EQ(Shown(ReadText("qualifier EmbeddedInstance : string, scope(property); class A { uint8 n; };\n"
                           "class H { [EmbeddedInstance(\"A\")] string i; };\n"
                           "instance of H { i = \"instance of A { m = 1; };\"; };")),
            "a.mof:3:38: error: the class 'A' has no property 'm'\n"
            "  instance of H { i = \"instance of A { m = 1; };\"; };\n"
            "                                       ^\n");
}

TEST(EmbeddedInstance, InAnEmbeddedInstance) {
  EXPECT_EQ(Assign(R"(h = "instance of H { i = \"instance of A { s = \\\"x\\\"; n = 1; };\"; };";)"), "");
  EXPECT_EQ(Assign(R"(h = "instance of H { i = \"instance of A { s = \\\"x\\\"; n = 256; };\"; };";)"),
            "3:63 found '256', expected a uint8 from 0 to 255\n");
}

TEST(EmbeddedInstance, IsOneDeclaration) {
  EXPECT_EQ(Assign(R"(i = "instance of A {}; instance of A {};";)"),
            "3:36 found a second declaration in an embedded string\n");
  EXPECT_EQ(Assign(R"(i = "class D {};";)"), "3:12 found a class in an embedded string, expected an instance of 'A'\n");
  EXPECT_EQ(Assign(R"~(i = "#pragma include(\"a.mof\")";)~"),
            "3:14 found a pragma in an embedded string, expected an instance of 'A'\n");
  EXPECT_EQ(Assign(R"(o = "qualifier Q : string, scope(any);";)"),
            "3:16 found a qualifier declaration in an embedded string, expected an instance or a class\n");
}

TEST(EmbeddedObject, IsAnInstanceOrAClass) {
  EXPECT_EQ(Assign(R"(o = "instance of C {};";)"), "");
  EXPECT_EQ(Assign(R"(o = "class D : C { string x; };";)"), "");
  EXPECT_EQ(Assign(R"(o = "class D : X { string x; };";)"), "3:16 the class 'X' is not declared\n");
  EXPECT_EQ(Assign(R"(o = "class D : C { string 5; };";)"), "3:27 found '5', expected a name\n");
}

TEST(EmbeddedObject, NulIsNotAllowed) {
  EXPECT_EQ(Assign(R"(o = "instance of C \x0 {};";)"),
            "3:20 found a NUL character in an embedded string\n3:20 found the stray character '?', "
            "expected a name, a value, a comment or punctuation\n");
}

TEST(EmbeddedInstance, DefaultOfAProperty) {
  const auto defaults = [](const std::string& text) {
    return Messages(ReadText("qualifier EmbeddedInstance : string, scope(any); class A { uint8 n; };\n" + text));
  };
  EXPECT_EQ(defaults("class H { [EmbeddedInstance(\"A\")] string i = \"instance of A { n = 5; };\"; };"), "");
  EXPECT_EQ(defaults("class H { [EmbeddedInstance(\"A\")] string i = \"instance of A { n = -5; };\"; };"),
            "2:67 found '-5', expected a uint8 from 0 to 255\n");
  EXPECT_EQ(
      defaults("class H { [EmbeddedInstance(\"A\")] string i; };\nclass I : H { string i = \"x\"; };"),
      "3:27 found 'x', expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the embedded string\n")
      << "the qualifier is inherited";
}

TEST(EmbeddedInstance, QualifierRequiresAString) {
  EXPECT_EQ(Assign("t = \"\";\n}; class W { [EmbeddedInstance(\"A\")] uint8 x; [EmbeddedObject] uint8 M(\n"
                   "[EmbeddedObject] A REF r, [EmbeddedObject] string s[]);"),
            "4:15 the qualifier 'EmbeddedInstance' is on an element of type uint8, expected string\n"
            "4:48 the qualifier 'EmbeddedObject' is on an element of type uint8, expected string\n"
            "5:2 the qualifier 'EmbeddedObject' is on an element of type reference, expected string\n");
}

}  // namespace
}  // namespace tests
