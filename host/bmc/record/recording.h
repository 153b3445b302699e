// Recordings of what a service processor was asked and answered, as JSON Lines: a line about the
// server, then one line for each exchange and each reading of the clock, in their order.
// man/velhost-recording.5 has the form. A recording holds no credentials: those of a session with
// a BMC are no part of an exchange.
#pragma once
#include "host/base/api.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/base/descriptor.h"
#include "host/base/hosterror.h"
#include "host/base/textsink.h"
#include "host/bmc/supervision.h"
#include "host/model/hostservices.h"

namespace velhost {

/// The first line of a recording.
struct TRecordingHeader {
  std::string machineType;
  std::string started;       ///< for people; ISO 8601
  int utcOffsetMinutes = 0;  ///< of the process's time zone: local standard time minus UTC
  TDiscovery discovery;
};

/// The offset that the C library's `timezone` gives, with the sign of a CIM datetime.
VELHOST_API int ProcessUtcOffsetMinutes();
/// Makes that the offset of the process's time zone for good. Call it while the process has one thread.
VELHOST_API void ApplyUtcOffset(int minutes);

/// A file that takes one line with one write: a killed process leaves whole lines, of which the last
/// may be cut, as a replay expects.
class VELHOST_API TRecordingFile : public ITextSink {
 public:
  /// Creates or empties the file; THostError (kNotCreated) where that fails.
  explicit TRecordingFile(const std::string& path);
  /// THostError (kNotWritten) where it cannot.
  void Write(std::string_view text) override;

 private:
  std::string path_;
  TDescriptor descriptor_;
};

/// Writes a recording. A write that fails ends the recording but not the exchanges: their caller is
/// a plugin, which knows nothing of it. The host asks for the failure afterwards.
class VELHOST_API TRecorder : public IExchangeObserver {
 public:
  /// Writes the first line. `sink` is not owned; its failure passes on from here.
  TRecorder(ITextSink& sink, const TRecordingHeader& header);

  void OnIpmi(const TIpmiExchange& exchange) override;
  void OnDot(const TDotExchange& exchange) override;
  void OnClock(const TCIMDateTime& localTime);

  /// The failure that ended the recording; empty where it is whole.
  const std::optional<THostError>& Failure() const { return failure_; }

 private:
  void WriteLine(const std::string& line);

  ITextSink& sink_;
  std::optional<THostError> failure_;
};

/// Records the readings of another environment's clock.
class VELHOST_API TRecordingEnvironment : public IHostEnvironment {
 public:
  /// Neither is owned.
  TRecordingEnvironment(IHostEnvironment& inner, TRecorder& recorder) : inner_(inner), recorder_(recorder) {}
  std::string MachineType() override { return inner_.MachineType(); }
  TCIMDateTime LocalTime() override;

 private:
  IHostEnvironment& inner_;
  TRecorder& recorder_;
};

}  // namespace velhost
