// Decorators for the host's object model: they record every call with its context, and fail or return nothing where a
// test requests it.
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

/// A record reads "CLASS.Operation(arguments) {context}". The context is "{}" if it is empty, "{request}" for the
/// request context, "{other}" for anything else. Objects that a wrapped object returns are wrapped too. The probe
/// must outlive everything it wrapped.
class THostProbe {
 public:
  boost::shared_ptr<NKROVEL20::ICIMNamespace> Wrap(const boost::shared_ptr<NKROVEL20::ICIMNamespace>& inner);
  boost::shared_ptr<NKROVEL20::ICIMClass> Wrap(const boost::shared_ptr<NKROVEL20::ICIMClass>& inner);
  boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> Wrap(const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>& inner);

  /// The call, given as it is recorded, throws TVELException with the status: every time, or from its nth time on
  /// (counted from 1).
  void FailAt(const std::string& call, std::int32_t status, int nth = 1);
  /// As above, with any action, which may throw anything or return.
  void DoAt(const std::string& call, std::function<void()> action, int nth = 1);
  /// The call returns a null pointer.
  void ReturnNothingAt(const std::string& call) { ReturnNothingAt(call, 1); }
  /// As above, from its nth time on (counted from 1).
  void ReturnNothingAt(const std::string& call, int nth) { empty_[call] = nth; }

  /// Makes enumerations of properties deliver everything twice.
  void EnumeratePropertiesTwice() { propertyRounds_ = 2; }
  int PropertyRounds() const { return propertyRounds_; }
  /// Makes enumerations of properties also deliver this one, last, whatever class it belongs to.
  void EnumerateAlso(const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>& property) { alsoEnumerated_ = property; }
  const boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>& AlsoEnumerated() const { return alsoEnumerated_; }

  const std::vector<std::string>& Calls() const { return calls_; }
  /// The recorded calls that contain the fragment, in order.
  std::vector<std::string> CallsWith(const std::string& fragment) const;
  void Clear() { calls_.clear(); }
  /// The values passed to instances, in order: "NAME TYPE = TEXT".
  const std::vector<std::string>& Settings() const { return settings_; }

  /// For the decorators: records the call and does what was requested for it. Returns false if the call must return
  /// nothing.
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
  std::map<std::string, int> empty_;  ///< how many more calls, the last included, until it returns nothing
  int propertyRounds_ = 1;
  boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> alsoEnumerated_;
};

}  // namespace tests
