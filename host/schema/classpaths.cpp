#include "host/schema/classpaths.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/profile/collectorprofile.h"

namespace velhost {

TClassPaths::TClassPaths(const TNamespace& cimNamespace) {
  for (const std::string_view name : CollectorProfile::kJfrBaseClasses) {
    if (const auto base = cimNamespace.FindClass(name)) bases_.push_back(base);
  }
}

TClassPaths::TClasses TClassPaths::BasesOf(const TCIMClass& cimClass) const {
  TClasses above;
  std::copy_if(bases_.begin(), bases_.end(), std::back_inserter(above),
               [&cimClass](const auto& base) { return cimClass.DescendsFrom(*base); });
  return above;
}

bool TClassPaths::IsBase(const TCIMClass& cimClass) const {
  return std::any_of(bases_.begin(), bases_.end(), [&cimClass](const auto& base) { return base.get() == &cimClass; });
}

bool TClassPaths::IsR8(const TCIMClass& cimClass) {
  const auto& names = CollectorProfile::kR8Classes;
  return std::find(names.begin(), names.end(), cimClass.Name()) != names.end();
}

}  // namespace velhost
