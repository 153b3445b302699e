// The recording that --record writes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/bmc/record/recording.h"

namespace velhost {

/// The recording of a run; without a path it does nothing. The file is created or emptied by the first exchange or
/// clock reading, but not before OpenFile: an existing file must survive a plugin that cannot be loaded. What is
/// recorded earlier is buffered.
class TRunRecording {
 public:
  /// The service processor and the environment are not owned.
  TRunRecording(std::string path, TRecordedRun run, IServiceProcessor& serviceProcessor, IHostEnvironment& environment);
  TRunRecording(const TRunRecording&) = delete;
  TRunRecording& operator=(const TRunRecording&) = delete;

  /// Throws THostError (kNotCreated, kNotWritten).
  void OpenFile();
  /// Null if nothing is recorded.
  IExchangeObserver* Observer() { return recorder_ ? &*recorder_ : nullptr; }
  /// The environment to use, whose clock readings are recorded.
  IHostEnvironment& Environment() { return recorded_ ? static_cast<IHostEnvironment&>(*recorded_) : plain_; }
  /// Throws the first write failure, if there was one.
  void Finish() const;

 private:
  class TLateFile : public ITextSink {
   public:
    void Open(const std::string& path);
    void Write(std::string_view text) override;

   private:
    std::string waiting_;
    std::optional<TRecordingFile> file_;
  };

  std::string path_;
  IHostEnvironment& plain_;
  TLateFile file_;
  std::optional<TRecorder> recorder_;
  std::optional<TRecordingEnvironment> recorded_;
};

}  // namespace velhost
