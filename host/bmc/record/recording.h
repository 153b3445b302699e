// Recordings of a service processor's exchanges, as JSON Lines: a line about the server, then one line for each
// exchange and each reading of the clock, in order. man/velhost-recording.5 documents the format. A recording
// contains no credentials: they are not part of any exchange.
#pragma once
#include "host/base/api.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/descriptor.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/bmc/supervision.h"
#include "host/model/hostservices.h"

namespace velhost {

/// Where recorded answers come from, as results say it. Texts that are empty are left out.
struct TRecordedSource {
  std::vector<std::string> sp{};  ///< the service processors as the user named them
  std::string target{};           ///< the same in one text, without users
  bool isSimulated = false;
  std::string recorded{};  ///< when they had been recorded before, if this is the recording of a replay
  std::string serialNumber{};
  std::string uuid{};
};

/// The run that made a recording.
struct TRecordedRun {
  TRecordedSource source{};
  std::vector<std::string> classes{};  ///< in the order in which they were asked for
  bool singleRequest = false;
  std::string schemaSha256{};
};

/// The first line of a recording.
struct TRecordingHeader {
  std::string machineType;
  std::string started;       ///< ISO 8601; for human readers only
  int utcOffsetMinutes = 0;  ///< of the process's time zone: local standard time minus UTC
  TDiscovery discovery;
  std::optional<TRecordedRun> run{};  ///< empty in a recording of version 1
};

/// The C library's `timezone`, as an offset with the sign of a CIM datetime.
VELHOST_API int ProcessUtcOffsetMinutes();
/// Sets the offset of the process's time zone for good. Call it while the process has only one thread.
VELHOST_API void ApplyUtcOffset(int minutes);

/// A file that is created or emptied by the first write, so that a run without an exchange leaves an existing one
/// alone. Each line is a single write: if the process is killed, only the last line may be cut, which a replay accepts.
class VELHOST_API TRecordingFile : public ITextSink {
 public:
  /// Opens an existing file; otherwise checks that one could be created in its folder. Throws THostError (kNotCreated).
  explicit TRecordingFile(const std::string& path);
  /// Throws THostError: kNotCreated if the first write finds that the file cannot be created after all, otherwise
  /// kNotWritten.
  void Write(std::string_view text) override;

 private:
  void Begin();
  [[noreturn]] void Fail(EFailure kind, int error) const;

  std::string path_;
  TDescriptor descriptor_;
  bool hasBegun_ = false;
};

/// Writes a recording, beginning with the first exchange or clock reading; exchanges that a stopped run refuses before
/// that are left out. A failed write ends the recording but not the exchanges: their caller is a plugin, which is
/// unaware of it. The host checks for the failure afterwards.
class VELHOST_API TRecorder : public IExchangeObserver {
 public:
  /// `sink` is not owned.
  TRecorder(ITextSink& sink, const TRecordingHeader& header);

  void OnIpmi(const TIpmiExchange& exchange) override;
  void OnDot(const TDotExchange& exchange) override;
  void OnClock(const TCIMDateTime& localTime);

  /// The failure that ended the recording; empty if the recording is whole.
  const std::optional<THostError>& Failure() const { return failure_; }

 private:
  bool IsLeftOut(bool wasAttempted) const { return !wasAttempted && !firstLine_.empty(); }
  void WriteLine(const std::string& line);

  ITextSink& sink_;
  std::string firstLine_;  ///< until it has been written
  std::optional<THostError> failure_;
};

/// Records the clock readings of another environment.
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
