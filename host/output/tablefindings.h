// The findings of a run in the table: what is wrong with the server, in full and in short.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/output/tablelayout.h"
#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// The colour of a severity.
EEmphasis EmphasisOf(ESeverity severity);

/// Gathers what the findings need of the instances until they are shown at the end.
class TFindingList {
 public:
  void Add(const TInstance& instance, const TInstanceFacts& facts);
  /// Each finding with its place, its register, and the evidence; without a finding, a sentence that says so. Then
  /// whether something could not be read: `unreadValues` of delivered instances, and what the summary says.
  void Write(TTableLayout& layout, const TResultSummary& summary, std::size_t unreadValues) const;
  /// A row of the summary that counts them, and a line for each of the worst: the end of the table is what is on the
  /// screen when it has been printed.
  void WriteShort(TTableLayout& layout, const std::vector<TFinding>& findings) const;

 private:
  std::string NoneText() const;
  void WriteFinding(TTableLayout& layout, const TFinding& finding, bool withEvidence) const;
  void WriteEvidence(TTableLayout& layout, const TFinding& finding, std::size_t column) const;

  std::size_t registers_ = 0;       ///< that were read
  std::size_t errorRegisters_ = 0;  ///< of those
  /// The fields of the registers that are evidence, by key and register.
  std::map<std::pair<std::string, std::string>, std::vector<std::string>> fields_;
};

}  // namespace velhost
