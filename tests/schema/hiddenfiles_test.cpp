// Files outside the schema's folders: they are read, but nothing of their text is shown.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "host/schema/collectorneeds.h"
#include "host/schema/schemacheck.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

const std::string kNotShown =
    "there is a problem here that is not shown, because the file is outside the folders of the schema\n";

class TOutside {
 public:
  explicit TOutside(const std::string& text, const std::string& inside = "") {
    schema_.File("in/a.mof", "#pragma include(\"../secret\")\n" + inside).File("secret", text);
  }
  std::string Shown() { return tests::Shown(schema_.Read({"in/a.mof"})); }

 private:
  TSchemaText schema_;
};

TEST(HiddenFiles, TextThatIsNotMofIsReportedByPlaceAndExpectation) {
  EXPECT_EQ(TOutside("root:$6$salt$hash:19000::::::\n").Shown(),
            "secret:1:1: error: expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file; "
            "what was found is not shown, because the file is outside the folders of the schema\n"
            "secret: error: and 1 more error\n");
}

// The tokens expected after a '$' would reveal that there is one, and the places of all errors would reveal where.
TEST(HiddenFiles, OneErrorAndOneWarningAreReported) {
  EXPECT_EQ(TOutside("$ $ $\nclass A {};\n#pragma p(\"\")\n#pragma p(\"\")\n").Shown(),
            "secret:1:1: error: " + kNotShown + "secret:3:9: warning: " + kNotShown +
                "secret: error: and 2 more errors\nsecret: warning: and 1 more warning\n");
}

