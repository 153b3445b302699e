// Classes, properties and what they inherit, from texts in memory.
#include "tests/schema/schemafixture.h"

namespace NKROVEL20 {
namespace {

TEST(SchemaReader, EmptyTextGivesAnEmptyNamespace) {
  const TSchemaResult result = ReadText("");
  EXPECT_EQ(Shown(result), "");
  EXPECT_FALSE(result.HasErrors());
  EXPECT_TRUE(result.cimNamespace->Classes().empty());
}

TEST(SchemaReader, PropertiesOfEveryType) {
  const TSchemaResult result = ReadText(
      "class A { boolean a; uint8 b; sint8 c; uint16 d; sint16 e; uint32 f; sint32 g; uint64 h; sint64 i;\n"
      "real32 j; real64 k; char16 l; string m; datetime n; A REF o; };");
  ASSERT_EQ(Shown(result), "");
  std::string types;
  for (const auto& property : result.cimNamespace->Classes().at(0)->Properties()) {
    types += property->Definition().type.ToString() + " ";
  }
  EXPECT_EQ(types, "boolean uint8 sint8 uint16 sint16 uint32 sint32 uint64 sint64 real32 real64 char16 string datetime ref ");
  EXPECT_EQ(PropertyOf(result, "A", "o").referenceClass, "A");
}

TEST(SchemaReader, InheritedPropertiesComeFirst) {
  const TSchemaResult result = ReadText("class B : A { string z; string b; }; class A { string y; string a; };");
  ASSERT_EQ(Shown(result), "");
  std::string names;
  for (const auto& property : result.cimNamespace->FindClass("B")->Properties()) names += property->Definition().name;
  EXPECT_EQ(names, "yazb");
  EXPECT_EQ(result.cimNamespace->Classes().at(0)->Name(), "B") << "declaration order, though A is made first";
}

}  // namespace
}  // namespace NKROVEL20
