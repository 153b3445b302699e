#include "host/velhost/trace.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "host/base/descriptor.h"
#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/model/hostservices.h"
#include "host/velhost/messages.h"

namespace velhost {

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} << 10U;

}  // namespace

std::string FormatTraceJson(ILogger::EVELLogSeverity severity, const std::string& message) {
  const nlohmann::ordered_json line = {
      {"severity", static_cast<int>(severity)}, {"level", TTraceLogger::SeverityName(severity)}, {"message", message}};
  return SafeJson(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace)) + "\n";
}

ILogger::EVELLogSeverity ShownSeverity(int verbosity) {
  return static_cast<ILogger::EVELLogSeverity>(std::clamp(verbosity + 1, 1, 4));
}

// A trace file that cannot be written must not end a collection from a failing machine, so the error is kept and
// reported at the end.
class TTrace::TFile {
 public:
  explicit TFile(std::string path) : path_(std::move(path)) { buffer_.reserve(kBufferSize * 2); }
  ~TFile() {
    if (descriptor_) Flush();
  }
  TFile(const TFile&) = delete;
  TFile& operator=(const TFile&) = delete;

  void Open() {
    descriptor_ = TDescriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (descriptor_) return;
    throw THostError(EFailure::kNotCreated,
                     "cannot create trace file " + SafeText(path_) + ": " + std::strerror(errno));
  }
  // A line that holds a whole capture file is written directly, not copied into the buffer.
  void Write(const std::string& text) {
    if (descriptor_ && text.size() >= kBufferSize) {
      Flush();
      if (error_ == 0) error_ = WriteAll(descriptor_.Get(), text);
      return;
    }
    buffer_ += text;
    if (descriptor_ && buffer_.size() >= kBufferSize) Flush();
  }
  void Finish() {
    Flush();
    if (error_ == 0) return;
    throw THostError(EFailure::kNotWritten,
                     "cannot write trace file " + SafeText(path_) + ": " + std::strerror(error_));
  }

 private:
  void Flush() {
    if (error_ == 0) error_ = WriteAll(descriptor_.Get(), buffer_);
    buffer_.clear();
  }

  std::string path_;
  TDescriptor descriptor_;
  std::string buffer_;
  int error_ = 0;
};

TTrace::TTrace(const TCommonOptions& options) {
  if (!options.log.empty()) {
    file_ = std::make_unique<TFile>(options.log);
    const bool json = options.logFormat == ELogFormat::kJsonLines;
    logger_.AddSink(ILogger::kVerbose, [this, json](ILogger::EVELLogSeverity severity, const std::string& message) {
      file_->Write(json ? FormatTraceJson(severity, message) : TTraceLogger::FormatText(severity, message));
    });
  }
  logger_.AddSink(ShownSeverity(options.verbosity), [](ILogger::EVELLogSeverity severity, const std::string& message) {
    WriteToStandardError(TTraceLogger::FormatText(severity, message));
  });
  THostServices::SetCoreLogger(&logger_);
}

TTrace::~TTrace() { THostServices::SetCoreLogger(nullptr); }

void TTrace::OpenFile() {
  if (file_) file_->Open();
}

void TTrace::Finish() {
  if (file_) file_->Finish();
}

}  // namespace velhost
