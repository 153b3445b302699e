// Classes, their properties and qualifiers, and the order in which they are enumerated.
#include "host/model/cimclass.h"

#include <gtest/gtest.h>

#include "host/model/cimnamespace.h"
#include "host/model/failures.h"
#include "tests/support/classbuilder.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using TNames = std::vector<std::string>;

TNames SubClassesOf(TCIMClass& cimClass, int flag, std::size_t most = 100) {
  TNames names;
  cimClass.EnumerateSubClasses(
      [&names, most](const boost::shared_ptr<ICIMClass>& subClass) {
        names.push_back(subClass->GetName({}));
        return names.size() < most;
      },
      flag, {});
  return names;
}

TNames PropertiesOf(TCIMClass& cimClass, std::size_t most = 100) {
  TNames names;
  cimClass.EnumeratePropertyDecls(
      [&names, most](const boost::shared_ptr<ICIMPropertyDecl>& property) {
        names.push_back(property->GetClassOrigin({})->GetName({}) + "." + property->GetName({}));
        return names.size() < most;
      },
      {});
  return names;
}

class CimClass : public testing::Test {
 protected:
  boost::shared_ptr<TNamespace> namespace_ = TNamespace::Create();

  TCIMClass& Add(const TClassDefinition& definition) { return *namespace_->AddClass(definition); }
};

TEST_F(CimClass, IsFoundInAnyCaseAndKeepsItsSpelling) {
  Add(TClassBuilder("KROSG_Sample"));
  for (const char* name : {"KROSG_Sample", "krosg_sample", "KROSG_SAMPLE"}) {
    const auto found = namespace_->GetClass(name, {});
    ASSERT_TRUE(found) << name;
    EXPECT_EQ(found->GetName({}), "KROSG_Sample");
  }
}

TEST_F(CimClass, AnAbsentClassIsAnEmptyPointer) {
  EXPECT_FALSE(namespace_->GetClass("KROSG_Sample", {}));
  EXPECT_FALSE(namespace_->GetClass("", {}));
}

TEST_F(CimClass, ANameCanBeUsedOnlyOnce) {
  Add(TClassBuilder("A"));
  ExpectFailure(5, "class a is declared twice", [this] { Add(TClassBuilder("a")); });
  EXPECT_EQ(namespace_->Classes().size(), 1U);
}

TEST_F(CimClass, ASuperclassMustExist) {
  ExpectFailure(5, "class B derives from unknown class A", [this] { Add(TClassBuilder("B", "A")); });
  EXPECT_FALSE(namespace_->FindClass("B"));
}

TEST_F(CimClass, KnowsItsSuperclassAndNamespace) {
  TCIMClass& a = Add(TClassBuilder("A"));
  TCIMClass& b = Add(TClassBuilder("B", "a"));
  EXPECT_FALSE(a.GetSuperClass({}));
  EXPECT_EQ(b.GetSuperClass({})->GetName({}), "A");
  EXPECT_EQ(b.GetNamespace({}), namespace_);
}

TEST_F(CimClass, DescendsFromEveryClassAboveButNotFromItself) {
  TCIMClass& a = Add(TClassBuilder("A"));
  TCIMClass& b = Add(TClassBuilder("B", "A"));
  TCIMClass& c = Add(TClassBuilder("C", "B"));
  EXPECT_TRUE(c.DescendsFrom(a));
  EXPECT_TRUE(c.DescendsFrom(b));
  EXPECT_FALSE(b.DescendsFrom(c));
  EXPECT_FALSE(a.DescendsFrom(a));
}

// The machine-specific subclass may be several levels below.
TEST_F(CimClass, AllDescendantsComeInDeclarationOrder) {
  TCIMClass& a = Add(TClassBuilder("A"));
  Add(TClassBuilder("Z", "A"));
  Add(TClassBuilder("Other"));
  TCIMClass& b = Add(TClassBuilder("B", "A"));
  Add(TClassBuilder("Y", "Z"));
  Add(TClassBuilder("C", "B"));
  EXPECT_EQ(SubClassesOf(a, ICIMClass::kAllDescendants), (TNames{"Z", "B", "Y", "C"}));
  EXPECT_EQ(SubClassesOf(a, ICIMClass::kDirectSubClasses), (TNames{"Z", "B"}));
  EXPECT_EQ(SubClassesOf(b, ICIMClass::kAllDescendants), (TNames{"C"}));
  EXPECT_EQ(ICIMClass::kAllDescendants, 1);
}

