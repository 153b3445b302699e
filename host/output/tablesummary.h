// The end of the table: the properties that are missing from instances, the instances that were not delivered, and the
// summary.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/output/tablelayout.h"
#include "host/result/instancefacts.h"
#include "host/result/resultfacts.h"

namespace velhost {

/// Something that is missing, as safe text.
struct TMissingLine {
  std::string className;
  std::string place;
  std::string what;   ///< the property; empty for an instance
  std::string where;  ///< its address or index; may be empty
  std::string why;
  bool isAbsent = false;  ///< there was nothing to read
};

/// Whether to show what the server does not have, besides what could not be read.
enum class EAbsent { kShown, kLeftOut };

/// Gathers what is missing from instances until it is shown at the end.
class TMissingList {
 public:
  void Add(const std::string& className, const TInstanceFacts& facts);
  /// The number of those that are not absent.
  std::size_t Failed() const;
  /// Writes nothing if nothing is missing.
  void Write(TTableLayout& layout, EAbsent absent) const;

 private:
  std::vector<TMissingLine> lines_;
};

/// Writes the planned instances that were not delivered, and why; then the failed exchanges on which no instance
/// depends, or for which that is unknown. Nothing if there are none.
void WriteUnread(TTableLayout& layout, const TResultSummary& summary, EAbsent absent);

inline constexpr std::size_t kSummaryColumn = 16;  ///< where the text after "  Machine type" begins

/// The number of instances of each class, in the order of their first instances.
using TInstanceCounts = std::vector<std::pair<std::string, std::uint64_t>>;

/// Writes where the values come from, the number of instances of each class, the exchanges and how many failed, the
/// time taken, whether the result is complete, and why not.
void WriteTableSummary(TTableLayout& layout, const TResultHeader& header, const TResultSummary& summary,
                       const TInstanceCounts& counts);

}  // namespace velhost
