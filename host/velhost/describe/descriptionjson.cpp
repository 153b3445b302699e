// The description of a class as JSON, and what both forms say of classes and properties.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/names.h"
#include "host/meaning/field.h"
#include "host/meaning/words.h"
#include "host/profile/collectorprofile.h"
#include "host/velhost/describe/classdescription.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using TJson = nlohmann::ordered_json;

std::string AddressText(std::uint32_t address) { return fmt::format("0x{:06X}", address); }

// A number that any JSON reader keeps exactly, or hex text.
TJson ValueOf(std::uint64_t value, TBits bits) {
  constexpr unsigned kWidestNumber = 32;
  if (bits.high - bits.low < kWidestNumber) return value;
  return fmt::format("0x{:016X}", value);
}

class TDescriptionJson {
 public:
  explicit TDescriptionJson(const TClassDescription& description)
      : description_(description), planned_(description.planned) {}

  TJson Document() const {
    TJson json = {{"kind", "classdescription"}, {"format_version", 1}, {"machine_type", description_.machineType}};
    AddClass(json);
    AddServed(json);
    AddInstances(json);
    json["registers"] = TJson::array();
    json["properties"] = TJson::array();
    for (std::size_t i = 0; i < planned_.cimClass->Properties().size(); ++i) {
      if (description_.property.value_or(i) == i) AddProperty(json, i);
    }
    return json;
  }

 private:
  void AddClass(TJson& json) const {
    const TCIMClass& cimClass = *planned_.cimClass;
    json["class"] = cimClass.Name();
    if (!description_.baseClass.empty()) json["base_class"] = description_.baseClass;
    if (cimClass.SuperClass()) json["superclass"] = cimClass.SuperClass()->Name();
    json["description"] = DescriptionOf(cimClass.Qualifiers());
    if (planned_.path != EPath::kNone) json["path"] = FoldName(CollectorProfile::NameOfPath(planned_.path));
    json["machine_types"] = MachineTypesOf(cimClass);
    if (planned_.path == EPath::kNone) json["subclasses"] = description_.subclasses;
  }
  // Null if it depends on a machine type that is not known.
  void AddServed(TJson& json) const {
    const bool isOfMachine = planned_.path == EPath::kR8 || planned_.path == EPath::kJfr;
    const bool isKnown = !isOfMachine || !description_.machineType.empty();
    json["served"] = isKnown ? TJson(planned_.whyNotServed.empty()) : TJson();
    if (!isKnown) return;
    if (!description_.servedBy.empty()) json["served_by"] = description_.servedBy;
    if (!planned_.whyNotServed.empty()) json["why_not"] = planned_.whyNotServed;
  }
  void AddInstances(TJson& json) const {
    if (planned_.path == EPath::kCapture) json["areas"] = kCaptureAreas;
    if (planned_.path != EPath::kR8 && planned_.path != EPath::kJfr) return;
    json["instances"] = planned_.instances;
    if (planned_.path == EPath::kR8) json["first_chip"] = planned_.isBridge ? 1 : 0;
    json["usable"] = planned_.turn == ETurn::kPlanned;
  }
  void AddProperty(TJson& json, std::size_t property) const {
    const TPropertyDecl& declaration = *planned_.cimClass->Properties()[property];
    if (const auto number = RegisterOf(planned_, property)) {
      json["registers"].push_back(Register(*number));
    } else {
      json["properties"].push_back({{"name", declaration.Definition().name},
                                    {"type", TypeTextOf(declaration.Definition())},
                                    {"description", DescriptionOf(declaration.Qualifiers())}});
    }
  }
  TJson Register(std::size_t number) const {
    const TPlannedRegister& reg = planned_.registers.at(number);
    const TRegisterMeaning& meaning = planned_.meaning->registers.at(number);
    TJson json = {{"name", NameOf(number)}};
    AddWhere(json, reg);
    json["width"] = meaning.width;
    json["role"] = RoleName(meaning.role);
    json["numbering"] = meaning.isMsb0 ? "msb0" : "lsb0";
    if (!meaning.unit.empty()) json["unit"] = meaning.unit;
    if (meaning.role == ERole::kErrors) AddReferences(json, meaning);
    json["description"] = DescriptionOf(planned_.cimClass->Properties().at(reg.property)->Qualifiers());
    json["fields"] = Fields(meaning);
    return json;
  }
  void AddWhere(TJson& json, const TPlannedRegister& reg) const {
    if (planned_.path == EPath::kJfr) {
      json["index"] = reg.index;
    } else if (reg.addresses.size() == 1) {
      json["address"] = AddressText(reg.addresses.front());
    } else {
      TJson addresses = TJson::array();
      for (const std::uint32_t address : reg.addresses) addresses.push_back(AddressText(address));
      json["addresses"] = std::move(addresses);
    }
  }
  void AddReferences(TJson& json, const TRegisterMeaning& meaning) const {
    if (meaning.maskedBy) json["masked_by"] = NameOf(*meaning.maskedBy);
    if (meaning.enabledBy) json["enabled_by"] = NameOf(*meaning.enabledBy);
    if (meaning.fatalBy) {
      json["fatal_by"] = NameOf(*meaning.fatalBy);
    } else {
      json["severity"] = SeverityName(meaning.severity);
    }
    if (meaning.firstError) {
      const TRegisterMeaning& pointer = planned_.meaning->registers.at(meaning.firstError->registerIndex);
      json["first_error"] = {{"register", NameOf(meaning.firstError->registerIndex)},
                             {"bits", BitsText(meaning.firstError->bits, pointer.width, pointer.isMsb0)}};
    }
    TJson evidence = TJson::array();
    for (const std::size_t other : meaning.evidence) evidence.push_back(NameOf(other));
    json["evidence"] = std::move(evidence);
  }
  static TJson Fields(const TRegisterMeaning& meaning) {
    TJson fields = TJson::array();
    for (const TFieldMeaning& field : meaning.fields) {
      TJson values = TJson::array();
      for (const TValueText& text : field.texts) {
        values.push_back({{"first", ValueOf(text.first, field.bits)},
                          {"last", ValueOf(text.last, field.bits)},
                          {"text", text.text}});
      }
      fields.push_back({{"bits", BitsText(field.bits, meaning.width, meaning.isMsb0)},
                        {"name", field.name},
                        {"hex", field.isHex},
                        {"values", std::move(values)}});
    }
    return fields;
  }
  const std::string& NameOf(std::size_t registerNumber) const {
    return planned_.cimClass->Properties().at(planned_.registers.at(registerNumber).property)->Definition().name;
  }