TEST_F(CimClass, ThePlaceOfDeclarationGivenByAReaderDecidesTheOrder) {
  TCIMClass& a = Add(TClassBuilder("A"));
  namespace_->AddClass(TClassBuilder("Third", "A"), 30);
  namespace_->AddClass(TClassBuilder("First", "A"), 10);
  namespace_->AddClass(TClassBuilder("Second", "A"), 20);
  namespace_->AddClass(TClassBuilder("AlsoSecond", "A"), 20);
  namespace_->AddClass(TClassBuilder("Last", "A"));
  EXPECT_EQ(SubClassesOf(a, 1), (TNames{"First", "Second", "AlsoSecond", "Third", "Last"}));
}

TEST_F(CimClass, AClassWithoutSubclassesEnumeratesNone) {
  EXPECT_EQ(SubClassesOf(Add(TClassBuilder("A")), 1), TNames{});
}

TEST_F(CimClass, TheCallbackEndsTheEnumerations) {
  TCIMClass& a = Add(TClassBuilder("A").Text("P1").Text("P2").Text("P3"));
  for (const char* name : {"B", "C", "D"}) Add(TClassBuilder(name, "A"));
  EXPECT_EQ(SubClassesOf(a, 1, 2), (TNames{"B", "C"}));
  EXPECT_EQ(PropertiesOf(a, 1), (TNames{"A.P1"}));
}

TEST_F(CimClass, InheritedPropertiesComeFirstFromTheRootDown) {
  Add(TClassBuilder("A").Text("Z").Text("Y"));
  Add(TClassBuilder("B", "A").Text("X"));
  TCIMClass& c = Add(TClassBuilder("C", "B").Text("W").Text("A"));
  EXPECT_EQ(PropertiesOf(c), (TNames{"A.Z", "A.Y", "B.X", "C.W", "C.A"}));
}

TEST_F(CimClass, AnOverridingPropertyKeepsItsIndexAndItsOrigin) {
  Add(TClassBuilder("A").Text("First").Bytes("Second").Text("Third"));
  TCIMClass& b = Add(TClassBuilder("B", "A").Text("Own").Bytes("SECOND", {{"Index", TCIMValue(7)}}));
  EXPECT_EQ(PropertiesOf(b), (TNames{"A.First", "A.SECOND", "A.Third", "B.Own"}));
  EXPECT_EQ(b.Properties()[1]->DeclaringClass(), "B");
  EXPECT_EQ(b.Properties()[1]->GetQualifier("Index", {})->GetValue(), TCIMValue(7));
}

TEST_F(CimClass, AnOverrideDoesNotAffectTheSuperclass) {
  TCIMClass& a = Add(TClassBuilder("A").Property(TCIMValue::TCIMType::kUint8, "P"));
  TCIMClass& b = Add(TClassBuilder("B", "A").Property(TCIMValue::TCIMType::kUint32, "P"));
  EXPECT_EQ(a.Properties()[0]->GetType({}).ToString(), "uint8");
  EXPECT_EQ(b.Properties()[0]->GetType({}).ToString(), "uint32");
}

TEST_F(CimClass, PropertiesAreFoundInAnyCase) {
  const TCIMClass& a = Add(TClassBuilder("A").Text("First").Text("Second"));
  EXPECT_EQ(a.FindProperty("SECOND"), 1U);
  EXPECT_EQ(a.FindProperty("Third"), 2U);
}

