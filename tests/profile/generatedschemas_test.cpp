// Which classes are served and how: compares, for many generated schemas, the profile's prediction with what
// the collector requests from the service processors and commits.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "host/base/names.h"
#include "host/profile/collectorprofile.h"
#include "host/profile/plan.h"
#include "host/schema/collectorneeds.h"
#include "tests/profile/collectorfixture.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

namespace Profile = CollectorProfile;
using Profile::EPath;

const std::vector<std::string> kMachineTypes = {"6101", "6102", "6203", "4411", "4523", "610", ""};

// Schemas that have every qualifier the collector requires, but also oddities: classes spelled in another
// case, base classes derived from each other, R8 classes and the capture class derived from a base class.
class TSchemaGenerator {
 public:
  explicit TSchemaGenerator(unsigned int seed) : random_(seed) {}

  void Fill(TNamespace& schema) {
    schema_ = &schema;
    AddRoot(schema);
    AddClass("KROSG_Registers", "CIM_StatisticalData");
    for (const char* base :
         {"KROSG_MEMCTL_StatisticData", "KROSG_PCIIOBRIDGE_StatisticData", "KROSG_L3Cache_StatisticData"}) {
      const bool nested = Chance(5) && !bases_.empty();
      bases_.push_back(AddClass(Respelled(base), nested ? bases_.front() : "KROSG_Registers"));
    }
    for (int i = 0; i < 6; ++i) below_.push_back(AddClass("KROSG_Sub" + std::to_string(i), AnyOf(Chance(3), "")));
    for (const std::string_view name : Profile::kR8Classes) {
      AddClass(Respelled(std::string(name)), AnyOf(Chance(6), "KROSG_Registers"));
    }
    AddClass(Respelled("KROSG_DCAPFile"), AnyOf(Chance(6), "KROSG_Registers"));
    AddClass("KROSG_Unrelated", "KROSG_Registers");
  }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  bool Chance(std::size_t of) { return Below(of) == 0; }
  std::string Respelled(std::string name) {
    if (Chance(8)) name[0] = 'k';
    return name;
  }
  // A class below a base class, if `below` and there is one; else `otherwise` or, if that is empty, a base
  // class.
  std::string AnyOf(bool below, const std::string& otherwise) {
    if (below && !below_.empty()) return below_[Below(below_.size())];
    return otherwise.empty() ? bases_[Below(bases_.size())] : otherwise;
  }
  std::string AddClass(const std::string& name, const std::string& super) {
    TClassBuilder builder(name, super);
    std::vector<std::string> types;
    for (std::size_t count = Below(3); count > 0; --count) {
      types.push_back(kMachineTypes[Below(kMachineTypes.size() - 2)] + (Chance(3) ? ",6203" : ""));
    }
    builder.Machines(types);
    builder.With("MaxInstanceCount", TCIMValue(static_cast<int>(Below(3))));
    std::set<std::string> names;
    for (std::size_t count = Below(4); count > 0; --count) {
      names.insert(std::string("Register") + static_cast<char>('A' + Below(6)));
    }
    for (const std::string& property : names) AddRegister(builder, property);
    schema_->AddClass(builder);
    return name;
  }
  void AddRegister(TClassBuilder& builder, const std::string& name) {
    ++address_;
    builder.Bytes(name, {{"Offset", TCIMValue(address_)}, {"MaxLen", TCIMValue(8)}, {"Index", TCIMValue(address_)}});
  }

  std::mt19937 random_;
  TNamespace* schema_ = nullptr;
  std::vector<std::string> bases_;
  std::vector<std::string> below_;
  int address_ = 0;
};

class GeneratedSchemas : public TLoadedCollectorTest {
 protected:
  static std::vector<TRegisterRead> PredictedReads(const Profile::TServedClass& entry) {
    std::vector<TRegisterRead> reads;
    const bool bridge = entry.cimClass->Name().find("PCIIOBRIDGE") != std::string::npos;
    for (unsigned int instance = 0; instance < entry.instances; ++instance) {
      for (const auto& property : Profile::RegistersOf(*entry.cimClass, EPath::kR8)) {
        const unsigned int address = property->GetQualifier("Offset", {})->GetValue();
        reads.push_back({bridge ? static_cast<int>(instance) + 1 : 0, address});
      }
    }
    return reads;
  }

  static std::set<std::string> PredictedProperties(const Profile::TServedClass& entry) {
    std::set<std::string> names = {"InstanceID", "ElementName", "MachineType", "StatisticTime"};
    for (const auto& property : Profile::RegistersOf(*entry.cimClass, entry.path)) {
      names.insert(property->Definition().name);
    }
    return names;
  }

  void ExpectInstances(const Profile::TServedClass& entry, std::size_t count) {
    ASSERT_EQ(committed_.size(), count);
    for (const auto& instance : committed_) {
      std::set<std::string> names;
      for (std::size_t i = 0; i < entry.cimClass->Properties().size(); ++i) {
        if (instance->IsSet(i)) names.insert(entry.cimClass->Properties()[i]->Definition().name);
      }
      EXPECT_EQ(names, PredictedProperties(entry));
    }
  }

