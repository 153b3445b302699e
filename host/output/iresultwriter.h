// The interface of all output formats: a stream of instances between a header and a summary.
#pragma once

#include "host/model/ciminstance.h"
#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// Writes one format: Begin, any number of Instance calls, End. Instances are written as they arrive, so memory does
/// not grow with their number.
class IResultWriter {
 public:
  virtual ~IResultWriter() = default;
  virtual void Begin(const TResultHeader& header) = 0;
  /// Everything that is known of an instance is known at its commit; nothing of it changes afterwards.
  virtual void Instance(const TInstance& instance, const TInstanceFacts& facts) = 0;
  /// `summary.plan` may only be null if `failed` and `unread` are empty.
  virtual void End(const TResultSummary& summary) = 0;
};

}  // namespace velhost