TEST(HiddenFiles, NoMessageOfTheScannerQuotesThem) {
  const std::string secret = "hunter2";
  for (const char* text :
       {"class A { string p = \"hunter2\\q\"; };", "class A { char16 p = 'hunter2'; };",
        "class A { uint8 p = 12hunter2; };", "#hunter2", "class hunter2 {", "hunter2", "class A { hunter2 p; };",
        "class A { uint8 p = \"hunter2", "\xFFhunter2", "qualifier hunter2 : uint8, flavor(tosubclass, restricted);",
        "class A { uint8 p[hunter2]; };"}) {
    const std::string shown = TOutside(text).Shown();
    EXPECT_NE(shown, "") << text;
    EXPECT_EQ(shown.find("hunter"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("0xFF"), std::string::npos) << shown;
    EXPECT_EQ(shown.find('^'), std::string::npos) << shown;
  }
}

TEST(HiddenFiles, NoMessageAboutWhatTheyDeclareQuotesThem) {
  EXPECT_EQ(TOutside("class A : Hunter {};").Shown(), "secret:1:11: error: " + kNotShown);
  EXPECT_EQ(TOutside("class A { uint8 p = \"hunter2\"; };").Shown(), "secret:1:21: error: " + kNotShown);
  EXPECT_EQ(TOutside("#pragma hunter(\"2\")").Shown(), "secret:1:9: warning: " + kNotShown);
  EXPECT_EQ(TOutside("#pragma include(\"hunter2\")").Shown(), "secret:1:17: error: " + kNotShown);
}

TEST(HiddenFiles, NamesInThemAreNotOfferedAsTheNearest) {
  EXPECT_EQ(TOutside("class Hunter { string Secret; };", "class A : Hunted {};").Shown(),
            "in/a.mof:2:11: error: the class 'Hunted' is not declared\n  class A : Hunted {};\n            ^\n");
  EXPECT_EQ(TOutside("class A { string Secret; };", "instance of A { Sekret = \"\"; };").Shown(),
            "in/a.mof:2:17: error: the class 'A' has no property 'Sekret'\n"
            "  instance of A { Sekret = \"\"; };\n                  ^\n");
  EXPECT_EQ(TOutside("qualifier Hunter : boolean, scope(any);", "[Hunted] class A {};").Shown(),
            "in/a.mof:2:2: error: the qualifier 'Hunted' is not declared\n  [Hunted] class A {};\n   ^\n");
}

TEST(HiddenFiles, ValuesInThemAreNotQuotedByLaterErrors) {
  const std::string inside = "class B : A { [Q(\"mine\")] string p; };";
  const std::string declared = "qualifier Q : string = \"hunter1\", scope(any), flavor(disableoverride, tosubclass);\n";
  const std::string expected =
      "in/a.mof:2:16: error: the qualifier 'Q' has a value other than the inherited one, which has the flavor "
      "DisableOverride\n  class B : A { [Q(\"mine\")] string p; };\n                 ^\n";
  EXPECT_EQ(TOutside(declared + "class A { [Q(\"hunter2\")] string p; };", inside).Shown(), expected);
  EXPECT_EQ(TOutside(declared + "class A { [Q] string p; };", inside).Shown(), expected);
}

TEST(HiddenFiles, TypesInThemAreNotQuotedByLaterErrors) {
  EXPECT_EQ(TOutside("class Hunter {}; class A { Hunter REF p; };", "class B : A { string p; };").Shown(),
            "in/a.mof:2:22: error: the property 'p' has the type string, expected that of the property that it "
            "overrides\n  class B : A { string p; };\n                       ^\n"
            "secret:1:28: warning: " +
                kNotShown);
  EXPECT_EQ(
      TOutside("class A { uint8 m(); };", "class B : A { string m(); };").Shown(),
      "in/a.mof:2:15: warning: the method 'm' returns string, expected the same as in the method that it overrides\n"
      "  class B : A { string m(); };\n                ^\n");
}

TEST(HiddenFiles, TextThatIsNotMofGivesNoClasses) {
  EXPECT_EQ(TOutside("class Hunter {}; ;", "class A : Hunter { uint8 p = \"\"; };").Shown(),
            "secret:1:18: error: expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file; "
            "what was found is not shown, because the file is outside the folders of the schema\n");
}

TEST(HiddenFiles, FindingsAboutTheCollectorDoNotQuoteThem) {
  TSchemaText schema;
  schema.File("in/a.mof", "#pragma include(\"../b\")")
      .File("b", "class KROSG_MEMCTL_StatisticData {};\nclass Hunter : KROSG_MEMCTL_StatisticData {};");
  const TSchemaResult result = schema.Read({"in/a.mof"});
  std::string text;
  for (const TTextDiagnostic& finding : CheckCollectorNeeds(*result.cimNamespace, "in", result.sources.get())) {
    text += FormatDiagnostic(finding);
  }
  EXPECT_NE(text.find("b:2:7: error: " + kNotShown), std::string::npos) << text;
  EXPECT_EQ(text.find("Hunter"), std::string::npos) << text;
}

TEST(HiddenFiles, FilesInAndBelowAnyFolderOfTheSchemaAreShown) {
  TSchemaText schema;
  schema.File("in/a.mof", "#pragma include(\"below/b.mof\")\n#pragma include(\"../other/c.mof\")\n")
      .File("in/below/b.mof", "class B : X {};")
      .File("other/c.mof", "class C : X {};")
      .File("other/d.mof", "");
  EXPECT_EQ(Shown(schema.Read({"in/a.mof", "other/d.mof"})),
            "in/below/b.mof:1:11: error: the class 'X' is not declared\n  class B : X {};\n            ^\n"
            "other/c.mof:1:11: error: the class 'X' is not declared\n  class C : X {};\n            ^\n");
}

TEST(HiddenFiles, AFolderWithTheSameNamePrefixIsOutside) {
  TSchemaText schema;
  schema.File("in/a.mof", "#pragma include(\"../inner/b.mof\")").File("inner/b.mof", "class B : X {};");
  EXPECT_EQ(Shown(schema.Read({"in/a.mof"})), "inner/b.mof:1:11: error: " + kNotShown);
}

// Uses real files, because links are tested.
class HiddenLinks : public testing::Test {
 protected:
  HiddenLinks() {
    std::filesystem::create_directories(folder_ / "in");
    Write("secret", "root:$6$salt$hash:19000\n");
  }
  void Write(const std::string& name, const std::string& text) { temporary_.Write(name, text); }
  std::string Read(const std::string& path) {
    TFileReader reader;
    std::string text;
    for (const TTextDiagnostic& finding : ReadSchema({(folder_ / path).string()}, reader).diagnostics) {
      text += std::to_string(finding.location.line) + " " + finding.message + finding.sourceLine + "\n";
    }
    return text;
  }
  TTemporaryFolder temporary_;
  const std::filesystem::path& folder_ = temporary_.Path();
};

const std::string kNoMof =
    "1 expected '[', 'class', 'instance', 'qualifier', '#pragma' or the end of the file; what was found is not shown, "
    "because the file is outside the folders of the schema\n0 and 1 more error\n";

TEST_F(HiddenLinks, ALinkOutOfTheFolderIsOutside) {
  std::filesystem::create_symlink("../secret", folder_ / "in" / "a.mof");
  EXPECT_EQ(Read("in"), kNoMof);
  EXPECT_EQ(Read("in/a.mof"), kNoMof);
}

TEST_F(HiddenLinks, AnIncludeThroughALinkedFolderIsOutside) {
  std::filesystem::create_symlink("..", folder_ / "in" / "up");
  Write("in/a.mof", "#pragma include(\"up/secret\")");
  EXPECT_EQ(Read("in"), kNoMof);
}

TEST_F(HiddenLinks, ASchemaThatIsNamedByALinkToItsFolderIsInside) {
  std::filesystem::create_symlink("in", folder_ / "link");
  Write("in/a.mof", "class A : X {};");
  EXPECT_EQ(Read("link"), "1 the class 'X' is not declaredclass A : X {};\n");
  EXPECT_EQ(Read("link/a.mof"), "1 the class 'X' is not declaredclass A : X {};\n");
}

TEST_F(HiddenLinks, TheCurrentFolderHasNoName) {
  Write("in/a.mof", "class A : X {};");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_ / "in");
  TFileReader reader;
  const TSchemaResult result = ReadSchema({"a.mof"}, reader);
  std::filesystem::current_path(before);
  EXPECT_EQ(Shown(result), "a.mof:1:11: error: the class 'X' is not declared\n  class A : X {};\n            ^\n");
}

}  // namespace
}  // namespace tests