TEST_F(CimClass, QualifiersAreFoundInAnyCase) {
  const TCIMClass& a =
      Add(TClassBuilder("A").With("MaxInstanceCount", TCIMValue(2)).Text("P", {{"MaxLen", TCIMValue(4)}}));
  EXPECT_EQ(a.GetQualifier("maxinstancecount", {})->GetValue(), TCIMValue(2));
  EXPECT_EQ(a.Properties()[0]->GetQualifier("MAXLEN", {})->GetValue(), TCIMValue(4));
}

TEST_F(CimClass, AnAbsentQualifierIsAnEmptyPointer) {
  const TCIMClass& a = Add(TClassBuilder("A").Text("P"));
  EXPECT_FALSE(a.GetQualifier("MaxInstanceCount", {}));
  EXPECT_FALSE(a.Properties()[0]->GetQualifier("Offset", {}));
  EXPECT_THROW(a.GetQualifier("MaxInstanceCount", {})->GetValue(), TAssertionFailure);
}

TEST_F(CimClass, ClassQualifiersAreInheritedAccordingToTheirFlavor) {
  Add(TClassBuilder("A").With("Inherited", TCIMValue(1)).With("Kept", TCIMValue(2), kRestricted));
  const TCIMClass& b = Add(TClassBuilder("B", "A"));
  const TCIMClass& c = Add(TClassBuilder("C", "B").With("Inherited", TCIMValue(3)));
  const TCIMClass& d = Add(TClassBuilder("D", "C"));
  EXPECT_EQ(b.GetQualifier("Inherited", {})->GetValue(), TCIMValue(1));
  EXPECT_FALSE(b.GetQualifier("Kept", {}));
  EXPECT_EQ(c.GetQualifier("Inherited", {})->GetValue(), TCIMValue(3));
  EXPECT_EQ(d.GetQualifier("Inherited", {})->GetValue(), TCIMValue(3));
  EXPECT_EQ(c.Qualifiers().All().size(), 1U);
}

TEST_F(CimClass, PropertyQualifiersAreInheritedAccordingToTheirFlavor) {
  TClassBuilder a = TClassBuilder("A").Bytes("P", {{"Index", TCIMValue(1)}});
  a.properties[0].qualifiers.push_back(Qualifier("Kept", TCIMValue(2), kRestricted));
  Add(a);
  const TCIMClass& b = Add(TClassBuilder("B", "A").Bytes("P", {{"MaxLen", TCIMValue(8)}}));
  EXPECT_EQ(b.Properties()[0]->GetQualifier("Index", {})->GetValue(), TCIMValue(1));
  EXPECT_EQ(b.Properties()[0]->GetQualifier("MaxLen", {})->GetValue(), TCIMValue(8));
  EXPECT_FALSE(b.Properties()[0]->GetQualifier("Kept", {}));
}

TEST_F(CimClass, AClassThatOutlivesItsNamespaceHasNone) {
  const auto b = (Add(TClassBuilder("A").Text("P")), namespace_->AddClass(TClassBuilder("B", "A")));
  namespace_.reset();
  EXPECT_FALSE(b->GetNamespace({}));
  EXPECT_EQ(SubClassesOf(*b->SuperClass(), 1), TNames{});
  EXPECT_EQ(PropertiesOf(*b), (TNames{"A.P"}));
}

TEST_F(CimClass, TheMachineTypeIsTheNamespaces) {
  EXPECT_EQ(namespace_->GetMachineType(), "");
  namespace_->SetMachineType("6203");
  EXPECT_EQ(namespace_->GetMachineType(), "6203");
}

TEST(CaseInsensitive, FoldsOnlyAsciiLetters) {
  EXPECT_TRUE(EqualNames("aZ_09", "Az_09"));
  EXPECT_FALSE(EqualNames("[", "{"));
  EXPECT_FALSE(EqualNames("@", "`"));
  EXPECT_FALSE(EqualNames("\xC3\x89", "\xC3\xA9"));
  EXPECT_FALSE(EqualNames("a", "ab"));
  EXPECT_EQ(FoldName("KROSG_Sample\xC3\x89"), "krosg_sample\xC3\x89");
}

}  // namespace
}  // namespace tests
