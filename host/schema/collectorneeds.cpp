#include "host/schema/collectorneeds.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "host/base/text.h"
#include "host/profile/collectionsize.h"
#include "host/profile/collectorprofile.h"
#include "host/schema/classwarnings.h"
#include "host/schema/machinetypewarnings.h"
#include "host/schema/meaningfindings.h"
#include "host/schema/needfindings.h"
#include "wire/registerblock.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;
using TType = TCIMValue::TCIMType;

const TPropertyMap kNoContext;

std::string TypeName(TType type, bool isArray) {
  const std::string name = type.GetCode() == TType::kReference ? "reference" : type.ToString();
  return isArray ? "array of " + name : name;
}

class TNeeds {
 public:
  TNeeds(const TNamespace& cimNamespace, const TSchemaSources* sources)
      : namespace_(cimNamespace), paths_(cimNamespace), findings_(sources) {}

  std::vector<TTextDiagnostic> Check(const std::string& schemaName);
  bool IsMetBy(const TCIMClass& cimClass);

 private:
  using TClass = boost::shared_ptr<TCIMClass>;

  void CheckPresence(const TSourceLocation& nowhere);
  void CheckClass(const TCIMClass& cimClass);
  void CheckPath(const TCIMClass& cimClass, EPath path, const std::string& role);
  void CheckMachineTypes(const TCIMClass& cimClass, const std::string& role);
  std::optional<std::uint64_t> InstanceCount(const TCIMClass& cimClass, const std::string& role);
  void CheckRegister(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path,
                     std::optional<std::uint64_t> instances);
  bool CheckNumber(const TCIMClass& cimClass, const TPropertyDecl& property, std::string_view qualifier,
                   bool mayBeArray);
  void CheckRecord(const TCIMClass& cimClass, const TPropertyDecl& property, std::uint64_t instances);
  void CheckSize(const TCIMClass& cimClass, EPath path);
  void CheckOrigin(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path);
  void CheckCaptureClass(const TCIMClass& cimClass);

  const TNamespace& namespace_;
  const TClassPaths paths_;
  TNeedFindings findings_;
};

std::vector<TTextDiagnostic> TNeeds::Check(const std::string& schemaName) {
  const TSourceLocation nowhere{schemaName, 0, 0};
  CheckPresence(nowhere);
  const std::string tooManyMachineTypes = CollectorProfile::MachineTypesProblemOf(namespace_);
  if (!tooManyMachineTypes.empty()) findings_.Error(nowhere, tooManyMachineTypes);
  TClassWarnings warnings(namespace_, paths_, findings_);
  TMeaningCheck meaning(paths_, findings_);
  // Comparing more machine types than a collection accepts could take very long.
  std::optional<TMachineTypeWarnings> machineTypes;
  if (tooManyMachineTypes.empty()) machineTypes.emplace(namespace_, paths_, findings_);
  for (const TClass& cimClass : namespace_.Classes()) {
    findings_.Begin(*cimClass);
    CheckClass(*cimClass);
    warnings.Warn(*cimClass);
    meaning.Check(*cimClass);
    if (machineTypes) machineTypes->Warn(*cimClass);
  }
  if (machineTypes) machineTypes->Finish(nowhere);
  meaning.Finish(nowhere);
  return findings_.Finish(schemaName);
}

bool TNeeds::IsMetBy(const TCIMClass& cimClass) {
  CheckClass(cimClass);
  return !findings_.HasError();
}

void TNeeds::CheckPresence(const TSourceLocation& nowhere) {
  for (const std::string_view base : CollectorProfile::kJfrBaseClasses) {
    if (namespace_.FindClass(base)) continue;
    findings_.Error(nowhere, "the class " + SingleQuoted(base) + " is not declared; every request starts from it");
  }
  if (namespace_.FindClass(CollectorProfile::kCaptureClass)) return;
  findings_.Error(nowhere, "the class " + SingleQuoted(CollectorProfile::kCaptureClass) +
                               ", which holds the capture files, is not declared");
}

void TNeeds::CheckClass(const TCIMClass& cimClass) {
  if (TClassPaths::IsR8(cimClass)) CheckPath(cimClass, EPath::kR8, "a class whose registers are read over IPMI");
  for (const TClass& base : paths_.BasesOf(cimClass)) {
    CheckPath(cimClass, EPath::kJfr, "a subclass of " + SingleQuoted(base->Name()));
  }
  if (EqualNames(cimClass.Name(), CollectorProfile::kCaptureClass)) CheckCaptureClass(cimClass);
}

