// The end of a result that was read back, for the writers: they name classes and instances through a plan, so one is
// made with just the turns that are named.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/model/cimnamespace.h"
#include "host/profile/plan.h"
#include "host/readback/readresult.h"
#include "host/result/resultfacts.h"

namespace velhost {

TFinding FindingOf(const TReadFinding& read);

class TShownSummary {
 public:
  /// Without findings. Throws THostError (kMalformed) for a key that no run can have written. `path` names the result
  /// in messages.
  TShownSummary(const std::string& path, const TReadResult& result);
  TShownSummary(const TShownSummary&) = delete;
  TShownSummary& operator=(const TShownSummary&) = delete;

  void SetFindings(std::vector<TFinding> findings) { summary_.findings = std::move(findings); }
  /// Refers to this object.
  const TResultSummary& Summary() const { return summary_; }

 private:
  struct TKey {
    std::string className;
    unsigned time = 1;
    CollectorProfile::EPath path = CollectorProfile::EPath::kNone;
    TPlace place;
  };

  TKey Parsed(const std::string& className, const std::string& key) const;
  std::size_t ClassAt(const std::string& className, CollectorProfile::EPath path);
  std::uint32_t TurnAt(std::size_t planClass, unsigned time);
  std::int32_t RegisterAt(std::size_t planClass, const std::string& property);
  void AddUnread(const TReadUnread& read);
  void AddFailure(const TReadFailure& read);
  void MakeClasses();

  std::string path_;
  TPlan plan_;
  boost::shared_ptr<TNamespace> namespace_;
  std::vector<std::string> names_;                       // parallel to plan_.classes
  std::vector<std::vector<std::string>> registerNames_;  // parallel to plan_.classes
  std::map<std::string, std::size_t> classes_;
  std::map<std::pair<std::size_t, unsigned>, std::uint32_t> turns_;
  // The turns of a class without a register block of a service processor, for the failed dot commands in their order.
  std::map<std::pair<std::size_t, int>, std::vector<std::uint32_t>> unreadBlocks_;
  std::map<std::pair<std::size_t, int>, std::size_t> dotFailures_;
  TResultSummary summary_;
};

}  // namespace velhost
