#include "host/core/qualifier.h"

#include <boost/make_shared.hpp>

#include "host/core/caseinsensitive.h"

namespace NKROVEL20 {

TQualifierSet::TQualifierSet(const std::vector<TQualifierDefinition>& own, const TQualifierSet* inherited) {
  for (const TQualifierDefinition& definition : own) qualifiers_.push_back(boost::make_shared<TQualifier>(definition));
  if (inherited == nullptr) return;
  for (const auto& qualifier : inherited->All()) {
    if (qualifier->Flavor().toSubclass && !Find(qualifier->Name())) qualifiers_.push_back(qualifier);
  }
}

// An element has a handful of qualifiers: a walk beats a map.
boost::shared_ptr<const TQualifier> TQualifierSet::Find(const std::string& name) const {
  for (const auto& qualifier : qualifiers_) {
    if (EqualNames(qualifier->Name(), name)) return qualifier;
  }
  return {};
}

}  // namespace NKROVEL20
