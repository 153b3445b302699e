// Finds the lines of a recording by what they ask.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "host/base/api.h"
#include "host/bmc/record/recordingline.h"

namespace velhost {

/// Tells what is asked from everything else that can be asked. It is the beginning of a cryptographic hash, so that
/// nobody can make a recording whose requests share it.
using TAskedKey = std::uint64_t;

/// `area` is the storage area that a read of it is for, if that is known; then the handle in the request makes no
/// difference.
TAskedKey KeyOf(const TRecordedLine& line, const std::optional<std::string>& area);

/// Where a line is in a recording.
struct TLinePlace {
  std::size_t start;
  std::size_t size;  ///< without the newline
};

/// Takes 16 bytes for each line.
class VELHOST_API TRecordingIndex {
 public:
  /// To be called with the lines in order, then Complete() once.
  void Add(TAskedKey key, const TLinePlace& place);
  void Complete();
  std::size_t Size() const { return entries_.size(); }

  /// The lines with a key, one at each call and in order, and then the last one again and again. Empty if there is
  /// none.
  std::optional<TLinePlace> Next(TAskedKey key);

 private:
  struct TEntry {
    TAskedKey key;
    std::uint64_t start : 40;
    std::uint64_t size : 23;
    std::uint64_t isUsed : 1;
  };
  std::deque<TEntry> entries_;  // by key and place once it is complete; a vector would need twice the memory to grow
};

}  // namespace velhost
