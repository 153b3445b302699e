// Decorators over the host's object model: they note every call with its context, and fail or return
// nothing where a test says so.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "nkrovel20/icimobjects.h"
#include "tests/support/namespaces.h"

namespace tests {

/// What is noted reads "CLASS.Operation(arguments) {context}". The context is "{}" when it is empty,
/// "{request}" for the request context, "{other}" for anything else. Objects that a wrapped object
/// hands out are wrapped too. The probe outlives everything it wrapped.
class THostProbe {
 public:
  boost::shared_ptr<NKROVEL20::ICIMNamespace> Wrap(const boost::shared_ptr<NKROVEL20::ICIMNamespace>& inner);
  boost::shared_ptr<NKROVEL20::ICIMClass> Wrap(const boost::shared_ptr<NKROVEL20::ICIMClass>& inner);
  boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> Wrap(const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>& inner);

  /// The call, as it is noted, throws TVELException with the status: each time, or from its nth time
  /// on (counted from 1).
  void FailAt(const std::string& call, std::int32_t status, int nth = 1);
  /// The same with any action, which may throw what it likes or return.
  void DoAt(const std::string& call, std::function<void()> action, int nth = 1);
  /// The call returns an empty pointer.
  void ReturnNothingAt(const std::string& call) { ReturnNothingAt(call, 1); }
  /// The same from its nth time on (counted from 1).
  void ReturnNothingAt(const std::string& call, int nth) { empty_[call] = nth; }

  /// Enumerations of properties deliver everything twice.
  void EnumeratePropertiesTwice() { propertyRounds_ = 2; }
  int PropertyRounds() const { return propertyRounds_; }
  /// Enumerations of properties deliver this one too, last, whatever class it is of.
  void EnumerateAlso(const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>& property) { alsoEnumerated_ = property; }
  const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>& AlsoEnumerated() const { return alsoEnumerated_; }

  const std::vector<std::string>& Calls() const { return calls_; }
  /// The calls whose text contains the fragment, in order.
  std::vector<std::string> CallsWith(const std::string& fragment) const;
  void Clear() { calls_.clear(); }
  /// The values handed to instances, as they were handed over: "NAME TYPE = TEXT".
  const std::vector<std::string>& Settings() const { return settings_; }

  /// For the decorators: notes the call and does what was asked for it. False: return nothing.
  bool Enter(const std::string& call);
  void NoteSetting(const std::string& name, const NKROVEL20::TCIMValue& value);
  static std::string ContextText(const NKROVEL20::TPropertyMap& context);

 private:
  struct TAction {
    std::function<void()> action;
    int countdown;
  };
  std::vector<std::string> calls_;
  std::vector<std::string> settings_;
  std::map<std::string, TAction> actions_;
  std::map<std::string, int> empty_;  ///< call to how many times it is still to be made until it returns nothing
  int propertyRounds_ = 1;
  boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> alsoEnumerated_;
};

}  // namespace tests
