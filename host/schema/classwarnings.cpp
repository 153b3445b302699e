#include "host/schema/classwarnings.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "host/base/text.h"
#include "host/profile/collectorprofile.h"
#include "host/schema/registerwarnings.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

bool HasRegisterQualifier(const TPropertyDecl& property) {
  return property.Qualifiers().Find(std::string(CollectorProfile::kOffset)) ||
         property.Qualifiers().Find(std::string(CollectorProfile::kIndex));
}

bool DeclaresRegisters(const TCIMClass& cimClass) {
  const auto& properties = cimClass.Properties();
  return std::any_of(properties.begin(), properties.end(), [&cimClass](const auto& property) {
    return property->DeclaringClass() == cimClass.Name() && HasRegisterQualifier(*property);
  });
}

}  // namespace

TClassWarnings::TClassWarnings(const TNamespace& cimNamespace, const TClassPaths& paths, TNeedFindings& findings)
    : paths_(paths), findings_(findings) {
  for (const auto& cimClass : cimNamespace.Classes()) {
    if (TClassPaths::IsR8(*cimClass) || paths.IsJfr(*cimClass)) superClasses_.insert(cimClass->SuperClass().get());
  }
}

void TClassWarnings::Warn(const TCIMClass& cimClass) {
  const bool isR8 = TClassPaths::IsR8(cimClass);
  const bool isJfr = paths_.IsJfr(cimClass);
  if (!isR8 && !isJfr) return WarnOfUnreadRegisters(cimClass);
  WarnOfNoInstances(cimClass);
  if (isR8) WarnOfRegisters(cimClass, EPath::kR8, findings_);
  if (isJfr) WarnOfRegisters(cimClass, EPath::kJfr, findings_);
}

void TClassWarnings::WarnOfUnreadRegisters(const TCIMClass& cimClass) {
  if (paths_.IsBase(cimClass) || superClasses_.count(&cimClass) != 0 || !DeclaresRegisters(cimClass)) return;
  findings_.Warning(cimClass.Location(),
                    "nothing reads the registers of " + Named(cimClass) +
                        ", expected one of the R8 classes, a subclass of a JFR base class, or the direct superclass " +
                        "of such a class" + (findings_.Keeps() ? HintFor(cimClass.Name()) : std::string()));
}

std::string TClassWarnings::HintFor(const std::string& name) {
  std::vector<std::string_view> names(CollectorProfile::kR8Classes.begin(), CollectorProfile::kR8Classes.end());
  names.insert(names.end(), CollectorProfile::kJfrBaseClasses.begin(), CollectorProfile::kJfrBaseClasses.end());
  const std::string_view nearest = NearestName(name, names, nameSearchSteps_);
  if (!EqualNames(nearest, name)) return Suggestion(nearest, "'");
  return "; did you mean " + SingleQuoted(nearest) + ", which differs only in case?";
}

void TClassWarnings::WarnOfNoInstances(const TCIMClass& cimClass) {
  const auto count = cimClass.Qualifiers().Find(std::string(CollectorProfile::kMaxInstanceCount));
  if (!count) return;
  const TCIMValue& value = count->GetValue();
  if (value.IsArray() || value.IsNull() || !IsInteger(value) || value.ToInteger() != 0) return;
  findings_.Warning(count->Location(), Named(cimClass) + " is never collected: found a " +
                                           std::string(CollectorProfile::kMaxInstanceCount) +
                                           " of 0, expected at least 1");
}

}  // namespace velhost
