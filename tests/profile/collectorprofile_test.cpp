// The profile's functions on their own.
#include "host/profile/collectorprofile.h"

#include <gtest/gtest.h>

#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

namespace Profile = CollectorProfile;
using Profile::EPath;
using TType = TCIMValue::TCIMType;
using TBytes = std::vector<std::uint8_t>;

class ProfileOfSchema : public testing::Test {
 protected:
  boost::shared_ptr<TNamespace> schema_ = TNamespace::Create();

  TCIMClass& Add(const TClassDefinition& definition) { return *schema_->AddClass(definition); }
  void AddBases() {
    Add(TClassBuilder("KROSG_Top"));
    for (const std::string_view base : Profile::kJfrBaseClasses) Add(TClassBuilder(std::string(base), "KROSG_Top"));
  }
  static TClassBuilder For(const std::string& name, const std::string& super, const std::vector<std::string>& types,
                           int instances = 1) {
    return TClassBuilder(name, super).Machines(types).With("MaxInstanceCount", TCIMValue(instances));
  }
};

std::vector<std::string> NamesOf(const std::vector<boost::shared_ptr<TPropertyDecl>>& properties) {
  std::vector<std::string> names;
  for (const auto& property : properties) names.push_back(property->Definition().name);
  return names;
}

// "CLASS path base served instances registers", one line per class.
std::string Summary(const std::vector<Profile::TServedClass>& classes) {
  std::string text;
  for (const Profile::TServedClass& entry : classes) {
    text += entry.cimClass->Name() + " " + Profile::NameOfPath(entry.path) + " [" + entry.baseClass + "] " +
            (entry.served ? "by \"" + entry.servedBy + "\"" : "not served") + " " + std::to_string(entry.instances) +
            "*" + std::to_string(entry.registers) + "\n";
  }
  return text;
}

TEST(CollectorProfileNames, PathsHaveTheirNames) {
  EXPECT_STREQ(Profile::NameOfPath(EPath::kR8), "R8");
  EXPECT_STREQ(Profile::NameOfPath(EPath::kJfr), "JFR");
  EXPECT_STREQ(Profile::NameOfPath(EPath::kCapture), "FFDC");
  EXPECT_STREQ(Profile::NameOfPath(EPath::kNone), "none");
}

TEST(CollectorProfileNames, IdentificationPropertiesAreSkippedOnlyInTheirExactSpelling) {
  for (const EPath path : {EPath::kR8, EPath::kJfr}) {
    for (const char* name : {"MachineType", "DateTimeOfCollection", "StatisticTime", "InstanceID"}) {
      EXPECT_TRUE(Profile::IsSkippedName(path, name)) << name;
    }
    for (const char* name : {"machinetype", "Register", "", "InstanceID ", "StartStatisticTime"}) {
      EXPECT_FALSE(Profile::IsSkippedName(path, name)) << name;
    }
  }
  EXPECT_TRUE(Profile::IsSkippedName(EPath::kR8, "ElementName"));
  EXPECT_FALSE(Profile::IsSkippedName(EPath::kJfr, "ElementName"));
}

TEST_F(ProfileOfSchema, RegistersAreOwnAndTheSuperclasssPropertiesInEnumerationOrder) {
  Add(TClassBuilder("A").Bytes("FromGrandparent").Text("InstanceID"));
  Add(TClassBuilder("B", "A").Bytes("FromSuperclass").Text("ElementName"));
  const TCIMClass& c = Add(TClassBuilder("C", "B").Bytes("Own").Text("MachineType").Bytes("FromGrandparent"));
  EXPECT_EQ(NamesOf(Profile::RegistersOf(c, EPath::kR8)), (std::vector<std::string>{"FromSuperclass", "Own"}));
  EXPECT_EQ(NamesOf(Profile::RegistersOf(c, EPath::kJfr)),
            (std::vector<std::string>{"FromSuperclass", "ElementName", "Own"}));
  EXPECT_TRUE(Profile::RegistersOf(c, EPath::kCapture).empty());
  EXPECT_TRUE(Profile::RegistersOf(c, EPath::kNone).empty());
}

TEST_F(ProfileOfSchema, ARootClasssOwnPropertiesAreItsRegisters) {
  EXPECT_EQ(NamesOf(Profile::RegistersOf(Add(TClassBuilder("A").Bytes("Own")), EPath::kR8)),
            std::vector<std::string>{"Own"});
}

TEST_F(ProfileOfSchema, AnElementMatchesIfItContainsTheMachineType) {
  const TCIMClass& a = Add(For("A", "", {"4411", "6101,6102", "62039"}));
  EXPECT_EQ(Profile::MatchingElement(a, "6102"), "6101,6102");
  EXPECT_EQ(Profile::MatchingElement(a, "610"), "6101,6102");
  EXPECT_EQ(Profile::MatchingElement(a, "6203"), "62039");
  EXPECT_EQ(Profile::MatchingElement(a, ""), "4411");
  EXPECT_EQ(Profile::MatchingElement(a, "6104"), std::nullopt);
  EXPECT_EQ(Profile::MatchingElement(a, "44110"), std::nullopt);
}

