// A recording that was read once from beginning to end, so that nothing in it can be malformed when it is used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/textdiagnostic.h"
#include "host/bmc/record/recording.h"
#include "host/bmc/record/recordingline.h"
#include "nkrovel20/tcimdatetime.h"

namespace velhost {

inline constexpr std::size_t kLargestRecording = std::size_t{4} << 30U;
inline constexpr std::size_t kLargestRecordingOfAPipe = std::size_t{64} << 20U;  ///< kept in memory

class VELHOST_API TCheckedRecording {
 public:
  /// Called with each line after the first, in order. `text` is the line and `start` its offset in the recording.
  using TLineCallback = std::function<void(const TRecordedLine& line, std::string_view text, std::size_t start)>;

  /// A malformed line throws TDiagnosedError (kMalformed). A last line without a newline was cut and is ignored. So is
  /// a first line, if it begins like a recording; then nothing is known about the server (HasHeader). If `reader` (not
  /// owned, may be null) is stopped, the check ends with TEndedReading.
  TCheckedRecording(std::string path, const TStoredBytes& recording, ISourceReader* reader,
                    const TLineCallback& onLine = nullptr);
  /// Opens a file, or what `reader` supplies. Throws THostError (kAbsent, kDenied) if it cannot be read, kTooLarge if
  /// it is over the limit.
  static TStoredBytes Open(const std::string& path, ISourceReader& reader);

  const std::string& Path() const { return path_; }
  const TRecordingHeader& Header() const { return header_; }
  bool HasHeader() const { return hasHeader_; }
  std::uint32_t WholeLines() const { return wholeLines_; }
  /// When it begins as it says itself, or 1970.
  TCIMDateTime Start() const;
  /// A diagnostic (a warning) if its last line is cut.
  std::optional<TTextDiagnostic> CutWarning() const;
  /// A diagnostic about one of its lines.
  TTextDiagnostic Diagnostic(EDiagnosticSeverity severity, std::uint32_t line, const std::string& message) const;

 private:
  void Check(const TStoredBytes& recording, ISourceReader* reader, const TLineCallback& onLine);

  std::string path_;
  TRecordingHeader header_;
  bool hasHeader_ = false;
  std::uint32_t wholeLines_ = 0;
  std::uint32_t cutLine_ = 0;  // the number of the cut line; 0 if there is none
};

}  // namespace velhost
