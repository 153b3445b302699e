// Syntax errors: each message with its place and caret, and where parsing continues.
#include "tests/schema/schemafixture.h"

namespace tests {
namespace {

// The only diagnostic, as a user sees it.
TEST(MofErrors, MessageLineAndCaret) {
  EXPECT_EQ(Shown(ReadText("class A {\n\tstring a\n  uint8 b;\n};\n")),
            "a.mof:3:3: error: found 'uint8', expected ';', '=', '(' or '['\n"
            "    uint8 b;\n"
            "    ^\n");
  EXPECT_EQ(Shown(ReadText("class A {\r\n\tstring a = 5;\r\n};\r\n")),
            "a.mof:2:13: error: found '5', expected a string\n"
            "   string a = 5;\n"
            "              ^\n");
  EXPECT_EQ(Shown(ReadText("class A { string \xC3\xA4 = 5; };")),
            "a.mof:1:23: error: found '5', expected a string\n"
            "  class A { string \xC3\xA4 = 5; };\n"
            "                       ^\n");
}

TEST(MofErrors, EndOfTheFile) {
  EXPECT_EQ(
      Shown(ReadText("class A {\n")),
      "a.mof:1:10: error: found the end of the file, expected a type, a class name, '[' or '}'; the '{' in line 1 is "
      "not closed\n"
      "  class A {\n"
      "           ^\n");
  EXPECT_EQ(Messages(ReadText("class A { string a; }")), "1:22 found the end of the file, expected ';'\n");
  EXPECT_EQ(Messages(ReadText("[Key")),
            "1:5 found the end of the file, expected ',', ':', '(', ']' or '{'; the '[' in line 1 is not closed\n");
}

TEST(MofErrors, ExpectedTokensAreListed) {
  EXPECT_EQ(Messages(ReadText("; class A {};")),
            "1:1 found ';', expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file\n");
  EXPECT_EQ(Messages(ReadText("class 5 {};")), "1:7 found '5', expected a class name\n");
  EXPECT_EQ(Messages(ReadText("class A : {};")), "1:11 found '{', expected a class name\n");
  EXPECT_EQ(Messages(ReadText("class A B {};")), "1:9 found 'B', expected ':' or '{'\n");
  EXPECT_EQ(Messages(ReadText("class A { string 5; };")), "1:18 found '5', expected a name\n");
  EXPECT_EQ(Messages(ReadText("class A { string a[x]; };")), "1:20 found 'x', expected a number or ']'\n");
  EXPECT_EQ(Messages(ReadText("class A { string a = ; };")), "1:22 found ';', expected a value or '{'\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 a[] = {1,}; };")), "1:26 found '}', expected a value\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 a[] = {1 2}; };")), "1:26 found '2', expected ',' or '}'\n");
  EXPECT_EQ(Messages(ReadText("[Key(] class A {};")), "1:6 found ']', expected a value\n");
  EXPECT_EQ(
      Messages(ReadText("[Key : 5] class A {};")),
      "1:8 found '5', expected a flavor (EnableOverride, DisableOverride, ToSubclass, Restricted, Translatable)\n");
  EXPECT_EQ(Messages(ReadText("[] class A {};")), "1:2 found ']', expected a name\n");
  EXPECT_EQ(Messages(ReadText("qualifier Q : string;")), "1:21 found ';', expected ',', '=' or '['\n");
  EXPECT_EQ(Messages(ReadText("qualifier Q : string, ;")), "1:23 found ';', expected 'scope' or 'flavor'\n");
  EXPECT_EQ(Messages(ReadText("qualifier Q : string, scope();")),
            "1:29 found ')', expected a kind of element (class, association, indication, qualifier, property, "
            "reference, method, parameter, schema, any)\n");
  EXPECT_EQ(Messages(ReadText("qualifier Q : strin, scope(any);")), "1:15 found 'strin', expected a type\n");
  EXPECT_EQ(Messages(ReadText("instance A {};")), "1:10 found 'A', expected 'of'\n");
  EXPECT_EQ(Messages(ReadText("class A {}; instance of A as b {};")), "1:30 found 'b', expected an alias\n");
  EXPECT_EQ(Messages(ReadText("#pragma locale \"en\";")), "1:16 found '\"en\"', expected '('\n");
}

