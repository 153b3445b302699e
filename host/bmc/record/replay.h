// Answers from a recording, in recorded order, in place of a service processor.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/base/textdiagnostic.h"
#include "host/bmc/iserviceprocessor.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/model/hostservices.h"

namespace velhost {

/// Each exchange must match the next recorded one. If one does not, it and every later one fails; so does every
/// exchange past the recording's last whole line. The host finds out afterwards.
///
/// As an environment, it supplies the recorded machine type and the recorded clock readings. A reading that was not
/// recorded repeats the previous one, or the recording's start.
class VELHOST_API TReplay : public IServiceProcessor, public IHostEnvironment {
 public:
  /// Checks the whole recording as TCheckedRecording does, then reads it again line by line as requests come; only one
  /// line of a file is in memory.
  TReplay(const std::string& path, const TStoredBytes& recording, ISourceReader* reader = nullptr);
  /// As above, with the result of TCheckedRecording::Open().
  TReplay(const std::string& path, ISourceReader& reader);
  ~TReplay() override;
  TReplay(const TReplay&) = delete;
  TReplay& operator=(const TReplay&) = delete;

  /// Whether answers take as long as they did when recorded. By default they take no time.
  void SetTiming(bool timing) { timing_ = timing; }
  const TCheckedRecording& Recording() const { return recording_; }

  /// A diagnostic (an error) for the first request that differs from the recorded one, with the recording's line;
  /// empty if there was none. velhost then fails with kMalformed.
  const std::optional<std::string>& Mismatch() const { return mismatch_; }
  /// Set if the recording is incomplete: a diagnostic (a warning) that its last line is cut, or that more was
  /// requested than it has.
  std::optional<TTextDiagnostic> CutWarning() const;

  TDiscovery Discover() override { return recording_.Header().discovery; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;
  /// kNotRecorded for an exchange from the first mismatch on, or past the last whole line; kLost for one that was
  /// recorded without an answer.
  ENoAnswer WhyNoAnswer() const override { return answering_ ? ENoAnswer::kLost : ENoAnswer::kNotRecorded; }

  std::string MachineType() override { return recording_.Header().machineType; }
  TCIMDateTime LocalTime() override;

 private:
  void Advance();
  const TRecordedLine* Next(const TRecordedLine& asked);
  bool Wait(const TRecordedLine& line, const TStopSignal& stop);

  TCheckedRecording recording_;
  TLineReader lines_;
  std::unique_ptr<TRecordedLine> next_;       // null after the last one
  std::unique_ptr<TRecordedLine> answering_;  // the one before next_; null if the latest request was not recorded
  std::uint32_t number_ = 0;                  // of the last line read
  std::optional<std::string> mismatch_;
  bool ranOut_ = false;
  bool timing_ = false;
  std::int64_t owedUs_ = 0;  // remaining time to wait, less than the millisecond that is the shortest wait
  TCIMDateTime now_;
};

}  // namespace velhost
