#include "host/core/cimclass.h"

#include <boost/make_shared.hpp>

#include "host/core/cimnamespace.h"
#include "host/core/ciminstance.h"

namespace NKROVEL20 {

TPropertyDecl::TPropertyDecl(const TPropertyDefinition& definition, const boost::shared_ptr<TCIMClass>& declaringClass,
                             const TPropertyDecl* overridden)
    : definition_(definition),
      qualifiers_(definition.qualifiers, overridden ? &overridden->qualifiers_ : nullptr),
      declaringClass_(declaringClass->Name()),
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
      superClass_(std::move(superClass)),
      namespace_(std::move(cimNamespace)),
      qualifiers_(definition_.qualifiers, superClass_ ? &superClass_->qualifiers_ : nullptr) {}

void TCIMClass::ResolveProperties() {
  if (superClass_) {
    properties_ = superClass_->properties_;
    propertyIndex_ = superClass_->propertyIndex_;
  }
  for (const TPropertyDefinition& definition : definition_.properties) {
    const std::size_t index = FindProperty(definition.name);
    if (index < properties_.size()) {
      properties_[index] = boost::make_shared<TPropertyDecl>(definition, shared_from_this(), properties_[index].get());
    } else {
      propertyIndex_.emplace(definition.name, properties_.size());
      properties_.push_back(boost::make_shared<TPropertyDecl>(definition, shared_from_this(), nullptr));
    }
  }
}

const std::string& TCIMClass::GetName(const TPropertyMap&) const { return definition_.name; }

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
  const auto found = propertyIndex_.find(name);
  return found == propertyIndex_.end() ? properties_.size() : found->second;
}

bool TCIMClass::DescendsFrom(const TCIMClass& ancestor) const {
  for (const TCIMClass* above = superClass_.get(); above != nullptr; above = above->superClass_.get()) {
    if (above == &ancestor) return true;
  }
  return false;
}

}  // namespace NKROVEL20
