// The requests of a collection: the classes, the calls they are divided into, and the outcome of each call.
#pragma once
#include "host/base/api.h"

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "host/bmc/supervision.h"
#include "host/model/cimnamespace.h"
#include "host/result/resultfacts.h"
#include "nkrovel20/iplugincallbacks.h"

namespace velhost {

/// Warnings about requests that will collect nothing: one text for each class that this machine does not serve, or a
/// single one if there are no classes to request.
std::vector<std::string> UnservedTexts(const TNamespace& cimNamespace,
                                       const std::vector<boost::shared_ptr<TCIMClass>>& classes,
                                       const std::string& machineType);

/// Throws THostError (kTooLarge) if a request would take more memory than is allowed; see collectionsize.h. With
/// `singleRequest`, all classes are one request.
void RefuseTooLarge(const TNamespace& cimNamespace, const std::vector<boost::shared_ptr<TCIMClass>>& classes,
                    const std::string& machineType, bool singleRequest, int serviceProcessors);

/// The names of the classes after the capture class: a single request never serves them.
std::vector<std::string> ClassesBehindCapture(const std::vector<boost::shared_ptr<TCIMClass>>& classes);

/// Counts exchanges and lists those that failed, under the turn of the class being collected.
class TExchangeLedger : public IExchangeObserver {
 public:
  void OnIpmi(const TIpmiExchange& exchange) override;
  void OnDot(const TDotExchange& exchange) override;

  /// The turn of the request's first class.
  void BeginRequest(std::uint32_t turn);
  std::uint64_t Total() const { return total_; }
  const std::vector<TExchangeFailure>& Failed() const { return failed_; }

 private:
  void Count(bool attempted, bool answered, int node, EExchangeKind kind, std::uint8_t completionCode);

  std::uint32_t turn_ = 0;
  std::uint64_t total_ = 0;
  std::vector<TExchangeFailure> failed_;
};

/// Passes one request to the plugin. Returns an empty string, or the message of the exception that ended the request.
std::string RunRequest(IPluginBasicQueryCallbacks& plugin, const boost::shared_ptr<TNamespace>& cimNamespace,
                       const std::vector<boost::shared_ptr<TCIMClass>>& classes);

}  // namespace velhost