  void ExpectServed(const Profile::TServedClass& entry, const std::string& machineType) {
    EXPECT_EQ(processor_.registerReads,
              entry.path == EPath::kR8 ? PredictedReads(entry) : std::vector<TRegisterRead>());
    EXPECT_EQ(processor_.blockReads, entry.path == EPath::kJfr ? (std::vector<int>{0, 1}) : std::vector<int>());
    EXPECT_EQ(processor_.openedAreas, entry.path == EPath::kCapture
                                          ? (std::vector<std::string>{"cpu_err", "ioh_err", "zyn_err"})
                                          : std::vector<std::string>());
    if (entry.path == EPath::kCapture) return;
    // An R8 instance without registers is not created; a JFR instance is, once per service processor.
    const std::size_t count = entry.path == EPath::kJfr ? entry.instances * TRememberingProcessor::kServiceProcessors
                              : entry.registers > 0     ? entry.instances
                                                        : 0;
    ExpectInstances(entry, count);
    EXPECT_EQ(Profile::MatchingElement(*entry.cimClass, machineType), entry.servedBy);
    if (entry.path == EPath::kJfr && !committed_.empty()) {
      EXPECT_EQ(committed_[0]->Find("InstanceID")->ToString(10), "KROSG:" + entry.baseClass + ":" + machineType + ":0");
    }
  }

  void ExpectNothing() {
    EXPECT_TRUE(processor_.registerReads.empty());
    EXPECT_TRUE(processor_.blockReads.empty());
    EXPECT_TRUE(processor_.openedAreas.empty());
    EXPECT_TRUE(committed_.empty());
  }

  // The register reads and block reads that the plan has for the class, compared with those that were made. Every
  // read was answered.
  void ExpectPlanned(const TNamespace& schema, const boost::shared_ptr<TCIMClass>& requested,
                     const std::string& machineType) {
    const TPlanServer server = {1, true, true, true, TRememberingProcessor::kServiceProcessors};
    // The generated capture classes have no properties: they can be read only because no storage area exists.
    const auto isCollectable = [&schema](const TCIMClass& cimClass) {
      return EqualNames(cimClass.Name(), Profile::kCaptureClass) || MeetsCollectorNeeds(schema, cimClass);
    };
    const TPlan plan = MakePlan({schema, machineType, server, {{{requested, true}}}, true, isCollectable});
    const TPlannedClass& planned = plan.classes.at(0);
    EXPECT_NE(planned.turn, ETurn::kUnknown);
    std::vector<TRegisterRead> reads;
    for (unsigned int instance = 0; planned.path == EPath::kR8 && instance < planned.instances; ++instance) {
      for (const TPlannedRegister& one : planned.registers) {
        const int chip = planned.isBridge ? static_cast<int>(instance) + 1 : 0;
        for (const std::uint32_t address : one.addresses) reads.push_back({chip, address});
      }
    }
    EXPECT_EQ(processor_.registerReads, reads);
    EXPECT_EQ(plan.RegisterReads(), reads.size());
    EXPECT_EQ(plan.DotCommands(), processor_.blockReads.size());
    EXPECT_EQ(planned.whyNotServed.empty(), planned.turn == ETurn::kPlanned);
  }

  // Requests every class of the schema, even those that the profile does not list. Returns how many were
  // served on each path.
  void ExpectAgreement(const boost::shared_ptr<TNamespace>& schema, const std::string& machineType) {
    const auto predicted = Profile::CollectableClasses(*schema, machineType);
    for (const auto& requested : schema->Classes()) {
      SCOPED_TRACE(requested->Name() + " on \"" + machineType + "\"");
      const auto entry = std::find_if(predicted.begin(), predicted.end(),
                                      [&](const auto& candidate) { return candidate.cimClass == requested; });
      Collect(schema, requested, machineType);
      ExpectPlanned(*schema, requested, machineType);
      if (entry == predicted.end() || !entry->served) {
        ExpectNothing();
        continue;
      }
      ExpectServed(*entry, machineType);
      ++served_[static_cast<std::size_t>(entry->path)];
    }
  }

  std::array<int, 4> served_{};
};

TEST_F(GeneratedSchemas, TheProfilePredictsWhatTheCollectorServes) {
  for (unsigned int seed = 0; seed < 150; ++seed) {
    SCOPED_TRACE(seed);
    const auto schema = NewSchema();
    TSchemaGenerator(seed).Fill(*schema);
    for (const std::string& machineType : kMachineTypes) ExpectAgreement(schema, machineType);
    if (HasFailure()) return;
  }
  EXPECT_GT(served_[static_cast<std::size_t>(EPath::kR8)], 100);
  EXPECT_GT(served_[static_cast<std::size_t>(EPath::kJfr)], 100);
  EXPECT_GT(served_[static_cast<std::size_t>(EPath::kCapture)], 100);
}

}  // namespace
}  // namespace tests
