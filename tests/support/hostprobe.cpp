#include "tests/support/hostprobe.h"

#include <boost/make_shared.hpp>

#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tvelexception.h"

namespace tests {

namespace {

class TProbedInstance : public ICIMInstance {
 public:
  TProbedInstance(THostProbe& probe, boost::shared_ptr<ICIMInstance> inner, std::string className)
      : probe_(probe), inner_(std::move(inner)), className_(std::move(className)) {}
  void SetProperty(const std::string& name, const TCIMValue& value, const TPropertyMap& context) override {
    probe_.Enter(className_ + " instance.SetProperty(" + name + ") " + THostProbe::ContextText(context));
    probe_.NoteSetting(name, value);
    inner_->SetProperty(name, value, context);
  }
  void Commit(const TPropertyMap& context) override {
    probe_.Enter(className_ + " instance.Commit() " + THostProbe::ContextText(context));
    inner_->Commit(context);
  }

 private:
  THostProbe& probe_;
  boost::shared_ptr<ICIMInstance> inner_;
  std::string className_;
};

/// What classes and properties share: a name and qualifiers.
template <typename TInterface>
class TProbedDeclaration : public TInterface {
 public:
  TProbedDeclaration(THostProbe& probe, boost::shared_ptr<TInterface> inner)
      : probe_(probe), inner_(std::move(inner)), name_(inner_->GetName({})) {}
  const std::string& GetName(const TPropertyMap& context) const override {
    Enter("GetName()", context);
    return inner_->GetName(context);
  }
  boost::shared_ptr<const ICIMQualifier> GetQualifier(const std::string& name,
                                                      const TPropertyMap& context) const override {
    if (!Enter("GetQualifier(" + name + ")", context)) return {};
    return inner_->GetQualifier(name, context);
  }

 protected:
  bool Enter(const std::string& operation, const TPropertyMap& context) const {
    return probe_.Enter(name_ + "." + operation + " " + THostProbe::ContextText(context));
  }

  THostProbe& probe_;
  boost::shared_ptr<TInterface> inner_;
  std::string name_;
};

class TProbedProperty : public TProbedDeclaration<ICIMPropertyDecl> {
 public:
  using TProbedDeclaration::TProbedDeclaration;
  TCIMValue::TCIMType GetType(const TPropertyMap& context) const override {
    Enter("GetType()", context);
    return inner_->GetType(context);
  }
  boost::shared_ptr<ICIMClass> GetClassOrigin(const TPropertyMap& context) const override {
    if (!Enter("GetClassOrigin()", context)) return {};
    return probe_.Wrap(inner_->GetClassOrigin(context));
  }
};

class TProbedClass : public TProbedDeclaration<ICIMClass> {
 public:
  using TProbedDeclaration::TProbedDeclaration;
  boost::shared_ptr<ICIMClass> GetSuperClass(const TPropertyMap& context) const override {
    if (!Enter("GetSuperClass()", context)) return {};
    return probe_.Wrap(inner_->GetSuperClass(context));
  }
  boost::shared_ptr<ICIMNamespace> GetNamespace(const TPropertyMap& context) const override {
    if (!Enter("GetNamespace()", context)) return {};
    return probe_.Wrap(inner_->GetNamespace(context));
  }
  boost::shared_ptr<ICIMInstance> CreateInstance(const TPropertyMap& context) override {
    if (!Enter("CreateInstance()", context)) return {};
    return boost::make_shared<TProbedInstance>(probe_, inner_->CreateInstance(context), name_);
  }
  void EnumerateSubClasses(const TClassCallback& callback, int flag, const TPropertyMap& context) override {
    const bool delivers = Enter("EnumerateSubClasses(" + std::to_string(flag) + ")", context);
    if (!delivers) {
      callback({});
      return;
    }
    inner_->EnumerateSubClasses(
        [this, &callback](const boost::shared_ptr<ICIMClass>& found) { return callback(probe_.Wrap(found)); }, flag,
        context);
  }
  void EnumeratePropertyDecls(const TPropertyDeclCallback& callback, const TPropertyMap& context) override {
    Enter("EnumeratePropertyDecls()", context);
    const auto deliver = [this, &callback](const boost::shared_ptr<ICIMPropertyDecl>& found) {
      return callback(probe_.Wrap(found));
    };
    for (int round = 0; round < probe_.PropertyRounds(); ++round) inner_->EnumeratePropertyDecls(deliver, context);
    if (probe_.AlsoEnumerated()) deliver(probe_.AlsoEnumerated());
  }
};

class TProbedNamespace : public ICIMNamespace {
 public:
  TProbedNamespace(THostProbe& probe, boost::shared_ptr<ICIMNamespace> inner)
      : probe_(probe), inner_(std::move(inner)) {}
  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, const TPropertyMap& context) override {
    if (!probe_.Enter("namespace.GetClass(" + name + ") " + THostProbe::ContextText(context))) return {};
    return probe_.Wrap(inner_->GetClass(name, context));
  }
  std::string GetMachineType() const override {
    probe_.Enter("namespace.GetMachineType()");
    return inner_->GetMachineType();
  }

 private:
  THostProbe& probe_;
  boost::shared_ptr<ICIMNamespace> inner_;
};

}  // namespace

boost::shared_ptr<ICIMNamespace> THostProbe::Wrap(const boost::shared_ptr<ICIMNamespace>& inner) {
  if (!inner) return {};
  return boost::make_shared<TProbedNamespace>(*this, inner);
}

boost::shared_ptr<ICIMClass> THostProbe::Wrap(const boost::shared_ptr<ICIMClass>& inner) {
  if (!inner) return {};
  return boost::make_shared<TProbedClass>(*this, inner);
}

boost::shared_ptr<ICIMPropertyDecl> THostProbe::Wrap(const boost::shared_ptr<ICIMPropertyDecl>& inner) {
  if (!inner) return {};
  return boost::make_shared<TProbedProperty>(*this, inner);
}

void THostProbe::FailAt(const std::string& call, std::int32_t status, int nth) {
  DoAt(
      call, [status] { throw TVELException(status); }, nth);
}

void THostProbe::DoAt(const std::string& call, std::function<void()> action, int nth) {
  actions_[call] = {std::move(action), nth};
}

std::vector<std::string> THostProbe::CallsWith(const std::string& fragment) const {
  std::vector<std::string> found;
  for (const std::string& call : calls_) {
    if (call.find(fragment) != std::string::npos) found.push_back(call);
  }
  return found;
}

bool THostProbe::Enter(const std::string& call) {
  calls_.push_back(call);
  if (const auto found = actions_.find(call); found != actions_.end()) {
    if (found->second.countdown > 1) {
      --found->second.countdown;
    } else {
      found->second.action();
    }
  }
  const auto empty = empty_.find(call);
  if (empty == empty_.end()) return true;
  return empty->second > 1 && empty->second-- > 0;
}

void THostProbe::NoteSetting(const std::string& name, const TCIMValue& value) {
  settings_.push_back(name + " " + value.GetType().ToString() + " = " + value.ToString(10));
}

std::string THostProbe::ContextText(const TPropertyMap& context) {
  if (context.empty()) return "{}";
  const TPropertyMap request = {{TCIMSchemaHelper::kContextName, TCIMValue(TCIMSchemaHelper::kPluginNSPName)}};
  return context == request ? "{request}" : "{other}";
}

}  // namespace tests
