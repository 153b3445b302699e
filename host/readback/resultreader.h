// Reads results: the forms `json` and `jsonl` of version 2, whose members may be in any order. The whole text is
// checked first; after that its instances are read one by one, as often as needed, and only one of them is in memory.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/textdiagnostic.h"
#include "host/readback/jsoncursor.h"
#include "host/readback/readresult.h"

namespace velhost {

inline constexpr std::size_t kLargestResult = std::size_t{4} << 30U;
inline constexpr std::size_t kLargestResultOfAPipe = std::size_t{64} << 20U;  ///< kept in memory
inline constexpr std::size_t kMostReadValues = std::size_t{4} << 20U;         ///< of one instance
inline constexpr std::size_t kMostReadEntries = std::size_t{1} << 20U;        ///< of one list

/// How much of a result is kept; all of it is checked.
enum class EReadDetail {
  kAll,
  kCompared  ///< no properties but the bytes of capture files, and no failed exchanges
};

class TResultReader {
 public:
  /// An instance and the place that it can be read again from.
  using TInstanceCallback = std::function<void(const TReadInstance&, const TJsonPlace&)>;

  /// Checks the whole text, and calls `onInstance` (may be empty) for each instance meanwhile. Throws TDiagnosedError
  /// (kMalformed) for what is wrong, and for version 1. A text that ends too early was cut: it is read up to its last
  /// whole instance. `reader` (not owned, may be null) is asked now and then whether to go on.
  TResultReader(const std::string& path, TStoredBytes text, EReadDetail detail, ISourceReader* reader = nullptr,
                const TInstanceCallback& onInstance = {});

  const std::string& Path() const { return path_; }
  const TReadResult& Result() const { return result_; }
  /// Set if the result was cut: a warning at the place where it ends.
  const std::optional<TTextDiagnostic>& CutWarning() const { return cutWarning_; }

  /// Reads all instances again, in their order.
  void ForEach(const TInstanceCallback& onInstance);
  /// The instance at a place that a callback was given. Valid until the next call.
  const TReadInstance& ReadAt(const TJsonPlace& place);

 private:
  struct TFirstObject;

  TFirstObject LookAtFirst();
  void CheckAll(const TInstanceCallback& onInstance);
  void ReadDocument(const TInstanceCallback& onInstance);
  void ReadLines(const TInstanceCallback& onInstance);
  void ReadInstances(const TInstanceCallback& onInstance);
  void ReadOne(const TInstanceCallback& onInstance);
  void NoteCut(const TDiagnosedError& end);

  std::string path_;
  TJsonCursor json_;
  EReadDetail detail_;
  bool isLines_ = false;
  bool isChecked_ = false;
  TReadResult result_;
  TReadInstance instance_;
  std::string runId_;  // of the latest line
  std::map<std::string, std::string> labels_;
  TJsonPlace instances_;  // of the array, or of the first line
  std::optional<TTextDiagnostic> cutWarning_;
};

}  // namespace velhost
