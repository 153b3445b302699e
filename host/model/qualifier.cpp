#include "host/model/qualifier.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstddef>

#include "host/base/caseinsensitive.h"

namespace velhost {

TQualifierSet::TQualifierSet(std::vector<TQualifierDefinition> own, const TQualifierSet* inherited) {
  const std::size_t ownCount = own.size();
  qualifiers_.reserve(ownCount + (inherited ? inherited->All().size() : 0));
  for (TQualifierDefinition& definition : own) {
    qualifiers_.push_back(boost::make_shared<TQualifier>(std::move(definition)));
  }
  if (inherited == nullptr) return;
  // Inherited qualifiers have distinct names, so only the element's own can hide them.
  const auto ownEnd = qualifiers_.begin() + static_cast<std::ptrdiff_t>(ownCount);
  for (const auto& qualifier : inherited->All()) {
    const bool declaredAnew = std::any_of(qualifiers_.begin(), ownEnd, [&](const auto& candidate) {
      return EqualNames(candidate->Name(), qualifier->Name());
    });
    if (qualifier->Flavor().toSubclass && !declaredAnew) qualifiers_.push_back(qualifier);
  }
}

// An element has only a few qualifiers, so a linear search is faster than a map.
boost::shared_ptr<const TQualifier> TQualifierSet::Find(const std::string& name) const {
  for (const auto& qualifier : qualifiers_) {
    if (EqualNames(qualifier->Name(), name)) return qualifier;
  }
  return {};
}

}  // namespace velhost
