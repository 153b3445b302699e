#include "tests/result/randomcase.h"

#include "host/profile/collectorprofile.h"
#include "tests/support/classbuilder.h"

namespace tests {

namespace {

class TCaseMaker {
 public:
  explicit TCaseMaker(TDice& dice) : dice_(dice) {}

  TRandomCase Make() {
    case_.schema = TNamespace::Create();
    case_.machineType = dice_.Percent(80) ? "6203" : "4411";
    case_.schema->SetMachineType(case_.machineType);
    AddRoots();
    for (const std::string_view base : CollectorProfile::kJfrBaseClasses) AddFamily(std::string(base));
    for (const std::string_view name : CollectorProfile::kR8Classes) AddAddressed(std::string(name));
    AddFileClass();
    Discover();
    AddRequests();
    return std::move(case_);
  }

 private:
  void Add(const TClassBuilder& builder) {
    case_.schema->AddClass(builder);
    names_.push_back(builder.name);
  }

  // Instances of a class below "Bare" cannot be filled: they lack identification properties.
  void AddRoots() {
    case_.schema->AddClass(TClassBuilder("Top").Identification());
    case_.schema->AddClass(TClassBuilder("BareTop").Text("InstanceID"));
    case_.schema->AddClass(TClassBuilder("Bare", "BareTop"));
    case_.schema->AddClass(TClassBuilder("Chipset", "Top"));
  }
  // For a class whose registers have addresses; its superclass may have some too.
  std::string SuperOf(const std::string& name) {
    if (dice_.Percent(7)) return "Bare";
    if (dice_.Percent(50)) return "Chipset";
    TClassBuilder super(name + "Super", "Top");
    AddRegisters(super, 3);
    Add(super);
    return super.name;
  }

  void AddFamily(const std::string& base) {
    TClassBuilder builder(base, dice_.Percent(7) ? "Bare" : "Chipset");
    AddRecords(builder, 3);
    Add(builder);
    for (unsigned i = dice_.Below(3); i > 0; --i) {
      TClassBuilder below(base + std::to_string(i), base);
      Qualify(below, 3);
      AddRecords(below, 4);
      Add(below);
    }
  }

  void AddAddressed(const std::string& name) {
    if (dice_.Percent(20)) return;
    TClassBuilder builder(name, SuperOf(name));
    Qualify(builder, 4);
    AddRegisters(builder, 5);
    Add(builder);
  }

  void AddFileClass() {
    TClassBuilder builder("KROSG_DCAPFile");
    builder.CaptureProperties();
    if (dice_.Percent(10)) builder.properties.pop_back();
    Add(builder);
  }

  void Qualify(TClassBuilder& builder, unsigned instances) {
    builder.Machines(dice_.Percent(80) ? std::vector<std::string>{"4411", "6203"} : std::vector<std::string>{"6101"});
    builder.MaxInstances(static_cast<std::uint16_t>(dice_.Below(instances)));
  }

  void AddRecords(TClassBuilder& builder, unsigned limit) {
    for (unsigned i = dice_.Below(limit); i > 0; --i) {
      builder.Record("Register" + std::to_string(++registers_), static_cast<std::uint16_t>(dice_.Below(254)));
      Spoil(builder);
    }
  }

  void AddRegisters(TClassBuilder& builder, unsigned limit) {
    for (unsigned i = dice_.Below(limit); i > 0; --i) {
      std::vector<std::uint32_t> addresses(dice_.Percent(15) ? dice_.Below(4) : 1);
      for (std::uint32_t& address : addresses) address = ++addresses_ * 0x10101U;
      builder.Register("Register" + std::to_string(++registers_), addresses, dice_.Percent(40) ? 4 : 8);
      Spoil(builder);
    }
  }

  // Now and then the last register has another type, or lacks a qualifier.
  void Spoil(TClassBuilder& builder) {
    TPropertyDefinition& last = builder.properties.back();
    if (dice_.Percent(2)) last.type = TType::kUint16;
    if (dice_.Percent(2)) last.qualifiers.pop_back();
  }

  void Discover() {
    TDiscovery& found = case_.discovery;
    found.bmcNodes = static_cast<int>(dice_.Below(3));
    found.ipmiDriver = dice_.Percent(90);
    found.dotCommands = dice_.Percent(85);
    found.communicates = dice_.Percent(90);
    found.serviceProcessors = static_cast<int>(dice_.Below(4));
  }

  void AddRequests() {
    const bool isSingle = dice_.Percent(40);
    for (unsigned i = dice_.Below(9); i > 0; --i) {
      const TAskedClass asked = {case_.schema->FindClass(names_.at(dice_.Below(static_cast<unsigned>(names_.size())))),
                                 true};
      if (!isSingle || case_.requests.empty()) case_.requests.emplace_back();
      case_.requests.back().push_back(asked);
    }
  }

  TDice& dice_;
  TRandomCase case_;
  std::vector<std::string> names_;
  unsigned registers_ = 0;
  std::uint32_t addresses_ = 0;
};

}  // namespace

TRandomCase MakeRandomCase(TDice& dice) { return TCaseMaker(dice).Make(); }

}  // namespace tests