TEST_F(ProfileOfSchema, ElementsThatAreNumbersMatchByTheirText) {
  const TCIMClass& a =
      Add(TClassBuilder("A").With("SupportedMachineTypes", TCIMValue(TType::kUint16, 1, {TCIMValue(6203)})));
  EXPECT_EQ(Profile::MatchingElement(a, "6203"), "6203");
}

TEST_F(ProfileOfSchema, WithoutAnArrayOfTypesNothingMatches) {
  EXPECT_EQ(Profile::MatchingElement(Add(TClassBuilder("A")), ""), std::nullopt);
  EXPECT_EQ(Profile::MatchingElement(Add(TClassBuilder("B").With("SupportedMachineTypes", "6203")), "6203"),
            std::nullopt);
  EXPECT_EQ(Profile::MatchingElement(Add(For("C", "", {})), ""), std::nullopt);
}

TEST_F(ProfileOfSchema, TheDelegateIsTheFirstSubclassThatDeclaresTheType) {
  AddBases();
  Add(For("KROSG_X", "KROSG_MEMCTL_StatisticData", {"6101"}));
  Add(For("KROSG_Y", "KROSG_X", {"6203"}));
  Add(For("KROSG_Z", "KROSG_MEMCTL_StatisticData", {"6203"}));
  const auto delegate = [this](const char* base, const char* type) {
    const auto found = Profile::DelegateOf(*schema_, base, type);
    return found ? found->Name() : "none";
  };
  EXPECT_EQ(delegate("KROSG_MEMCTL_StatisticData", "6203"), "KROSG_Y");
  EXPECT_EQ(delegate("KROSG_MEMCTL_StatisticData", "6101"), "KROSG_X");
  EXPECT_EQ(delegate("KROSG_MEMCTL_StatisticData", ""), "KROSG_X");
  EXPECT_EQ(delegate("KROSG_MEMCTL_StatisticData", "4411"), "none");
  EXPECT_EQ(delegate("KROSG_L3Cache_StatisticData", "6203"), "none");
  EXPECT_EQ(delegate("KROSG_Unknown", "6203"), "none");
}

TEST_F(ProfileOfSchema, CollectableClassesComeInDeclarationOrderTheCaptureClassLast) {
  Add(TClassBuilder("KROSG_DCAPFile").Text("FileName"));
  AddBases();
  Add(For("KROSG_VO_MEMCTL_StatisticData", "KROSG_Top", {"4411", "6203"}, 2).Bytes("A").Bytes("B"));
  Add(For("KROSG_Bridge6101", "KROSG_PCIIOBRIDGE_StatisticData", {"6101"}, 3).Bytes("A"));
  Add(For("KROSG_Bridge6203", "KROSG_PCIIOBRIDGE_StatisticData", {"6203"}, 4).Bytes("A"));
  Add(TClassBuilder("KROSG_Other", "KROSG_Top"));
  EXPECT_EQ(Summary(Profile::CollectableClasses(*schema_, "6203")),
            "KROSG_VO_MEMCTL_StatisticData R8 [] by \"6203\" 2*2\n"
            "KROSG_Bridge6101 JFR [KROSG_PCIIOBRIDGE_StatisticData] not served 3*1\n"
            "KROSG_Bridge6203 JFR [KROSG_PCIIOBRIDGE_StatisticData] by \"6203\" 4*1\n"
            "KROSG_DCAPFile FFDC [] by \"\" 0*0\n");
}

TEST_F(ProfileOfSchema, WithoutAMatchOnlyTheCaptureClassIsServed) {
  AddBases();
  Add(For("KROSG_VO_MEMCTL_StatisticData", "KROSG_Top", {"4411"}));
  Add(TClassBuilder("KROSG_T4_MEMCTL_StatisticData", "KROSG_Top"));
  Add(TClassBuilder("KROSG_DCAPFile"));
  EXPECT_EQ(Summary(Profile::CollectableClasses(*schema_, "6203")),
            "KROSG_VO_MEMCTL_StatisticData R8 [] not served 1*0\n"
            "KROSG_T4_MEMCTL_StatisticData R8 [] not served 0*0\n"
            "KROSG_DCAPFile FFDC [] by \"\" 0*0\n");
}

TEST_F(ProfileOfSchema, AnEmptySchemaHasNoCollectableClass) {
  EXPECT_TRUE(Profile::CollectableClasses(*schema_, "6203").empty());
}