TEST(MofErrors, UnknownTypeIsNamed) {
  EXPECT_EQ(Shown(ReadText("class A {\n  unit8 a;\n};")),
            "a.mof:2:3: error: found 'unit8', expected a type, or a class name and 'ref'; did you mean uint8?\n"
            "    unit8 a;\n"
            "    ^\n");
  EXPECT_EQ(Messages(ReadText("class A { Thing = 5; };")),
            "1:11 found 'Thing', expected a type, or a class name and 'ref'\n");
}

TEST(MofErrors, UnterminatedString) {
  EXPECT_EQ(Shown(ReadText("class A {\n  string a = \"abc;\n  string b;\n};")),
            "a.mof:2:14: error: the string that starts here is not closed on its line, expected '\"'\n"
            "    string a = \"abc;\n"
            "               ^\n"
            "a.mof:3:3: error: found 'string', expected ';'\n"
            "    string b;\n"
            "    ^\n");
  EXPECT_EQ(Messages(ReadText("class A { string a = \"\\")),
            "1:22 the string that starts here is not closed on its line, expected '\"'\n"
            "1:24 found the end of the file, expected ';'; the '{' in line 1 is not closed\n");
  EXPECT_EQ(Messages(ReadText("class A { string a = \"x\\\n\"; };")),
            "1:22 the string that starts here is not closed on its line, expected '\"'\n"
            "2:1 the string that starts here is not closed on its line, expected '\"'\n"
            "2:6 found the end of the file, expected ';'; the '{' in line 1 is not closed\n");
}

TEST(MofErrors, UnterminatedCharacter) {
  EXPECT_EQ(Messages(ReadText("class A { char16 a = 'x\n; };")),
            "1:22 the character that starts here is not closed on its line, expected \"'\"\n");
}

TEST(MofErrors, UnterminatedComment) {
  EXPECT_EQ(Shown(ReadText("class A {};\n/* x\n * y\n")),
            "a.mof:2:1: error: the comment that starts here has no end, expected \"*/\"\n"
            "  /* x\n"
            "  ^\n");
  EXPECT_EQ(Messages(ReadText("/*/")), "1:1 the comment that starts here has no end, expected \"*/\"\n");
  EXPECT_EQ(Messages(ReadText("/**")), "1:1 the comment that starts here has no end, expected \"*/\"\n");
}

TEST(MofErrors, StrayCharacters) {
  EXPECT_EQ(Messages(ReadText("class A { string a; % };")),
            "1:21 found the stray character '%', expected a name, a value, a comment or punctuation\n");
  EXPECT_EQ(Messages(ReadText("class A { string a; \x01 };")),
            "1:21 found a control character with code 1, expected a name, a value, a comment or punctuation\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 a = -; };")),
            "1:21 found the stray character '-', expected a digit after it\n1:22 found ';', expected a value or '{'\n");
  EXPECT_EQ(Messages(ReadText("#pragm include(\"x\")\nclass A {};")),
            "1:1 found '#pragm', expected '#pragma'\n"
            "1:8 found 'include', expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file\n");
}

TEST(MofErrors, LongTokensAreCut) {
  EXPECT_EQ(Messages(ReadText("class A { uint8 a = \"" + std::string(60, 'x') + "\"; };")),
            "1:21 found '\"" + std::string(39, 'x') + "...', expected a uint8\n");
  const std::string umlauts = "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4";
  EXPECT_EQ(Messages(ReadText("class A { uint8 a = \"" + umlauts + umlauts + "\"; };")),
            "1:21 found '\"" + umlauts + umlauts.substr(0, 18) + "...', expected a uint8\n")
      << "40 bytes would end within a character";
}

TEST(MofErrors, TokensAreCutAtTheEndOfTheirLine) {
  EXPECT_EQ(Messages(ReadText("class A { uint8 a = \"x\"\n  \"y\"; };")), "1:21 found '\"x\"...', expected a uint8\n");
  EXPECT_EQ(Messages(ReadText("class A { uint8 a = \"x\" \r\n\"y\"; };")),
            "1:21 found '\"x\" ...', expected a uint8\n");
}

