// The account of a run: its exchanges, what is missing from what it should have delivered, and why. The follower of the
// plan and the run report here as things happen; the status, reasons and message of the result are derived from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/base/hosterror.h"
#include "host/profile/plan.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// Turns are numbered over all requests of the plan, from 0.
class TResultReasons {
 public:
  /// The plan is not owned, and must outlive this object and its summary. Named turns that this machine does not serve,
  /// or has no way to, are reasons from the beginning.
  explicit TResultReasons(const TPlan& plan);

  /// An exchange that was attempted, whether it failed or not. One that a stopped run refuses is neither counted nor
  /// a failure.
  void CountExchange() { ++exchanges_; }
  /// An exchange that failed, with `repeat` 1. If it equals the one before it, that one is repeated.
  void AddFailure(const TExchangeFailure& failure);
  void CountInstance() { ++instances_; }
  /// In the order of the turns, and within a turn in the order of the plan.
  void AddUnread(const TUnread& unread) { unread_.push_back(unread); }

  /// Adds to the one entry that this code and the turn's class have. Absence is not a reason. `detail` is
  ///   the whole message for kRequestFailed and kNotCollected, and how the run was stopped for kStopped;
  ///   for kFileUnread the sentence of the size limit, where it refused the file; for kBlockUndecodable, called once
  ///   for each block, the number of its service processor.
  /// Otherwise the message is made from the count and the plan. A turn that is not served is never "not collected".
  void AddReason(std::uint32_t turn, EReason code, std::uint64_t count = 1, const std::string& detail = {});
  /// For kStopped, kSessionLost and kRequestFailed when no class was being collected.
  void AddReasonOfRun(EReason code, const std::string& detail = {});

  std::uint64_t Exchanges() const { return exchanges_; }

  /// Closes the account. `failure` is one of the command itself, whatever was collected. The caller sets the summary's
  /// `exitStatus` and `elapsedMs`.
  TResultSummary Close(const std::optional<THostError>& failure);

 private:
  struct TTurn {
    std::size_t planClass = 0;
    bool isNotServed = false;  ///< and named
    bool isCollected = true;   ///< as far as is known
  };
  /// What is known of one code of a class.
  struct TEntry {
    std::uint64_t count = 0;
    std::vector<std::string> details;  ///< each of them once
  };
  using TEntries = std::map<EReason, TEntry>;

  static void Add(TEntries& entries, EReason code, std::uint64_t count, const std::string& detail);
  bool IsNothingRead() const;
  std::uint64_t CollectedTurns(std::size_t planClass) const;
  std::uint64_t Discarded(std::size_t planClass) const;
  std::string FileText(const TEntry& entry, std::uint64_t turns) const;
  std::string BlockText(const TEntry& entry, std::uint64_t turns) const;
  std::string MessageOfClass(std::size_t planClass, EReason code, const TEntry& entry) const;
  std::vector<TReason> Reasons() const;

  const TPlan& plan_;
  std::vector<TTurn> turns_;
  TEntries ofRun_;
  std::map<std::size_t, TEntries> ofClasses_;  ///< by index into TPlan::classes
  std::uint64_t exchanges_ = 0;
  std::uint64_t instances_ = 0;
  std::vector<TExchangeFailure> failed_;
  std::vector<TUnread> unread_;
};

}  // namespace velhost
