// The interface of all output formats: a stream of instances between a header and a summary.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/base/textsink.h"
#include "host/model/ciminstance.h"

namespace velhost {

/// What is known before the first instance.
struct TCollectionHeader {
  std::string machineType;
  std::string pluginName;
  std::string pluginVersion;
  std::string pluginInterfaceVersion;
};

/// A GetData call that ended in an exception, or that was never made because the run was stopped.
struct TRequestFailure {
  std::string className;  ///< all classes of a single request, separated by ", "
  std::string message;
  bool collected = true;  ///< false: the run was stopped before the call was made
};

/// An exchange without an answer, or with a completion code other than 0.
struct TFailedExchange {
  std::string className;
  int node = 0;                                ///< BMC node; service processor for dot commands
  std::string kind;                            ///< NameOfKind()
  std::optional<std::uint8_t> completionCode;  ///< empty: lost
};

/// What is known after the last instance.
struct TCollectionSummary {
  bool partial = false;
  /// "interrupted", "deadline reached", "the connection to the service processor was lost", "the collection differs
  /// from the recorded one" or "a request failed"; empty if the collection is complete.
  std::string partialReason;
  std::vector<TRequestFailure> failures;
  std::uint64_t exchanges = 0;
  std::vector<TFailedExchange> failedExchanges;
  std::int64_t elapsedMs = 0;
};

/// Writes one format: Begin, any number of Instance calls, End. Instances are written as they arrive, so memory does
/// not grow with their number.
class IInstanceWriter {
 public:
  virtual ~IInstanceWriter() = default;
  virtual void Begin(const TCollectionHeader& header) = 0;
  /// `incomplete`: an exchange failed in the GetData call that committed the instance. Formats that write at the
  /// moment of the commit only know about failures before it.
  virtual void Instance(const TInstance& instance, bool incomplete) = 0;
  virtual void End(const TCollectionSummary& summary) = 0;
};

}  // namespace velhost
