// The turns of a plan by their number, for what a summary says of exchanges and instances.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/profile/plan.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// The words of the enumerations, as the machine-readable formats write them.
const char* NameOfOriginPath(CollectorProfile::EPath path);  ///< "r8", "jfr", "ffdc"
const char* NameOfStatus(EResultStatus status);              ///< "complete", "partial", ...
const char* NameOfReason(EReason reason);                    ///< "stopped", "session-lost", ...
const char* NameOfUnread(EUnread unread);                    ///< "absent", "register-unread", ...

/// Looks up the turns of a plan, which are counted over all of its requests.
class TPlanTurns {
 public:
  /// A null plan has no turns. The plan is not owned.
  explicit TPlanTurns(const TPlan* plan);

  const std::string& ClassName(std::uint32_t turn) const { return At(turn).planned->cimClass->Name(); }
  CollectorProfile::EPath Path(std::uint32_t turn) const { return At(turn).planned->path; }
  std::string Key(std::uint32_t turn, TPlace place) const;
  TOrigin Origin(std::uint32_t turn, TPlace place) const;
  /// "StatisticTime", "ErrRawData" or the register that was to be read; empty if the exchange was for no property, or
  /// for an unknown one.
  std::string_view PropertyOf(const TExchangeFailure& failure) const;

 private:
  struct TTurn {
    const TPlannedClass* planned;
    unsigned time;
  };
  const TTurn& At(std::uint32_t turn) const { return turns_.at(turn); }

  std::vector<TTurn> turns_;
};

}  // namespace velhost
