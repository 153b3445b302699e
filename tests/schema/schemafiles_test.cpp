// Files, folders, includes and the other pragmas; encodings.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "host/base/hosterror.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

std::string ClassNames(const TSchemaResult& result) {
  std::string names;
  for (const auto& cimClass : result.cimNamespace->Classes()) names += cimClass->Name() + " ";
  return names;
}

TEST(SchemaFiles, ReadInTheOrderGivenAndReferringToEachOther) {
  TSchemaText schema;
  schema.File("b.mof", "class B : A { uint8 m(C REF c); };")
      .File("a.mof", "class A {};")
      .File("c.mof", "class C : B {};");
  const TSchemaResult result = schema.Read({"b.mof", "a.mof", "c.mof"});
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ClassNames(result), "B A C ");
}

TEST(SchemaFiles, DiagnosticsInOrderOfFileAndPlace) {
  TSchemaText schema;
  schema.File("b.mof", "class B : X {};\nclass ;").File("a.mof", "class A : Y {};");
  EXPECT_EQ(Shown(schema.Read({"b.mof", "a.mof"})),
            "b.mof:1:11: error: the class 'X' is not declared\n  class B : X {};\n            ^\n"
            "b.mof:2:7: error: found ';', expected a class name\n  class ;\n        ^\n"
            "a.mof:1:11: error: the class 'Y' is not declared\n  class A : Y {};\n            ^\n");
}

TEST(SchemaFiles, NamedTwiceReadOnce) {
  TSchemaText schema;
  schema.File("a.mof", "class A {};");
  EXPECT_EQ(Shown(schema.Read({"a.mof", "./x/../a.mof", "a.mof"})), "");
}

TEST(SchemaFiles, MissingFileEndsTheCommand) {
  TSchemaText schema;
  ExpectHostError(EFailure::kAbsent, "cannot open none.mof: No such file or directory",
                  [&schema] { schema.Read({"none.mof"}); });
}

TEST(SchemaInclude, RelativeToTheIncludingFileAndInItsPlace) {
  TSchemaText schema;
  schema.File("top/main.mof", "class A {};\n#pragma include(\"sub/b.mof\")\nclass D {};");
  schema.File("top/sub/b.mof", "class B : A {};\n# PRAGMA Include (\"../c.mof\")\n")
      .File("top/c.mof", "class C : D {};");
  const TSchemaResult result = schema.Read({"top/main.mof"});
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ClassNames(result), "A B C D ");
}

TEST(SchemaInclude, ErrorNamesTheIncludedFile) {
  TSchemaText schema;
  schema.File("m/main.mof", "#pragma include(\"b.mof\")").File("m/b.mof", "class B : X {};");
  EXPECT_EQ(Shown(schema.Read({"m/main.mof"})),
            "m/b.mof:1:11: error: the class 'X' is not declared\n  class B : X {};\n            ^\n");
}

TEST(SchemaInclude, MissingFileIsAnErrorOfTheIncludingOne) {
  TSchemaText schema;
  schema.File("m/main.mof", "#pragma include(\"b.mof\")\nclass A {};");
  const TSchemaResult result = schema.Read({"m/main.mof"});
  EXPECT_EQ(Shown(result),
            "m/main.mof:1:17: error: cannot open m/b.mof: No such file or directory\n"
            "  #pragma include(\"b.mof\")\n"
            "                  ^\n");
  EXPECT_EQ(ClassNames(result), "A ");
}

TEST(SchemaInclude, FirstUnreadableFileDecidesTheFailureIfNothingElseIsWrong) {
  TSchemaText schema;
  schema.limits.fileSize = 60;
  schema.File("absent.mof", "#pragma include(\"no.mof\")\n#pragma include(\"big.mof\")\n")
      .File("large.mof", "#pragma include(\"big.mof\")\n#pragma include(\"no.mof\")\n")
      .File("big.mof", std::string(61, ' '));
  EXPECT_EQ(schema.Read({"absent.mof"}).failure, EFailure::kAbsent);
  EXPECT_EQ(schema.Read({"large.mof"}).failure, EFailure::kTooLarge);
}

TEST(SchemaInclude, AnyOtherErrorMakesTheSchemaMalformed) {
  TSchemaText schema;
  schema.File("after.mof", "#pragma include(\"no.mof\")\nclass A : X {};")
      .File("before.mof", "class ;\n#pragma include(\"no.mof\")\n")
      .File("many.mof", "#pragma include(\"no.mof\")\n#pragma include(\"a.mof\")\n")
      .File("a.mof", "class A {};");
  EXPECT_EQ(schema.Read({"after.mof"}).failure, EFailure::kMalformed);
  EXPECT_EQ(schema.Read({"before.mof"}).failure, EFailure::kMalformed);
  schema.limits.files = 2;
  EXPECT_EQ(schema.Read({"many.mof"}).failure, EFailure::kMalformed) << "too many files is not a failed read";
}

TEST(SchemaInclude, Circle) {
  TSchemaText schema;
  schema.File("a.mof", "#pragma include(\"b.mof\")\nclass A {};")
      .File("b.mof", "#pragma include(\"./a.mof\")\nclass B {};");
  EXPECT_EQ(Shown(schema.Read({"a.mof"})),
            "b.mof:1:17: error: the file a.mof includes itself, directly or through others\n"
            "  #pragma include(\"./a.mof\")\n"
            "                  ^\n");
}

