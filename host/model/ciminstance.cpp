#include "host/model/ciminstance.h"

#include <utility>

#include "host/model/cimnamespace.h"
#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

namespace {

TCIMValue Fitted(const TCIMValue& value, const TPropertyDefinition& declared, const std::string& className) {
  if (value.GetType() == declared.type) return value;
  try {
    return value.ConvertedTo(declared.type);
  } catch (const TVELException&) {
    ThrowHostFailure(TVELStatusCode::kTypeMismatch, "property " + className + "." + declared.name + " is declared as " +
                                                        declared.type.ToString() + ": " + LastFailureDetail());
  }
}

}  // namespace

TInstance::TInstance(boost::shared_ptr<TCIMClass> cimClass, boost::weak_ptr<TNamespace> cimNamespace)
    : class_(std::move(cimClass)),
      namespace_(std::move(cimNamespace)),
      values_(class_->Properties().size()),
      set_(class_->Properties().size()) {}

void TInstance::SetProperty(const std::string& name, const TCIMValue& value, const TPropertyMap&) {
  const std::size_t index = class_->FindProperty(name);
  if (index == values_.size()) {
    ThrowHostFailure(TVELStatusCode::kNoSuchProperty,
                     "class " + class_->Name() + " declares no property \"" + name + "\"");
  }
  const TPropertyDefinition& declared = class_->Properties()[index]->Definition();
  if (!value.IsNull() && value.IsArray() != declared.isArray) {
    ThrowHostFailure(TVELStatusCode::kTypeMismatch,
                     "property " + class_->Name() + "." + declared.name + " is declared as " +
                         (declared.isArray ? "an array" : "a scalar") + " and cannot take " +
                         (value.IsArray() ? "an array" : "a scalar"));
  }
  values_[index] = Fitted(value, declared, class_->Name());
  set_[index] = true;
}

void TInstance::Commit(const TPropertyMap&) {
  const boost::shared_ptr<TNamespace> cimNamespace = namespace_.lock();
  if (committed_ || !cimNamespace) {
    ThrowHostFailure(TVELStatusCode::kFailed, "an instance of " + class_->Name() +
                                                  (committed_ ? " was committed twice" : " outlived its namespace"));
  }
  committed_ = true;
  cimNamespace->TakeCommitted(shared_from_this());
}

const TCIMValue* TInstance::Find(std::string_view name) const {
  const std::size_t index = class_->FindProperty(name);
  return index < values_.size() && set_[index] ? &values_[index] : nullptr;
}

}  // namespace velhost
