// The requests of a collection: which classes, in which calls, and what became of each call.
#pragma once
#include "host/base/api.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "host/bmc/supervision.h"
#include "host/model/cimnamespace.h"
#include "host/output/iinstancewriter.h"
#include "nkrovel20/iplugincallbacks.h"

namespace velhost {

/// The classes of the command line in its order; without any, all that this machine serves, the
/// capture class last. A class that the schema does not have throws THostError (kInvalidArgument) with the
/// nearest name.
std::vector<boost::shared_ptr<TCIMClass>> ChooseClasses(const TNamespace& cimNamespace,
                                                        const std::vector<std::string>& names,
                                                        const std::string& machineType);

/// What there is to say of classes that a request for collects nothing of: one text for each class
/// that this machine does not serve, or one where there is nothing to ask for.
std::vector<std::string> UnservedTexts(const TNamespace& cimNamespace,
                                       const std::vector<boost::shared_ptr<TCIMClass>>& classes,
                                       const std::string& machineType);

/// Throws THostError (kMalformed) where a request would take more memory than is allowed; see collectionsize.h. A
/// single request is one for all classes.
void RefuseTooLarge(const TNamespace& cimNamespace, const std::vector<boost::shared_ptr<TCIMClass>>& classes,
                    const std::string& machineType, bool singleRequest, int serviceProcessors);

/// The names of the classes that stand behind the capture class: a single request never serves them.
std::vector<std::string> ClassesBehindCapture(const std::vector<boost::shared_ptr<TCIMClass>>& classes);

/// Counts exchanges and lists those that failed, under the class that is being collected.
class TExchangeLedger : public IExchangeObserver {
 public:
  void OnIpmi(const TIpmiExchange& exchange) override;
  void OnDot(const TDotExchange& exchange) override;

  void BeginRequest(const std::string& className);
  /// Whether an exchange of the current request failed or was refused.
  bool RequestHadFailures() const { return requestFailed_; }
  std::uint64_t Total() const { return total_; }
  const std::vector<TFailedExchange>& Failed() const { return failed_; }

 private:
  void Count(bool attempted, bool answered, int node, EExchangeKind kind, std::uint8_t completionCode);

  std::string className_;
  bool requestFailed_ = false;
  std::uint64_t total_ = 0;
  std::vector<TFailedExchange> failed_;
};

/// Hands one request to the plugin. Returns the empty string, or the message of the exception that
/// ended it.
std::string RunRequest(IPluginBasicQueryCallbacks& plugin, const boost::shared_ptr<TNamespace>& cimNamespace,
                       const std::vector<boost::shared_ptr<TCIMClass>>& classes);

}  // namespace velhost