TEST(SchemaInclude, TwiceIsReadOnce) {
  TSchemaText schema;
  schema.File("a.mof", "#pragma include(\"c.mof\")\n#pragma include(\"b.mof\")");
  schema.File("b.mof", "#pragma include(\"c.mof\")\nclass B : C {};").File("c.mof", "class C {};");
  EXPECT_EQ(Shown(schema.Read({"a.mof", "b.mof", "c.mof"})), "");
}

TEST(SchemaPragma, KnownAndUnknownOnes) {
  const TSchemaResult result = ReadText(
      "#pragma locale(\"en_US\")\n#pragma instancelocale(\"en_US\")\n#pragma namespace(\"root/cimv2\")\n"
      "#pragma namespace(\"ROOT/cimv2\")\n#pragma source(\"x\")\nclass A {};");
  EXPECT_EQ(Shown(result),
            "a.mof:5:9: warning: the pragma 'source' is unknown and has no effect\n"
            "  #pragma source(\"x\")\n"
            "          ^\n");
  EXPECT_FALSE(result.HasErrors());
  EXPECT_EQ(result.warnings, 1U);
}

TEST(SchemaPragma, SecondNamespace) {
  EXPECT_EQ(Messages(ReadText("#pragma namespace(\"root/a\")\n#pragma namespace(\"root/b\")\n")),
            "2:19 found a second namespace: the classes of \"root/b\" are merged with those of \"root/a\"\n");
}

TEST(SchemaPragma, ParameterMustBeAString) {
  EXPECT_EQ(Messages(ReadText("#pragma include(5)\n#pragma locale(true)\n")),
            "1:17 found '5', expected a string\n2:16 found 'true', expected a string\n");
}

TEST(SchemaEncoding, ByteOrderMarkAndLineEnds) {
  EXPECT_EQ(Shown(ReadText("\xEF\xBB\xBF"
                           "class A : X {};\r\n")),
            "a.mof:1:11: error: the class 'X' is not declared\n  class A : X {};\n            ^\n");
  EXPECT_EQ(Shown(ReadText("class A\r\n{\r\n  string a; // x\r\n  /* \r\n */ string b;\r\n};\r\n")), "");
  EXPECT_EQ(Messages(ReadText("class A {};\r\n\r\nclass 5")), "3:7 found '5', expected a class name\n");
}

TEST(SchemaEncoding, NamesAndStringsInUtf8) {
  const TSchemaResult result = ReadText("class Ger\xC3\xA4t { string \xE5\x90\x8D = \"\xC3\xA9\"; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(PropertyOf(result, "Ger\xC3\xA4t", "\xE5\x90\x8D").defaultValue.ToString(10), "\xC3\xA9");
}

TEST(SchemaEncoding, ByteThatIsNotUtf8) {
  const TSchemaResult result =
      ReadText("class A { string a = \"Ger\xE4t\"; string b = 5; };\nclass B { string c = \"\xFF\"; };");
  EXPECT_EQ(Messages(result), "1:26 found the byte 0xE4, expected UTF-8 text\n1:42 found '5', expected a string\n")
      << "one for a file, and the rest is read";
  EXPECT_TRUE(result.cimNamespace->FindClass("B"));
  EXPECT_EQ(Messages(ReadText(std::string("class A\0{};", 11))),
            "1:8 found the byte 0x00, expected UTF-8 text\n1:8 found the stray character '?', expected a name, a "
            "value, a comment or punctuation\n");
}

// Uses real folders.
class SchemaFolder : public testing::Test {
 protected:
  void File(const std::string& name, const std::string& text) { temporary_.Write(name, text); }
  TSchemaResult Read(const std::vector<std::string>& paths) {
    TFileReader reader;
    return ReadSchema(paths, reader);
  }

  TTemporaryFolder temporary_;
  const std::filesystem::path& folder_ = temporary_.Path();
};

TEST_F(SchemaFolder, ReadsItsMofFilesByName) {
  File("20.mof", "class B : A {};");
  File("10.mof", "class A {};");
  File("30.MOF", "class C : B {};");
  File("15.txt", "not MOF");
  File("40.mof.orig", "not MOF");
  std::filesystem::create_directory(folder_ / "25.mof");
  std::filesystem::create_directory(folder_ / "sub");
  File("sub/50.mof", "class E {};");
  const TSchemaResult result = Read({folder_.string()});
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ClassNames(result), "A B C ");
}

TEST_F(SchemaFolder, FileThatIncludesTheOthersOfItsFolder) {
  File("00-all.mof", "#pragma include(\"b.mof\")\n#pragma include(\"a.mof\")\n");
  File("a.mof", "class A {};");
  File("b.mof", "class B {};");
  const TSchemaResult result = Read({folder_.string() + "/"});
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(ClassNames(result), "B A ");
}

TEST_F(SchemaFolder, WithoutMofFiles) {
  ExpectHostError(EFailure::kAbsent, "the folder " + folder_.string() + " contains no .mof files",
                  [this] { Read({folder_.string()}); });
}

TEST_F(SchemaFolder, WithoutReadPermission) {
  File("a.mof", "class A {};");
  chmod(folder_.c_str(), 0300);
  const uid_t user = geteuid();
  ASSERT_EQ(seteuid(user == 0 ? 65534 : user), 0) << "root may read everything";
  std::optional<EFailure> failure;
  try {
    Read({folder_.string()});
  } catch (const THostError& error) {
    failure = error.Kind();
  }
  EXPECT_EQ(seteuid(user), 0);
  chmod(folder_.c_str(), 0700);
  EXPECT_EQ(failure, EFailure::kDenied);
}

}  // namespace
}  // namespace tests
