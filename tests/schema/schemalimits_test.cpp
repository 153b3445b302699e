// Schemas that exceed a limit, and the message for each.
#include "tests/schema/schemafixture.h"

namespace tests {
namespace {

std::string Number(std::size_t i) { return std::to_string(i); }

TEST(SchemaLimits, FileSize) {
  TSchemaText schema;
  schema.limits.fileSize = 11;
  schema.File("a.mof", "class A {};").File("b.mof", "class BB {};");
  EXPECT_EQ(Shown(schema.Read({"a.mof", "b.mof"})), "b.mof: error: the file b.mof is larger than 11 bytes\n");
}

TEST(SchemaLimits, TotalSize) {
  TSchemaText schema;
  schema.limits.totalSize = 40;
  schema.File("a.mof", "class A {};\n#pragma include(\"b.mof\")").File("b.mof", "class B {};");
  EXPECT_EQ(Shown(schema.Read({"a.mof"})),
            "a.mof:2:17: error: with the file b.mof the schema is larger than 40 bytes in all\n"
            "  #pragma include(\"b.mof\")\n"
            "                  ^\n");
}

TEST(SchemaLimits, NumberOfFiles) {
  TSchemaText schema;
  schema.limits.files = 2;
  for (const char* name : {"a", "b", "c", "d"}) schema.File(name, std::string("class ") + name + " {};");
  const TSchemaResult result = schema.Read({"a", "b", "c", "d"});
  EXPECT_EQ(Shown(result), "c: error: the schema has more than 2 files\nd: error: the schema has more than 2 files\n");
  EXPECT_EQ(result.cimNamespace->Classes().size(), 2U);
}

TEST(SchemaLimits, IncludeDepth) {
  TSchemaText schema;
  schema.limits.includeDepth = 2;
  schema.File("a", "#pragma include(\"b\")").File("b", "#pragma include(\"c\")").File("c", "class C {};");
  EXPECT_EQ(
      Shown(schema.Read({"a"})),
      "b:1:17: error: files are included more than 2 levels deep\n  #pragma include(\"c\")\n                  ^\n");
}

TEST(SchemaLimits, TokenSize) {
  TSchemaText schema;
  schema.limits.tokenSize = 8;
  schema.File("fits", "class A { string abcdefgh = \"123456\"; };");
  EXPECT_EQ(Shown(schema.Read({"fits"})), "");
  for (const char* token : {"abcdefghi", "\"1234567\"", "'1234567'", "123456789", "\"\\n23456\""}) {
    schema.File("long", std::string("class B { string a = ") + token + "; }; class C : Nowhere {};");
    EXPECT_EQ(Messages(schema.Read({"long"})),
              "1:22 found '" + std::string(token) + "', which is 9 bytes long, expected at most 8\n")
        << "reading ends there";
  }
}

TEST(SchemaLimits, NameSize) {
  const std::string fits(1024, 'n');
  EXPECT_EQ(Messages(ReadText("class " + fits + " { string s; };\ninstance of " + fits + " as $" +
                              std::string(1023, 'a') + " {};")),
            "");
  EXPECT_EQ(Messages(ReadText("class " + fits + "n {};")),
            "1:7 found '" + std::string(40, 'n') + "...', which is 1025 bytes long, expected at most 1024\n");
  EXPECT_EQ(Messages(ReadText("class A {};\ninstance of A as $" + std::string(1024, 'a') + " {};")),
            "2:18 found '$" + std::string(39, 'a') + "...', which is 1025 bytes long, expected at most 1024\n");
}

// A class with two properties and a qualifier on one of them, and a second text with a class.
TEST(SchemaLimits, EstimatedMemory) {
  TSchemaText schema;
  const std::string qualifier = "qualifier Q : string, scope(any);\n";
  schema.File("a.mof", qualifier + "class A { [Q] string p; string q; };").File("b.mof", "\nclass B {};");
  const std::size_t names = 3 * 100;
  const std::size_t needs = names + 400 + 350 + 2 * 700 + 2 * 1200;
  schema.limits.memory = needs;
  EXPECT_EQ(Shown(schema.Read({"a.mof", "b.mof"})), "");
  schema.limits.memory = needs - 1;
  EXPECT_EQ(Messages(schema.Read({"a.mof", "b.mof"})),
            "2:7 the schema takes more than 4849 bytes of memory (estimated from its declarations)\n");
  schema.limits.memory = 600;
  EXPECT_EQ(Messages(schema.Read({"a.mof", "b.mof"})),
            "2:12 the schema takes more than 600 bytes of memory (estimated from its declarations)\n")
      << "said once";
}

TEST(SchemaLimits, LengthOfAMessage) {
  TSchemaText schema;
  const std::string name(1000, 'n');
  schema.File("a.mof", "class " + name + " {}; class " + name + "2 {}; class A { " + name + " REF r; };\n" +
                           "class B : A { " + name + "2 REF r; };");
  const TSchemaResult result = schema.Read({"a.mof"});
  ASSERT_EQ(result.diagnostics.size(), 3U);
  EXPECT_EQ(result.diagnostics[2].message.size(), 2003U);
  EXPECT_EQ(result.diagnostics[2].message.substr(1997), "nnn...");
}

TEST(SchemaLimits, Nesting) {
  TSchemaText schema;
  schema.limits.nesting = 3;
  schema.File("fits", "class A { uint8 a([b] A REF c); };").File("deep", "x { { { { } } } }\nclass A {};");
  EXPECT_EQ(Messages(schema.Read({"fits"})), "1:20 the qualifier 'b' is not declared\n");
  EXPECT_EQ(Messages(schema.Read({"deep"})),
            "1:1 found 'x', expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file\n"
            "1:9 found '{' within 3 open brackets, expected at most 3\n");
}

TEST(SchemaLimits, NumberOfClasses) {
  TSchemaText schema;
  schema.limits.classes = 2;
  schema.File("a", "class A {};\nclass B {};\nclass C {};\nclass D {};");
  EXPECT_EQ(Messages(schema.Read({"a"})), "3:7 the schema has more than 2 classes\n");
}

TEST(SchemaLimits, InheritanceDepth) {
  std::string text = "class C0 {};\n";
  for (std::size_t i = 1; i <= 64; ++i) text += "class C" + Number(i) + " : C" + Number(i - 1) + " {};\n";
  text += "class C65 : C64 {};";
  const TSchemaResult result = ReadText(text);
  EXPECT_EQ(Messages(result), "65:13 the class 'C64' has 64 superclasses, expected at most 63\n");
  EXPECT_TRUE(result.cimNamespace->FindClass("C63"));
  EXPECT_FALSE(result.cimNamespace->FindClass("C65")) << "and is not reported again";
}

TEST(SchemaLimits, QualifiersOfOneElement) {
  TSchemaText schema;
  schema.limits.qualifiersPerElement = 2;
  schema.File("a", kQualifiers + "[Level] class A { [Key, Level] string a; [Key, Level, Description] string b; };");
  EXPECT_EQ(Messages(schema.Read({"a"})), "2:55 found 3 qualifiers on one element, expected at most 2\n");
}

TEST(SchemaLimits, PropertiesOfOneClass) {
  TSchemaText schema;
  schema.limits.propertiesPerClass = 3;
  schema.File("a",
              "class A { string a; string b; };\nclass B : A { string c; };\nclass C : A { string c; string d; };");
  const TSchemaResult result = schema.Read({"a"});
  EXPECT_EQ(Messages(result), "3:7 the class 'C' has more than 3 properties, including inherited ones\n");
  EXPECT_TRUE(result.cimNamespace->FindClass("B"));
}

TEST(SchemaLimits, SizeOfTheModel) {
  TSchemaText schema;
  schema.limits.modelEntries = 3;
  schema.File("a", "class A { string a; string b; };\nclass B : A {};\nclass C : A {};\nclass D : A {};");
  EXPECT_EQ(Messages(schema.Read({"a"})),
            "3:7 the classes have more than 3 properties and qualifiers in all, including inherited ones\n")
      << "two for A and two for B";
}

TEST(SchemaLimits, ValuesOfAllInstances) {
  TSchemaText schema;
  schema.limits.instanceValues = 5;
  schema.File(
      "a",
      "class A { string a; string b; };\ninstance of A {};\ninstance of A {};\ninstance of A {};\ninstance of A {};");
  const TSchemaResult result = schema.Read({"a"});
  EXPECT_EQ(Messages(result), "4:13 the instances have more than 5 properties in all\n");
  EXPECT_EQ(result.instances.size(), 2U);
}

TEST(SchemaLimits, DiagnosticsAreCountedPastTheLimit) {
  TSchemaText schema;
  schema.limits.diagnostics = 2;
  schema.File("a", "class A : X {};\nclass B : X {};\nclass C : X {};\nclass D : X {};\n#pragma p(\"\")\n");
  const TSchemaResult result = schema.Read({"a"});
  EXPECT_EQ(result.errors, 4U);
  EXPECT_EQ(result.warnings, 1U);
  EXPECT_EQ(Shown(result),
            "a:1:11: error: the class 'X' is not declared\n  class A : X {};\n            ^\n"
            "a:2:11: error: the class 'X' is not declared\n  class B : X {};\n            ^\n"
            "a:5:9: warning: the pragma 'p' is unknown and has no effect\n  #pragma p(\"\")\n          ^\n"
            "a: error: and 2 more errors\n");
}

TEST(SchemaLimits, HundredErrorsAreShown) {
  std::string text;
  for (std::size_t i = 0; i < 101; ++i) text += "class A" + Number(i) + " : X {};\n";
  const TSchemaResult result = ReadText(text);
  ASSERT_EQ(result.diagnostics.size(), 101U);
  EXPECT_EQ(result.diagnostics.back().message, "and 1 more error");
}

}  // namespace
}  // namespace tests
