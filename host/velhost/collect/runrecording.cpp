#include "host/velhost/collect/runrecording.h"

#include <utility>

#include "host/base/hosterror.h"

namespace velhost {

TRunRecording::TRunRecording(std::string path, TRecordedRun run, IServiceProcessor& serviceProcessor,
                             IHostEnvironment& environment)
    : path_(std::move(path)), plain_(environment) {
  if (path_.empty()) return;
  recorder_.emplace(file_, TRecordingHeader{environment.MachineType(), TSystemEnvironment().LocalTime().ToIso8601(),
                                            ProcessUtcOffsetMinutes(), serviceProcessor.Discover(), std::move(run)});
  recorded_.emplace(environment, *recorder_);
}

void TRunRecording::OpenFile() {
  if (!path_.empty()) file_.Open(path_);
}

void TRunRecording::Finish() const {
  if (recorder_ && recorder_->Failure()) throw THostError(*recorder_->Failure());
}

void TRunRecording::TLateFile::Open(const std::string& path) {
  file_.emplace(path);
  if (!waiting_.empty()) file_->Write(std::exchange(waiting_, {}));
}

void TRunRecording::TLateFile::Write(std::string_view text) {
  if (file_) {
    file_->Write(text);
  } else {
    waiting_ += text;
  }
}

}  // namespace velhost
