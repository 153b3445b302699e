// One schema that uses the whole language, written in the style of large public schemas.
#include "tests/schema/mofsample.h"

#include "tests/schema/schemafixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

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

}  // namespace
}  // namespace tests