// Recovery.

TEST(MofRecovery, SeveralErrorsInOneRun) {
  const TSchemaResult result = ReadText(
      "class A {\n"
      "  unit8 a;\n"
      "  string b = 5;\n"
      "  string c\n"
      "  string d;\n"
      "  uint8 e[x];\n"
      "  string f;\n"
      "};\n"
      "class B : A { string g; }\n"
      "class C : B { string h; };\n");
  EXPECT_EQ(Messages(result),
            "2:3 found 'unit8', expected a type, or a class name and 'ref'; did you mean uint8?\n"
            "3:14 found '5', expected a string\n"
            "5:3 found 'string', expected ';', '=', '(' or '['\n"
            "6:11 found 'x', expected a number or ']'\n"
            "10:1 found 'class', expected ';'\n");
  EXPECT_EQ(result.errors, 5U);
  ASSERT_TRUE(result.cimNamespace->FindClass("C"));
  std::string names;
  for (const auto& property : result.cimNamespace->FindClass("C")->Properties()) names += property->Definition().name;
  EXPECT_EQ(names, "bcdefgh") << "what is missing between two statements is taken as read";
}

TEST(MofRecovery, BrokenQualifierListIsLeftOut) {
  const TSchemaResult result = ReadQualified("[Description(\"a\") Key]\nclass A { [Level(1)] string a; };");
  EXPECT_EQ(Messages(result), "2:19 found 'Key', expected ',', ':' or ']'\n");
  EXPECT_TRUE(result.cimNamespace->FindClass("A"));
}

TEST(MofRecovery, BrokenParameterListIsLeftOut) {
  const TSchemaResult result = ReadText("class A { uint8 M(string, uint8 b); string a; };");
  EXPECT_EQ(Messages(result), "1:25 found ',', expected a name\n");
  EXPECT_EQ(PropertyOf(result, "A", "a").name, "a");
}

TEST(MofRecovery, BrokenClassHeaderSkipsItsBody) {
  const TSchemaResult result = ReadText("class A : { [Key] string a; uint8 b[2]; };\nclass B { string c; };");
  EXPECT_EQ(Messages(result), "1:11 found '{', expected a class name\n");
  EXPECT_TRUE(result.cimNamespace->FindClass("B"));
}

TEST(MofRecovery, LostDeclarationIsNotReportedAsMissing) {
  EXPECT_EQ(Messages(ReadText("class A ? { string a; };\nclass B : A { uint8 m(A REF r); };")),
            "1:9 found the stray character '?', expected a name, a value, a comment or punctuation\n");
  EXPECT_EQ(Messages(ReadText("class A x { string a; };\nclass B : A { uint8 m(A REF r); };")),
            "1:9 found 'x', expected ':' or '{'\n");
  EXPECT_EQ(Messages(ReadText("qualifier Q : nothing, scope(any);\n[Q] class B {};")),
            "1:15 found 'nothing', expected a type\n");
}

TEST(MofRecovery, UnknownStatementSkipsItsBody) {
  const TSchemaResult result = ReadText("structure S { string a; { b = {1}; } };\nclass B { string c; };");
  EXPECT_EQ(
      Messages(result),
      "1:1 found 'structure', expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file\n");
  EXPECT_TRUE(result.cimNamespace->FindClass("B"));
}

TEST(MofRecovery, InstanceKeepsItsOtherValues) {
  const TSchemaResult result = ReadText(
      "class A { string a; string b; string c; };\n"
      "instance of A { a = \"1\"; b \"2\"; c = \"3\" };");
  EXPECT_EQ(Messages(result), "2:28 found '\"2\"', expected '='\n2:41 found '}', expected ';'\n");
  ASSERT_EQ(result.instances.size(), 1U);
  EXPECT_EQ(result.instances[0]->Find("a")->ToString(10), "1");
  EXPECT_EQ(result.instances[0]->Find("b"), nullptr);
  EXPECT_EQ(result.instances[0]->Find("c")->ToString(10), "3");
}

}  // namespace
}  // namespace tests
