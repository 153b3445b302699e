// Which properties are read as registers: compares the profile with the collector.
//
// A register property without qualifiers ends in an assertion if the collector reads it, and has no effect if
// it is skipped. So one such property shows which of the two happened.
#include <gtest/gtest.h>

#include "host/model/failures.h"
#include "host/profile/collectorprofile.h"
#include "nkrovel20/tvelexception.h"
#include "tests/profile/collectorfixture.h"
#include "tests/support/classbuilder.h"
#include "tests/support/expectfailure.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

using CollectorProfile::EPath;
using CollectorProfile::IsRegister;

enum class EPlace { kOwn, kSuperclass, kGrandparent, kOverridesSuperclass, kOverridesGrandparent };
constexpr EPlace kPlaces[] = {EPlace::kOwn, EPlace::kSuperclass, EPlace::kGrandparent, EPlace::kOverridesSuperclass,
                              EPlace::kOverridesGrandparent};

const std::vector<std::string> kNames = {"MachineType",   "DateTimeOfCollection",
                                         "StatisticTime", "InstanceID",
                                         "ElementName",   "machinetype",
                                         "MACHINETYPE",   "dateTimeOfCollection",
                                         "statistictime", "instanceId",
                                         "elementname",   "Register",
                                         "Index",         "Offset",
                                         "RegisterData",  "StartStatisticTime",
                                         "ChipId",        "InstanceID2"};

class SkippedProperties : public TLoadedCollectorTest {
 protected:
  // Three levels, of which only the lowest serves the machine type, with the property at `place`.
  boost::shared_ptr<TNamespace> Schema(EPath path, EPlace place, const std::string& property) {
    const bool jfr = path == EPath::kJfr;
    auto schema = NewSchema();
    for (const std::string_view base : CollectorProfile::kJfrBaseClasses)
      schema->AddClass(TClassBuilder(std::string(base)));
    schema->AddClass(TClassBuilder("Top"));
    const auto add = [&](const std::string& name, const std::string& super, const char* machineType, bool declares) {
      TClassBuilder builder(name, super);
      builder.Machines({machineType}).MaxInstances(1);
      if (declares) builder.Bytes(property);
      schema->AddClass(builder);
    };
    add("Grandparent", jfr ? "KROSG_MEMCTL_StatisticData" : "Top", "none",
        place == EPlace::kGrandparent || place == EPlace::kOverridesGrandparent);
    add("Superclass", "Grandparent", "none", place == EPlace::kSuperclass || place == EPlace::kOverridesSuperclass);
    add(jfr ? "Lowest" : "KROSG_VO_MEMCTL_StatisticData", "Superclass", "6203",
        place != EPlace::kSuperclass && place != EPlace::kGrandparent);
    return schema;
  }

  // Whether the collector tries to read a register of the lowest class.
  bool Reads(const boost::shared_ptr<TNamespace>& schema) {
    try {
      Collect(schema, schema->Classes().back(), "6203");
    } catch (const TAssertionFailure& failure) {
      EXPECT_EQ(failure.GetPointee(), "ICIMQualifier");
      return true;
    } catch (const TVELException&) {
      // The identification properties that the collector adds are undeclared here, or declared as bytes.
    }
    return false;
  }

  void ExpectAgreement(EPath path) {
    for (const std::string& name : kNames) {
      for (const EPlace place : kPlaces) {
        const auto schema = Schema(path, place, name);
        const TCIMClass& lowest = *schema->Classes().back();
        EXPECT_EQ(IsRegister(lowest, *lowest.Properties().at(0), path), Reads(schema))
            << name << " in place " << static_cast<int>(place);
      }
    }
  }
};

TEST_F(SkippedProperties, OnTheR8PathTheProfileAgreesWithTheCollector) { ExpectAgreement(EPath::kR8); }
TEST_F(SkippedProperties, OnTheJfrPathTheProfileAgreesWithTheCollector) { ExpectAgreement(EPath::kJfr); }

// Hand-written examples of this agreement.
TEST_F(SkippedProperties, ElementNameIsReadOnlyOnTheJfrPath) {
  EXPECT_TRUE(Reads(Schema(EPath::kJfr, EPlace::kOwn, "ElementName")));
  EXPECT_FALSE(Reads(Schema(EPath::kR8, EPlace::kOwn, "ElementName")));
  EXPECT_FALSE(Reads(Schema(EPath::kJfr, EPlace::kOwn, "InstanceID")));
  EXPECT_TRUE(Reads(Schema(EPath::kJfr, EPlace::kOwn, "instanceId")));
}

TEST_F(SkippedProperties, OneLevelIsReadAndAnOverrideKeepsItsOrigin) {
  for (const EPath path : {EPath::kR8, EPath::kJfr}) {
    EXPECT_TRUE(Reads(Schema(path, EPlace::kOwn, "Register")));
    EXPECT_TRUE(Reads(Schema(path, EPlace::kSuperclass, "Register")));
    EXPECT_TRUE(Reads(Schema(path, EPlace::kOverridesSuperclass, "Register")));
    EXPECT_FALSE(Reads(Schema(path, EPlace::kGrandparent, "Register")));
    EXPECT_FALSE(Reads(Schema(path, EPlace::kOverridesGrandparent, "Register")));
  }
}

// The collector compares a property's origin with the superclass's name first of all, so it cannot collect a
// class without a superclass.
TEST_F(SkippedProperties, AClassWithoutASuperclassEndsInAnAssertion) {
  const auto schema = NewSchema();
  for (const std::string_view base : CollectorProfile::kJfrBaseClasses)
    schema->AddClass(TClassBuilder(std::string(base)));
  const auto root = schema->AddClass(
      TClassBuilder("KROSG_VO_MEMCTL_StatisticData").Machines({"6203"}).MaxInstances(1).Bytes("Register"));
  EXPECT_EQ(PointeeOfAssertion([&] { Collect(schema, root, "6203"); }), "ICIMClass");
}

}  // namespace
}  // namespace tests
