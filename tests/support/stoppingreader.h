// A reader whose run is stopped at a chosen check.
#pragma once

#include <cstddef>
#include <string>

#include "host/base/sourcereader.h"
#include "tests/support/memoryreader.h"
#include "tests/support/namespaces.h"

namespace tests {

class TStoppingReader : public TMemoryReader {
 public:
  void StopAt(std::size_t look) { looks_ = 0, last_ = look; }
  std::size_t Looks() const { return looks_; }
  void CheckStop() override {
    if (++looks_ == last_) throw velhost::TEndedReading(velhost::EFailure::kStopped, "stopped");
  }

 private:
  std::size_t looks_ = 0;
  std::size_t last_ = 0;
};

/// The number of times that `read` checks for a stop; 0 unless a stop at each of them ends it with TEndedReading.
template <typename TRead>
std::size_t LooksThatEnd(TStoppingReader& reader, TRead&& read) {
  reader.StopAt(0);
  read();
  const std::size_t looks = reader.Looks();
  for (std::size_t look = 1; look <= looks; ++look) {
    reader.StopAt(look);
    try {
      read();
      return 0;
    } catch (const velhost::TEndedReading&) {
    }
  }
  return looks;
}

}  // namespace tests