void TNeeds::CheckPath(const TCIMClass& cimClass, EPath path, const std::string& role) {
  if (!cimClass.SuperClass()) {
    findings_.Error(cimClass.Location(), Named(cimClass) + ", " + role + ", has no superclass");
  }
  CheckMachineTypes(cimClass, role);
  const std::optional<std::uint64_t> instances = InstanceCount(cimClass, role);
  for (const auto& property : cimClass.Properties()) {
    if (CollectorProfile::IsRegister(cimClass, *property, path)) {
      CheckRegister(cimClass, *property, path, instances);
    } else {
      CheckOrigin(cimClass, *property, path);
    }
  }
  CheckSize(cimClass, path);
}

void TNeeds::CheckSize(const TCIMClass& cimClass, EPath path) {
  const std::string problem = CollectorProfile::ProblemOf(CollectorProfile::SizeOf(cimClass, path));
  const auto count = cimClass.Qualifiers().Find(std::string(CollectorProfile::kMaxInstanceCount));
  if (problem.empty() || !count) return;
  findings_.Error(count->Location(), Named(cimClass) + " with a " + std::string(CollectorProfile::kMaxInstanceCount) +
                                         " of " + std::to_string(CollectorProfile::InstanceCountOf(cimClass)) + " " +
                                         problem);
}

void TNeeds::CheckMachineTypes(const TCIMClass& cimClass, const std::string& role) {
  const auto qualifier = cimClass.Qualifiers().Find(std::string(CollectorProfile::kSupportedMachineTypes));
  const std::string name = SingleQuoted(CollectorProfile::kSupportedMachineTypes);
  if (!qualifier) {
    findings_.Error(cimClass.Location(), Named(cimClass) + ", " + role + ", has no qualifier " + name);
    return;
  }
  const TCIMValue& value = qualifier->GetValue();
  const std::string subject = "the qualifier " + name + " of " + Named(cimClass);
  if (!value.IsArray() || value.GetType() != TType::kString) {
    findings_.Error(cimClass.Location(), subject + " has the type " + TypeName(value.GetType(), value.IsArray()) +
                                             ", expected array of string");
  } else if (value.IsNull()) {
    findings_.Error(cimClass.Location(), subject + " has no value");
  }
}

// The collector reads the value as 16 bits.
std::optional<std::uint64_t> TNeeds::InstanceCount(const TCIMClass& cimClass, const std::string& role) {
  const auto qualifier = cimClass.Qualifiers().Find(std::string(CollectorProfile::kMaxInstanceCount));
  const std::string name = SingleQuoted(CollectorProfile::kMaxInstanceCount);
  if (!qualifier) {
    findings_.Error(cimClass.Location(), Named(cimClass) + ", " + role + ", has no qualifier " + name);
    return std::nullopt;
  }
  const TCIMValue& value = qualifier->GetValue();
  const std::string subject = "the qualifier " + name + " of " + Named(cimClass);
  if (value.IsArray() || !IsInteger(value)) {
    findings_.Error(cimClass.Location(),
                    subject + " has the type " + TypeName(value.GetType(), value.IsArray()) + ", expected an integer");
  } else if (value.IsNull()) {
    findings_.Error(cimClass.Location(), subject + " has no value");
  } else if (value.ToInteger() > 0xFFFF) {
    findings_.Error(cimClass.Location(), subject + " is " + value.ToString(10) + ", expected 0 to 65535");
  } else {
    return value.ToInteger();
  }
  return std::nullopt;
}

bool TNeeds::CheckNumber(const TCIMClass& cimClass, const TPropertyDecl& property, std::string_view qualifierName,
                         bool mayBeArray) {
  const auto qualifier = property.Qualifiers().Find(std::string(qualifierName));
  const TPropertyDefinition& definition = property.Definition();
  const std::string subject = Named(cimClass, property);
  if (!qualifier) {
    findings_.Error(definition.location, subject + " has no qualifier " + SingleQuoted(qualifierName));
    return false;
  }
  const TCIMValue& value = qualifier->GetValue();
  const bool fits = IsInteger(value) && (mayBeArray || !value.IsArray());
  if (!fits) {
    findings_.Error(definition.location, subject + " has a qualifier " + SingleQuoted(qualifierName) + " of type " +
                                             TypeName(value.GetType(), value.IsArray()) + ", expected an integer");
  } else if (value.IsNull()) {
    findings_.Error(definition.location,
                    subject + " has a qualifier " + SingleQuoted(qualifierName) + " without a value");
  }
  return fits && !value.IsNull();
}

