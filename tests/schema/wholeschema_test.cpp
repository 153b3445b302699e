// A synthetic schema as large as a published one: 1,600 files, which a main file includes.
#include <gtest/gtest.h>

#include <cstdlib>

#include "host/schema/schemacheck.h"
#include "host/schema/schemareader.h"
#include "tests/schema/mofsample.h"
#include "tests/schema/schemafixture.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"
#include "tests/support/temporaryfolder.h"

namespace tests {
namespace {

class WholeSchema : public testing::Test {
 protected:
  WholeSchema() {
    const std::string command = VELHOST_MAKESCHEMA " " + folder_.Path().string() + " > /dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
  }

  TTemporaryFolder folder_;
};

TEST_F(WholeSchema, HasNoFindings) {
  TFileReader reader;
  const TSchemaResult result = ReadSchema({folder_.Path() / "schema.mof"}, reader);
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(result.sources->size(), 1600U);
  // All files declare a class, except the main file and the qualifiers.
  EXPECT_EQ(result.cimNamespace->Classes().size(), 1598U);
  const auto file = result.cimNamespace->FindClass("KROSG_DCAPFile");
  ASSERT_TRUE(file);
  EXPECT_EQ(file->SuperClass()->Name(), "CIM_ManagedElement");
  EXPECT_EQ(file->Properties().size(), 12U) << "four are inherited";
}

TEST(ShippedSchema, HasNoFindings) {
  TFileReader reader;
  const TCheckFindings result = CheckSchema({VELHOST_SCHEMA_FOLDER}, reader);
  std::string text;
  for (const TTextDiagnostic& finding : result.findings) text += FormatDiagnostic(finding);
  EXPECT_EQ(text, "");
}

TEST(MofWhole, ReadsWithoutFindings) { EXPECT_EQ(Shown(ReadText(kMofSample)), ""); }

TEST(MofWhole, EveryDeclarationIsPresent) {
  const TSchemaResult result = ReadText(kMofSample);
  std::string names;
  for (const auto& cimClass : result.cimNamespace->Classes()) names += cimClass->Name() + " ";
  EXPECT_EQ(names, "CIM_ManagedElement CIM_Setting CIM_ElementSetting CIM_InstIndication ");
  EXPECT_EQ(result.instances.size(), 3U);
  EXPECT_EQ(PropertyOf(result, "CIM_Setting", "Mask").defaultValue.ToString(10), "31");
  const auto setting = result.cimNamespace->FindClass("CIM_Setting");
  EXPECT_EQ(setting->Qualifiers().Find("description")->GetValue().ToString(10),
            "A setting. \"Quoted\",\n\xC3\xA4 and \xE2\x82\xAC.");
  EXPECT_EQ(
      setting->Properties().at(setting->FindProperty("Kind"))->Qualifiers().Find("Values")->GetValue().ToString(10),
      "{Unknown, Other, DMTF Reserved}");
}

TEST(MofWhole, LineEndsOfOtherSystems) {
  std::string text;
  for (const char c : std::string(kMofSample)) text += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(Shown(ReadText("\xEF\xBB\xBF" + text)), "");
}

TEST(StopReading, EndsASchemaBetweenTokensClassesAndInstances) {
  tests::TStoppingReader reader;
  std::string text;
  // 2 classes of 605 tokens: 1 check between tokens, then 2 for the classes and 2 for the declarations.
  for (const std::string name : {"A", "B"}) {
    text += "class " + name + " {";
    for (int i = 0; i < 200; ++i) text += "string P" + std::to_string(i) + ";";
    text += "};\n";
  }
  reader.Add("schema.mof", "#pragma include(\"included.mof\")\n");
  reader.Add("included.mof", text);
  const std::size_t looks = tests::LooksThatEnd(reader, [&reader] { ReadSchema({"schema.mof"}, reader); });
  EXPECT_EQ(looks, 1U + 2U + 2U);
}

}  // namespace
}  // namespace tests
