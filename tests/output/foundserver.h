// A bridge with every kind of finding, and one of which little was read.
#pragma once

#include <memory>
#include <vector>

#include "tests/output/outputfixture.h"

namespace tests {

/// Chip 1: a fatal error that was the first, an error, two corrected ones, one masked. Chip 2: one error, of which
/// neither the mask nor the pointer to the first nor the log was read.
class TFoundServer : public TOutputTest {
 protected:
  TFoundServer();
  /// The facts of the two bridges, with findings; `summary.findings` has all of them.
  TDocument document_;

 private:
  void Describe();
  void AddBridge(int instance, const std::vector<std::pair<std::size_t, std::uint64_t>>& values);

  boost::shared_ptr<TCIMClass> bridge_;
  TClassMeaning meaning_;
};

}  // namespace tests
