#include "host/model/cimclass.h"

#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstddef>
#include <utility>

#include "host/base/names.h"
#include "host/model/ciminstance.h"
#include "host/model/cimnamespace.h"

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

TPropertyDecl::TPropertyDecl(TPropertyDefinition definition, const boost::shared_ptr<TCIMClass>& declaringClass,
                             const TPropertyDecl* overridden)
    : definition_(std::move(definition)),
      qualifiers_(std::move(definition_.qualifiers), overridden ? &overridden->qualifiers_ : nullptr),
      declaringClass_(declaringClass->SharedName()),
      origin_(overridden ? overridden->origin_ : boost::weak_ptr<TCIMClass>(declaringClass)) {}

const std::string& TPropertyDecl::GetName(const TPropertyMap&) const { return definition_.name; }

boost::shared_ptr<const ICIMQualifier> TPropertyDecl::GetQualifier(const std::string& name, const TPropertyMap&) const {
  return qualifiers_.Find(name);
}

TCIMValue::TCIMType TPropertyDecl::GetType(const TPropertyMap&) const { return definition_.type; }

boost::shared_ptr<ICIMClass> TPropertyDecl::GetClassOrigin(const TPropertyMap&) const { return origin_.lock(); }

TCIMClass::TCIMClass(TClassDefinition definition, boost::shared_ptr<TCIMClass> superClass,
                     boost::weak_ptr<TNamespace> cimNamespace)
    : definition_(std::move(definition)),
      name_(std::make_shared<const std::string>(std::move(definition_.name))),
      superClass_(std::move(superClass)),
      namespace_(std::move(cimNamespace)),
      qualifiers_(std::move(definition_.qualifiers), superClass_ ? &superClass_->qualifiers_ : nullptr) {}

void TCIMClass::ResolveProperties() {
  properties_.reserve((superClass_ ? superClass_->properties_.size() : 0) + definition_.properties.size());
  if (superClass_) properties_ = superClass_->properties_;
  const boost::shared_ptr<TCIMClass> self = shared_from_this();
  for (TPropertyDefinition& definition : definition_.properties) {
    const std::size_t index = FindProperty(definition.name);
    if (index < properties_.size()) {
      properties_[index] = boost::make_shared<TPropertyDecl>(std::move(definition), self, properties_[index].get());
    } else {
      properties_.push_back(boost::make_shared<TPropertyDecl>(std::move(definition), self, nullptr));
      ownIndex_.emplace(properties_.back()->Definition().name, index);
    }
  }
  definition_.properties = {};
}

const std::string& TCIMClass::GetName(const TPropertyMap&) const { return *name_; }

boost::shared_ptr<const ICIMQualifier> TCIMClass::GetQualifier(const std::string& name, const TPropertyMap&) const {
  return qualifiers_.Find(name);
}

boost::shared_ptr<ICIMClass> TCIMClass::GetSuperClass(const TPropertyMap&) const { return superClass_; }

boost::shared_ptr<ICIMNamespace> TCIMClass::GetNamespace(const TPropertyMap&) const { return namespace_.lock(); }

boost::shared_ptr<ICIMInstance> TCIMClass::CreateInstance(const TPropertyMap&) {
  return boost::make_shared<TInstance>(shared_from_this(), namespace_);
}

void TCIMClass::EnumerateSubClasses(const TClassCallback& callback, int flag, const TPropertyMap&) {
  const boost::shared_ptr<TNamespace> cimNamespace = namespace_.lock();
  if (!cimNamespace) return;
  for (const auto& candidate : cimNamespace->Classes()) {
    const bool wanted =
        flag == kDirectSubClasses ? candidate->superClass_.get() == this : candidate->DescendsFrom(*this);
    if (wanted && !callback(candidate)) return;
  }
}

void TCIMClass::EnumeratePropertyDecls(const TPropertyDeclCallback& callback, const TPropertyMap&) {
  for (const auto& property : properties_) {
    if (!callback(property)) return;
  }
}

std::size_t TCIMClass::FindProperty(std::string_view name) const {
  for (const TCIMClass* declaring = this; declaring != nullptr; declaring = declaring->superClass_.get()) {
    const auto found = declaring->ownIndex_.find(name);
    if (found != declaring->ownIndex_.end()) return found->second;
  }
  return properties_.size();
}

bool TCIMClass::DescendsFrom(const TCIMClass& ancestor) const {
  for (const TCIMClass* above = superClass_.get(); above != nullptr; above = above->superClass_.get()) {
    if (above == &ancestor) return true;
  }
  return false;
}

}  // namespace velhost
