// Answers from a recording, in recorded order, instead of a service processor.
#pragma once
#include "host/base/api.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/base/linereader.h"
#include "host/base/sourcereader.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/record/recording.h"
#include "host/model/hostservices.h"

namespace velhost {

struct TRecordedLine;

inline constexpr std::size_t kLargestRecording = std::size_t{4} << 30U;
inline constexpr std::size_t kLargestRecordingOfAPipe = std::size_t{64} << 20U;  ///< which is kept in memory

/// Each exchange has to be the next recorded one. One that is not, and each one after it, fails; so
/// does each one behind the recording's last whole line. The host tells afterwards.
///
/// As environment: the recorded machine type, and the recorded readings of the clock. A reading that
/// was not recorded repeats the one before it, or the recording's start.
class VELHOST_API TReplay : public IServiceProcessor, public IHostEnvironment {
 public:
  /// Checks the whole recording, and reads it again, line by line, as it is asked; of a file no more than
  /// a line is in memory. A line that does not say what it should throws THostError (kMalformed) with file,
  /// line and column. A last line without its end was cut and does not count; neither does a first one,
  /// if it begins as recordings do, and then nothing is known of the server (HasHeader).
  /// A stop of `reader`, which is not owned and may be null, ends the check with TEndedReading.
  TReplay(const std::string& path, const TStoredBytes& recording, ISourceReader* reader = nullptr);
  /// The same of what Open() gives.
  TReplay(const std::string& path, ISourceReader& reader);
  /// From a file, or what `reader` has: THostError (kAbsent, kDenied) for what cannot be read.
  static TStoredBytes Open(const std::string& path, ISourceReader& reader);
  ~TReplay() override;
  TReplay(const TReplay&) = delete;
  TReplay& operator=(const TReplay&) = delete;

  /// Whether answers take as long as they took. They take no time unless set.
  void SetTiming(bool timing) { timing_ = timing; }
  const TRecordingHeader& Header() const { return header_; }
  bool HasHeader() const { return hasHeader_; }

  /// The first time that something else was asked for than was recorded: a diagnostic (an error) with
  /// the recording's line. Empty where that never was. velhost exits with kMalformed then.
  const std::optional<std::string>& Mismatch() const { return mismatch_; }
  /// Set where the recording is not whole: a diagnostic (a warning) that its last line is cut, or that
  /// more was asked for than it has.
  std::optional<std::string> CutWarning() const;

  TDiscovery Discover() override { return header_.discovery; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

  std::string MachineType() override { return header_.machineType; }
  TCIMDateTime LocalTime() override;

 private:
  void CheckAll(const TStoredBytes& recording, ISourceReader* reader);
  void Advance();
  const TRecordedLine* Next(const TRecordedLine& asked);
  bool Wait(const TRecordedLine& line, const TStopSignal& stop);
  std::string Diagnostic(bool isError, std::uint32_t line, const std::string& message) const;

  std::string path_;
  TRecordingHeader header_;
  bool hasHeader_ = false;
  TLineReader lines_;
  std::unique_ptr<TRecordedLine> next_;       // null after the last one
  std::unique_ptr<TRecordedLine> answering_;  // the one before it
  std::uint32_t number_ = 0;                  // of the line read last
  std::uint32_t wholeLines_ = 0;
  std::optional<std::string> mismatch_;
  std::uint32_t cutLine_ = 0;  // the number of the line that is cut; 0 where none is
  bool ranOut_ = false;
  bool timing_ = false;
  std::int64_t owedUs_ = 0;  // of waits, below the millisecond that a wait takes at least
  TCIMDateTime now_;
};

}  // namespace velhost
