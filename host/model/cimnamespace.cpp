#include "host/model/cimnamespace.h"

#include <algorithm>
#include <boost/make_shared.hpp>

#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

boost::shared_ptr<TNamespace> TNamespace::Create() { return boost::shared_ptr<TNamespace>(new TNamespace()); }

boost::shared_ptr<ICIMClass> TNamespace::GetClass(const std::string& name, const TPropertyMap&) {
  return FindClass(name);
}

boost::shared_ptr<TCIMClass> TNamespace::AddClass(TClassDefinition definition, std::size_t order) {
  if (FindClass(definition.name)) {
    ThrowHostFailure(TVELStatusCode::kInvalidClass, "class " + definition.name + " is declared twice");
  }
  const boost::shared_ptr<TCIMClass> superClass = FindClass(definition.superClass);
  if (!superClass && !definition.superClass.empty()) {
    ThrowHostFailure(TVELStatusCode::kInvalidClass,
                     "class " + definition.name + " derives from unknown class " + definition.superClass);
  }
  auto added = boost::make_shared<TCIMClass>(std::move(definition), superClass, weak_from_this());
  added->ResolveProperties();
  byName_.emplace(added->Name(), added);
  added_.push_back({order, added});
  return added;
}

const std::vector<boost::shared_ptr<TCIMClass>>& TNamespace::Classes() const {
  if (classes_.size() == added_.size()) return classes_;
  std::vector<const TPlaced*> placed;
  for (const TPlaced& entry : added_) placed.push_back(&entry);
  std::stable_sort(placed.begin(), placed.end(), [](const auto* a, const auto* b) { return a->order < b->order; });
  classes_.clear();
  for (const TPlaced* entry : placed) classes_.push_back(entry->cimClass);
  return classes_;
}

boost::shared_ptr<TCIMClass> TNamespace::FindClass(std::string_view name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? boost::shared_ptr<TCIMClass>() : found->second;
}

void TNamespace::TakeCommitted(const boost::shared_ptr<const TInstance>& instance) {
  if (commitCallback_) commitCallback_(instance);
}

}  // namespace velhost
