// Classes, properties and what they inherit.
#include "tests/schema/schemafixture.h"

namespace tests {
namespace {

std::string PropertyNames(const TSchemaResult& result, const std::string& className) {
  std::string names;
  for (const auto& property : result.cimNamespace->FindClass(className)->Properties()) {
    names += property->Definition().name + " ";
  }
  return names;
}

std::string ClassNames(const TSchemaResult& result) {
  std::string names;
  for (const auto& cimClass : result.cimNamespace->Classes()) names += cimClass->Name() + " ";
  return names;
}

boost::shared_ptr<const TQualifier> ClassQualifier(const TSchemaResult& result, const std::string& className,
                                                   const std::string& qualifier) {
  return result.cimNamespace->FindClass(className)->Qualifiers().Find(qualifier);
}

boost::shared_ptr<const TQualifier> PropertyQualifier(const TSchemaResult& result, const std::string& className,
                                                      const std::string& property, const std::string& qualifier) {
  const auto cimClass = result.cimNamespace->FindClass(className);
  return cimClass->Properties().at(cimClass->FindProperty(property))->Qualifiers().Find(qualifier);
}

TEST(SchemaReader, EmptyTextGivesAnEmptyNamespace) {
  for (const char* text : {"", "\n", " ", "// nothing", "/* nothing */", "\xEF\xBB\xBF"}) {
    const TSchemaResult result = ReadText(text);
    EXPECT_EQ(Shown(result), "");
    EXPECT_FALSE(result.HasErrors());
    EXPECT_TRUE(result.cimNamespace->Classes().empty());
  }
}

TEST(SchemaReader, PropertiesOfEveryType) {
  const TSchemaResult result = ReadQualified(
      "[Association] class A { boolean a; uint8 b; sint8 c; uint16 d; sint16 e; uint32 f; sint32 g; uint64 h; sint64 "
      "i;\n"
      "real32 j; real64 k; char16 l; string m; datetime n; A REF o; A REF p; };");
  ASSERT_EQ(Shown(result), "");
  std::string types;
  for (const auto& property : result.cimNamespace->Classes().at(0)->Properties()) {
    types += property->Definition().type.ToString() + " ";
  }
  EXPECT_EQ(
      types,
      "boolean uint8 sint8 uint16 sint16 uint32 sint32 uint64 sint64 real32 real64 char16 string datetime ref ref ");
  EXPECT_EQ(PropertyOf(result, "A", "o").referenceClass, "A");
}

TEST(SchemaReader, ArraysWithAndWithoutSize) {
  const TSchemaResult result = ReadText("class A { uint8 a[]; uint8 b[14]; uint8 c; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_TRUE(PropertyOf(result, "A", "a").isArray);
  EXPECT_EQ(PropertyOf(result, "A", "a").arraySize, 0U);
  EXPECT_TRUE(PropertyOf(result, "A", "b").isArray);
  EXPECT_EQ(PropertyOf(result, "A", "b").arraySize, 14U);
  EXPECT_FALSE(PropertyOf(result, "A", "c").isArray);
  EXPECT_TRUE(PropertyOf(result, "A", "c").defaultValue.IsNull());
}

TEST(SchemaReader, InheritedPropertiesComeFirstWhateverTheOrderOfTheText) {
  const TSchemaResult result = ReadText(
      "class C : B { string q; }; class B : A { string z; string b; };\n"
      "class A { string y; string a; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(PropertyNames(result, "C"), "y a z b q ");
  EXPECT_EQ(ClassNames(result), "C B A ") << "declaration order, though A is made first";
}

TEST(SchemaReader, OverridingPropertyKeepsItsPlaceAndOrigin) {
  const TSchemaResult result = ReadText("class A { string a; string b; }; class B : A { string c; string A; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(PropertyNames(result, "B"), "A b c ");
  const auto& overriding = result.cimNamespace->FindClass("B")->Properties().at(0);
  EXPECT_EQ(overriding->DeclaringClass(), "B");
  EXPECT_EQ(overriding->GetClassOrigin(kNoContext)->GetName(kNoContext), "A");
}

TEST(SchemaReader, NamesAndKeywordsInAnyCase) {
  const TSchemaResult result = ReadText(
      "QUALIFIER Size : UINT32 = NULL, SCOPE(PROPERTY), FLAVOR(RESTRICTED);\n"
      "Class Base { [SIZE(3)] String Text; UINT8 m(bASE Ref Me); }; CLASS Sub : BASE { };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(ClassNames(result), "Base Sub ") << "spelled as declared";
  EXPECT_TRUE(result.cimNamespace->FindClass("bAsE"));
  EXPECT_EQ(PropertyQualifier(result, "Base", "TEXT", "size")->GetValue().ToString(10), "3");
}

TEST(SchemaReader, KeywordsAsPropertyNames) {
  const TSchemaResult result = ReadQualified(
      "[Association] class A { string any; string as; string association; string class; string flavor; string "
      "indication;\n"
      "string instance; string method; string null; string of; string parameter; string property; string qualifier;\n"
      "string ref; string reference; string restricted; string schema; string scope; string toSubclass; string true;\n"
      "string uint8; string string; string pragma; A REF instance2; A ref REF2; uint8 class2(string class, A ref of); "
      "};\n"
      "instance of A { class = \"1\"; of = \"2\"; true = \"3\"; uint8 = \"4\"; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(result.instances.at(0)->Find("uint8")->ToString(10), "4");
  EXPECT_EQ(PropertyOf(result, "A", "restricted").type, TCIMValue::TCIMType::kString);
}

TEST(SchemaReader, PlacesOfClassesPropertiesAndQualifiers) {
  const TSchemaResult result = ReadQualified("\n  [Level]\nclass A\n{\n    [Description(\"x\")]\n    string a;\n};");
  ASSERT_EQ(Shown(result), "");
  const TSourceLocation cimClass = result.cimNamespace->FindClass("A")->Location();
  EXPECT_EQ(cimClass.file, "a.mof");
  EXPECT_EQ(cimClass.line, 4U);
  EXPECT_EQ(cimClass.column, 7U);
  const TSourceLocation property = PropertyOf(result, "A", "a").location;
  EXPECT_EQ(property.line, 7U);
  EXPECT_EQ(property.column, 12U);
  const TSourceLocation qualifier = PropertyQualifier(result, "A", "a", "Description")->Location();
  EXPECT_EQ(qualifier.line, 6U);
  EXPECT_EQ(qualifier.column, 6U);
}

// Qualifiers.

TEST(SchemaQualifiers, ValueOfAUse) {
  const TSchemaResult result = ReadQualified(
      "[Level] class A { [Key] string a; [Description] string b; [Level(3), Values{\"x\", \"y\"}] string c;\n"
      "[Key(false)] string d; [Level(null)] string e; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(ClassQualifier(result, "A", "Level")->GetValue().ToString(10), "7") << "the declared default";
  EXPECT_EQ(PropertyQualifier(result, "A", "a", "Key")->GetValue().ToString(10), "true") << "not its default, false";
  EXPECT_TRUE(PropertyQualifier(result, "A", "b", "Description")->GetValue().IsNull());
  EXPECT_EQ(PropertyQualifier(result, "A", "c", "Level")->GetValue().ToString(10), "3");
  EXPECT_EQ(PropertyQualifier(result, "A", "c", "Values")->GetValue().ToString(10), "{x, y}");
  EXPECT_EQ(PropertyQualifier(result, "A", "d", "Key")->GetValue().ToString(10), "false");
  EXPECT_TRUE(PropertyQualifier(result, "A", "e", "Level")->GetValue().IsNull());
  EXPECT_FALSE(PropertyQualifier(result, "A", "a", "Level")) << "a missing qualifier is an empty pointer";
}

TEST(SchemaQualifiers, PropagateByTheDeclaredFlavor) {
  const TSchemaResult result = ReadQualified(
      "[Abstract, Level(1)] class A { [Level(2)] string a; };\n"
      "class B : A { string a; }; class C : B {};");
  ASSERT_EQ(Shown(result), "");
  EXPECT_FALSE(ClassQualifier(result, "B", "Abstract")) << "Restricted";
  EXPECT_EQ(ClassQualifier(result, "C", "Level")->GetValue().ToString(10), "1");
  EXPECT_EQ(PropertyQualifier(result, "B", "a", "Level")->GetValue().ToString(10), "2");
}

TEST(SchemaQualifiers, FlavorOfAUseWins) {
  const TSchemaResult result = ReadQualified(
      "[Abstract : ToSubclass, Level(1) : Restricted DisableOverride Translatable] class A {}; class B : A {};");
  ASSERT_EQ(Shown(result), "");
  EXPECT_TRUE(ClassQualifier(result, "B", "Abstract"));
  EXPECT_FALSE(ClassQualifier(result, "B", "Level"));
  const TQualifierFlavor flavor = ClassQualifier(result, "A", "Level")->Flavor();
  EXPECT_FALSE(flavor.overridable);
  EXPECT_FALSE(flavor.toSubclass);
  EXPECT_TRUE(flavor.translatable);
}

TEST(SchemaQualifiers, ObsoleteFlavorIsAccepted) {
  EXPECT_EQ(Shown(ReadQualified("[Level(1) : ToInstance ToSubclass EnableOverride] class A {};")), "");
}

TEST(SchemaQualifiers, SubclassMayReplaceAValue) {
  const TSchemaResult result = ReadQualified("[Level(1)] class A {}; [Level(2)] class B : A {};");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(ClassQualifier(result, "B", "level")->GetValue().ToString(10), "2");
}

TEST(SchemaQualifiers, DeclaredAfterTheirUseAndInEitherOrderOfClauses) {
  EXPECT_EQ(
      Shown(ReadText("[Q(5)] class A {}; qualifier Q : uint8 = 1, flavor(ToSubclass, DisableOverride), scope(class);")),
      "");
}

// Instances.

TEST(SchemaInstances, TypedAgainstTheirClass) {
  const TSchemaResult result = ReadQualified(
      "class A { [Key] string id; uint8 n[]; datetime when; }; [Association] class L { A REF left; A REF right; };\n"
      "instance of A as $one { id = \"1\"; N = {1, 2}; when = \"20260131123456.000000+060\"; };\n"
      "instance of L { left = $one; right = \"A.id=\\\"2\\\"\"; };");
  ASSERT_EQ(Shown(result), "");
  ASSERT_EQ(result.instances.size(), 2U);
  const TInstance& one = *result.instances[0];
  EXPECT_EQ(one.Class().Name(), "A");
  EXPECT_EQ(one.Find("id")->ToString(10), "1");
  EXPECT_EQ(one.Find("n")->ToString(10), "{1, 2}");
  EXPECT_EQ(one.Find("n")->GetType(), TCIMValue::TCIMType::kUint8);
  EXPECT_EQ(one.Find("when")->ToDateTime().ToIso8601(), "2026-01-31T12:34:56+01:00");
  EXPECT_EQ(result.instances[1]->Find("left")->ToString(10), "$one");
  EXPECT_EQ(result.instances[1]->Find("left")->GetType(), TCIMValue::TCIMType::kReference);
  EXPECT_EQ(result.instances[1]->Find("right")->ToString(10), "A.id=\"2\"");
}

TEST(SchemaInstances, MayComeBeforeTheirClassAndTheirAlias) {
  const TSchemaResult result = ReadQualified(
      "instance of L { left = $one; }; instance of A as $ONE {}; class A {};\n"
      "[Association] class L { A REF left; A REF right; };");
  EXPECT_EQ(Shown(result), "");
  EXPECT_EQ(result.instances.size(), 2U);
}

TEST(SchemaInstances, EmbeddedInstanceIsText) {
  const TSchemaResult result = ReadText(
      "qualifier EmbeddedInstance : string = null, scope(property);\n"
      "class A { string t; }; class B { [EmbeddedInstance(\"A\")] string a; };\n"
      "instance of B { a = \"instance of A {t = \\\"x\\\";};\"; };");
  ASSERT_EQ(Shown(result), "");
  EXPECT_EQ(result.instances.at(0)->Find("a")->ToString(10), "instance of A {t = \"x\";};");
}

}  // namespace
}  // namespace tests
