#include "host/core/cimnamespace.h"

#include <algorithm>
#include <boost/make_shared.hpp>

#include "host/core/failuredetail.h"
#include "nkrovel20/tvelexception.h"

namespace NKROVEL20 {

boost::shared_ptr<TNamespace> TNamespace::Create() { return boost::shared_ptr<TNamespace>(new TNamespace()); }

boost::shared_ptr<ICIMClass> TNamespace::GetClass(const std::string& name, const TPropertyMap&) {
  return FindClass(name);
}

boost::shared_ptr<TCIMClass> TNamespace::AddClass(const TClassDefinition& definition, std::size_t order) {
  if (FindClass(definition.name)) {
    ThrowHostFailure(TVELStatusCode::kInvalidClass, "class " + definition.name + " is declared twice");
  }
  const boost::shared_ptr<TCIMClass> superClass = FindClass(definition.superClass);
  if (!superClass && !definition.superClass.empty()) {
    ThrowHostFailure(TVELStatusCode::kInvalidClass,
                     "class " + definition.name + " derives from unknown class " + definition.superClass);
  }
  const auto added = boost::make_shared<TCIMClass>(definition, superClass, weak_from_this());
  added->ResolveProperties();
  const auto place = std::upper_bound(orders_.begin(), orders_.end(), order);
  classes_.insert(classes_.begin() + (place - orders_.begin()), added);
  orders_.insert(place, order);
  byName_.emplace(definition.name, added);
  return added;
}

boost::shared_ptr<TCIMClass> TNamespace::AddClass(const TClassDefinition& definition) {
  return AddClass(definition, orders_.empty() ? 0 : orders_.back() + 1);
}

boost::shared_ptr<TCIMClass> TNamespace::FindClass(std::string_view name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? boost::shared_ptr<TCIMClass>() : found->second;
}

void TNamespace::TakeCommitted(const boost::shared_ptr<const TInstance>& instance) {
  if (commitCallback_) commitCallback_(instance);
}

}  // namespace NKROVEL20
