// One random case with the real collector: is each value where the follower says that it comes from?
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/bmc/stopsignal.h"
#include "host/model/hostservices.h"
#include "host/result/planfollower.h"
#include "tests/result/plantedmistake.h"
#include "tests/result/randomcase.h"

namespace tests {

class TAttributionRun : private IHostEnvironment {
 public:
  TAttributionRun(unsigned seed, EPlanted planted);
  ~TAttributionRun() override;
  TAttributionRun(const TAttributionRun&) = delete;
  TAttributionRun& operator=(const TAttributionRun&) = delete;

  void Run();
  /// What is wrong, one sentence each.
  const std::vector<std::string>& Complaints() const { return complaints_; }
  /// How often what happened, in words: "r8", "second turn", "missing".
  const std::map<std::string, unsigned>& Seen() const { return seen_; }

 private:
  std::string MachineType() override { return case_.machineType; }
  TCIMDateTime LocalTime() override { return TCIMDateTime(2026, 1, 31, 12, 34, 56, 0, 60); }

  void RunRequest(std::size_t number);
  bool MayDepart() const;
  void OnCommit(const TInstance& instance);
  void Note(const TInstanceFacts& facts);
  void CheckR8(const TInstance& instance, const TInstanceFacts& facts, const TPlannedClass& planned);
  void CheckR8Value(const TInstance& instance, const TInstanceFacts& facts, const TPlannedClass& planned,
                    const TRegisterFacts& value);
  void CheckTime(const TInstance& instance, const TInstanceFacts& facts);
  void CheckJfr(const TInstance& instance, const TInstanceFacts& facts, const TPlannedClass& planned);
  void CheckFile(const TInstance& instance, const TInstanceFacts& facts);
  std::uint64_t PlannedInstances() const;
  void CheckEnd(TResultReasons& reasons, const TPlanFollower& follower);
  const TPlannedClass* PlannedClass(const TInstance& instance) const;
  void Expect(bool condition, const TInstanceFacts& facts, const std::string& what);

  TDice dice_;
  TRandomCase case_;
  TNumberingProcessor processor_;
  TStopSignal stop_;
  TPlan truth_;
  TPlan plan_;  ///< with what was planted
  TPlanFollower* follower_ = nullptr;
  std::size_t request_ = 0;
  bool isWhole_ = true;  ///< no exception, no stop, no departure
  std::set<std::string> keys_;
  std::vector<std::string> complaints_;
  std::map<std::string, unsigned> seen_;
};

}  // namespace tests