void TNeeds::CheckRegister(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path,
                           std::optional<std::uint64_t> instances) {
  const TPropertyDefinition& definition = property.Definition();
  if (path == EPath::kR8) {
    CheckNumber(cimClass, property, CollectorProfile::kOffset, true);
    const std::string problem = CollectorProfile::AddressProblemOf(property);
    if (!problem.empty()) {
      findings_.Error(definition.location, Named(cimClass, property) + " " + problem);
    }
    CheckNumber(cimClass, property, CollectorProfile::kMaxLen, false);
  } else if (CheckNumber(cimClass, property, CollectorProfile::kIndex, false) && instances) {
    CheckRecord(cimClass, property, *instances);
  }
  if (definition.type != TType::kUint8 || !definition.isArray) {
    findings_.Warning(definition.location, Named(cimClass, property) + " has the type " +
                                               TypeName(definition.type, definition.isArray) +
                                               ", expected array of uint8");
  }
}

// The last byte of the last record must lie inside the register block. The collector reads the number as 16 bits.
void TNeeds::CheckRecord(const TCIMClass& cimClass, const TPropertyDecl& property, std::uint64_t instances) {
  using namespace CollectorProfile;
  namespace Block = wire::RegisterBlock;
  if (instances == 0) return;
  const std::string name(kIndex);
  const TPropertyDefinition& definition = property.Definition();
  const std::uint64_t index = property.Qualifiers().Find(name)->GetValue().ToInteger();
  const std::string subject = Named(cimClass, property);
  if (index > 0xFFFF) {
    findings_.Error(definition.location, subject + " has the " + name + " " +
                                             property.Qualifiers().Find(name)->GetValue().ToString(10) +
                                             ", expected 0 to 65535");
    return;
  }
  const auto endOf = [index](std::uint64_t instance) {
    return (index + instance * Block::kRecordsPerInstance) * Block::kRecordStride + Block::kHeaderSize +
           Block::kRecordSize;
  };
  std::uint64_t instance = 0;
  while (instance < instances && endOf(instance) < Block::kSize) ++instance;
  if (instance == instances) return;
  findings_.Error(definition.location, subject + " ends at byte " + std::to_string(endOf(instance)) + " for instance " +
                                           std::to_string(instance) + " (" + name + " " + std::to_string(index) + ", " +
                                           std::string(kMaxInstanceCount) + " " + std::to_string(instances) +
                                           "), expected below " + std::to_string(Block::kSize));
}

// A property that is declared where registers are and has a register's qualifiers, but is not a register because its
// name was first declared in an ancestor class.
void TNeeds::CheckOrigin(const TCIMClass& cimClass, const TPropertyDecl& property, EPath path) {
  const TPropertyDefinition& definition = property.Definition();
  const bool isNear = property.DeclaringClass() == cimClass.Name() ||
                      (cimClass.SuperClass() && property.DeclaringClass() == cimClass.SuperClass()->Name());
  const std::string_view qualifier = path == EPath::kR8 ? CollectorProfile::kOffset : CollectorProfile::kIndex;
  const auto origin = property.GetClassOrigin(kNoContext);
  if (!isNear || !origin || CollectorProfile::IsSkippedName(path, definition.name) ||
      !property.Qualifiers().Find(std::string(qualifier))) {
    return;
  }
  findings_.Warning(definition.location,
                    "the property " + SingleQuoted(definition.name) + " is not read for the class " +
                        SingleQuoted(cimClass.Name()) + ": it overrides a property of the class " +
                        SingleQuoted(origin->GetName(kNoContext)) +
                        "; only properties that the class or its superclass introduces are registers");
}

void TNeeds::CheckCaptureClass(const TCIMClass& cimClass) {
  for (const std::string_view name : CollectorProfile::kCaptureProperties) {
    const std::size_t index = cimClass.FindProperty(name);
    if (index == cimClass.Properties().size()) {
      findings_.Error(cimClass.Location(), Named(cimClass) + " has no property " + SingleQuoted(name));
      continue;
    }
    const TPropertyDefinition& definition = cimClass.Properties()[index]->Definition();
    const TType::ECIMType expected = name == "MessageTimestamp" ? TType::kDateTime : TType::kString;
    if (definition.type == expected && !definition.isArray) continue;
    findings_.Error(definition.location, "the property " + SingleQuoted(definition.name) + " of " + Named(cimClass) +
                                             " has the type " + TypeName(definition.type, definition.isArray) +
                                             ", expected " + TType(expected).ToString());
  }
}

}  // namespace

std::vector<TTextDiagnostic> CheckCollectorNeeds(const TNamespace& cimNamespace, const std::string& schemaName,
                                                 const TSchemaSources* sources) {
  return TNeeds(cimNamespace, sources).Check(schemaName);
}

bool MeetsCollectorNeeds(const TNamespace& cimNamespace, const TCIMClass& cimClass) {
  return TNeeds(cimNamespace, nullptr).IsMetBy(cimClass);
}

}  // namespace velhost