TEST_F(ProfileOfSchema, InstanceCountsAreReadAsSixteenBits) {
  AddBases();
  const auto count = [this](const char* name, const TCIMValue& value) {
    Add(TClassBuilder(name, "KROSG_L3Cache_StatisticData").With("MaxInstanceCount", value));
    return Profile::CollectableClasses(*schema_, "6203").back().instances;
  };
  EXPECT_EQ(count("A", TCIMValue(65535)), 65535U);
  EXPECT_EQ(count("B", TCIMValue(65536 + 3)), 3U);
  EXPECT_EQ(count("C", "0x10"), 16U);
  EXPECT_EQ(count("D", "many"), 0U);
  EXPECT_EQ(count("E", TCIMValue()), 0U);
  EXPECT_EQ(count("F", Strings({"2"})), 0U);
}

TEST(CollectorProfileValues, TheEightByteFamilyHasFourTypes) {
  for (const char* type : {"4411", "4414", "4523", "4524"}) EXPECT_TRUE(Profile::IsEightByteFamily(type));
  for (const char* type : {"", "6203", "441", "44110", "4412", " 4411"}) EXPECT_FALSE(Profile::IsEightByteFamily(type));
}

TCIMValue RegisterValue(const std::vector<int>& bytes, TType type = TType::kUint8) {
  return TCIMValue(type, 14, std::vector<TCIMValue>(bytes.begin(), bytes.end()));
}

TEST(CollectorProfileValues, AnR8ValueIsAddressAndEightBytes) {
  const auto split =
      Profile::SplitRegisterValue(EPath::kR8, RegisterValue({0xAB, 0xCD, 0xEF, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0}));
  ASSERT_TRUE(split);
  EXPECT_EQ(split->identification, (std::array<std::uint8_t, 3>{0xAB, 0xCD, 0xEF}));
  EXPECT_EQ(split->value, (TBytes{8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(CollectorProfileValues, TheMarkerTailLeavesFourBytes) {
  const std::vector<int> marked = {1, 2, 3, 12, 7, 6, 5, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF};
  EXPECT_EQ(Profile::SplitRegisterValue(EPath::kR8, RegisterValue(marked))->value, (TBytes{12, 7, 6, 5}));
  for (std::size_t i = 10; i < 14; ++i) {
    std::vector<int> almost = marked;
    almost[i] = 0;
    EXPECT_EQ(Profile::SplitRegisterValue(EPath::kR8, RegisterValue(almost))->value.size(), 8U) << i;
  }
}

TEST(CollectorProfileValues, AJfrValueHasAnEqualsSignInBetween) {
  const std::vector<int> value = {9, 8, 7, 32, 61, 32, 1, 2, 3, 4, 5, 6, 7, 8};
  const auto split = Profile::SplitRegisterValue(EPath::kJfr, RegisterValue(value));
  ASSERT_TRUE(split);
  EXPECT_EQ(split->identification, (std::array<std::uint8_t, 3>{9, 8, 7}));
  EXPECT_EQ(split->value, (TBytes{1, 2, 3, 4, 5, 6, 7, 8}));
  for (std::size_t i = 3; i < 6; ++i) {
    std::vector<int> other = value;
    other[i] = 48;
    EXPECT_FALSE(Profile::SplitRegisterValue(EPath::kJfr, RegisterValue(other))) << i;
  }
}

TEST(CollectorProfileValues, OtherValuesAreNotRegisters) {
  std::vector<int> bytes(14, 0);
  for (const EPath path : {EPath::kR8, EPath::kJfr}) {
    EXPECT_FALSE(Profile::SplitRegisterValue(path, TCIMValue()));
    EXPECT_FALSE(Profile::SplitRegisterValue(path, TCIMValue("text")));
    EXPECT_FALSE(Profile::SplitRegisterValue(path, RegisterValue({1, 2, 3})));
    EXPECT_FALSE(Profile::SplitRegisterValue(path, RegisterValue(std::vector<int>(13, 32))));
    EXPECT_FALSE(Profile::SplitRegisterValue(path, RegisterValue(std::vector<int>(15, 32))));
  }
  EXPECT_FALSE(Profile::SplitRegisterValue(EPath::kR8, RegisterValue(bytes, TType::kUint16)));
  EXPECT_TRUE(Profile::SplitRegisterValue(EPath::kR8, RegisterValue(bytes)));
  for (const EPath path : {EPath::kNone, EPath::kCapture}) {
    EXPECT_FALSE(Profile::SplitRegisterValue(path, RegisterValue(bytes)));
  }
  std::vector<TCIMValue> withNull(bytes.begin(), bytes.end());
  withNull[7] = TCIMValue();
  EXPECT_FALSE(Profile::SplitRegisterValue(EPath::kR8, TCIMValue(TType::kUint8, 14, withNull)));
}

}  // namespace
}  // namespace tests
