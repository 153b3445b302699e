// The parts of the table that say what is missing: properties of the instances that came, and instances that did not
// come.
#pragma once

#include <string>
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

/// Gathers what is missing from instances until it is shown at the end.
class TMissingList {
 public:
  void Add(const std::string& className, const TInstanceFacts& facts);
  /// Writes nothing if nothing is missing.
  void Write(TTableLayout& layout) const;

 private:
  std::vector<TMissingLine> lines_;
};

/// Writes the planned instances that did not come, and why; then the failed exchanges on which no instance depends, or
/// of which that is not known. Nothing if there are none.
void WriteUnread(TTableLayout& layout, const TResultSummary& summary);

}  // namespace velhost
