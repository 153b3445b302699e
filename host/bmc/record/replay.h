// Answers from a recording, in recorded order, in place of a service processor.
#pragma once
#include "host/base/api.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/textdiagnostic.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/record/recording.h"
#include "host/model/hostservices.h"

namespace velhost {

struct TRecordedLine;

inline constexpr std::size_t kLargestRecording = std::size_t{4} << 30U;
inline constexpr std::size_t kLargestRecordingOfAPipe = std::size_t{64} << 20U;  ///< kept in memory

/// Each exchange must match the next recorded one. If one does not, it and every later one fails; so does every
/// exchange past the recording's last whole line. The host finds out afterwards.
///
/// As an environment, it supplies the recorded machine type and the recorded clock readings. A reading that was not
/// recorded repeats the previous one, or the recording's start.
class VELHOST_API TReplay : public IServiceProcessor, public IHostEnvironment {
 public:
  /// Checks the whole recording, then reads it again line by line as requests come; only one line of a file is in
  /// memory. A malformed line throws TDiagnosedError (kMalformed). A last line without a
  /// newline was cut and is ignored. So is a first line, if it begins like a recording; then nothing is known about
  /// the server (HasHeader). If `reader` (not owned, may be null) is stopped, the check ends with TEndedReading.
  TReplay(const std::string& path, const TStoredBytes& recording, ISourceReader* reader = nullptr);
  /// As above, with the result of Open().
  TReplay(const std::string& path, ISourceReader& reader);
  /// Opens a file, or what `reader` supplies. Throws THostError (kAbsent, kDenied) if it cannot be read, kTooLarge if
  /// it is over the limit.
  static TStoredBytes Open(const std::string& path, ISourceReader& reader);
  ~TReplay() override;
  TReplay(const TReplay&) = delete;
  TReplay& operator=(const TReplay&) = delete;

  /// Whether answers take as long as they did when recorded. By default they take no time.
  void SetTiming(bool timing) { timing_ = timing; }
  const TRecordingHeader& Header() const { return header_; }
  bool HasHeader() const { return hasHeader_; }

  /// A diagnostic (an error) for the first request that differs from the recorded one, with the recording's line;
  /// empty if there was none. velhost then fails with kMalformed.
  const std::optional<std::string>& Mismatch() const { return mismatch_; }
  /// Set if the recording is incomplete: a diagnostic (a warning) that its last line is cut, or that more was
  /// requested than it has.
  std::optional<TTextDiagnostic> CutWarning() const;

  TDiscovery Discover() override { return header_.discovery; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;
  /// kNotRecorded for an exchange from the first mismatch on, or past the last whole line; kLost for one that was
  /// recorded without an answer.
  ENoAnswer WhyNoAnswer() const override { return answering_ ? ENoAnswer::kLost : ENoAnswer::kNotRecorded; }

  std::string MachineType() override { return header_.machineType; }
  TCIMDateTime LocalTime() override;

 private:
  void CheckAll(const TStoredBytes& recording, ISourceReader* reader);
  void Advance();
  const TRecordedLine* Next(const TRecordedLine& asked);
  bool Wait(const TRecordedLine& line, const TStopSignal& stop);
  TTextDiagnostic Diagnostic(EDiagnosticSeverity severity, std::uint32_t line, const std::string& message) const;

  std::string path_;
  TRecordingHeader header_;
  bool hasHeader_ = false;
  TLineReader lines_;
  std::unique_ptr<TRecordedLine> next_;       // null after the last one
  std::unique_ptr<TRecordedLine> answering_;  // the one before next_; null if the latest request was not recorded
  std::uint32_t number_ = 0;                  // of the last line read
  std::uint32_t wholeLines_ = 0;
  std::optional<std::string> mismatch_;
  std::uint32_t cutLine_ = 0;  // the number of the cut line; 0 if there is none
  bool ranOut_ = false;
  bool timing_ = false;
  std::int64_t owedUs_ = 0;  // remaining time to wait, less than the millisecond that is the shortest wait
  TCIMDateTime now_;
};

}  // namespace velhost