  const TClassDescription& description_;
  const TPlannedClass& planned_;
};

}  // namespace

std::string DescriptionAsJson(const TClassDescription& description) {
  // A schema's texts need not be UTF-8.
  const TJson document = TDescriptionJson(description).Document();
  return SafeJson(document.dump(-1, ' ', false, TJson::error_handler_t::replace)) + "\n";
}

std::string DescriptionOf(const TQualifierSet& qualifiers) {
  const auto qualifier = qualifiers.Find("Description");
  if (!qualifier) return {};
  const TCIMValue& value = qualifier->GetValue();
  const bool isText = !value.IsNull() && !value.IsArray() && value.GetType() == TCIMValue::TCIMType::kString;
  return isText ? value.ToString(10) : std::string();
}

std::string TypeTextOf(const TPropertyDefinition& property) {
  const std::string type =
      property.referenceClass.empty() ? property.type.ToString() : property.referenceClass + " ref";
  return property.isArray ? type + "[]" : type;
}

std::vector<std::string> MachineTypesOf(const TCIMClass& cimClass) {
  std::vector<std::string> types;
  const auto qualifier = cimClass.Qualifiers().Find(std::string(CollectorProfile::kSupportedMachineTypes));
  if (!qualifier || !qualifier->GetValue().IsArray()) return types;
  const std::vector<TCIMValue>& elements = qualifier->GetValue();
  for (const TCIMValue& element : elements) types.push_back(element.ToString(10));
  return types;
}

std::optional<std::size_t> RegisterOf(const TPlannedClass& planned, std::size_t property) {
  const auto found = std::find_if(planned.registers.begin(), planned.registers.end(),
                                  [property](const TPlannedRegister& reg) { return reg.property == property; });
  if (found == planned.registers.end()) return std::nullopt;
  return static_cast<std::size_t>(found - planned.registers.begin());
}

}  // namespace velhost
