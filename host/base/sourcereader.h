// How text and data inputs are read: through one method, with an in-memory twin for tests.
#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/base/api.h"
#include "host/base/hosterror.h"

namespace velhost {

/// The whole input is not to be read, as when the run was stopped (kStopped). Passes through whoever turns other
/// failures of a read into diagnostics.
class VELHOST_API TEndedReading : public THostError {
 public:
  using THostError::THostError;
  TEndedReading(const TEndedReading&) = default;
  TEndedReading& operator=(const TEndedReading&) = default;
  ~TEndedReading() override;
};

class VELHOST_API ISourceReader {
 public:
  virtual ~ISourceReader();
  /// The whole content. An input that cannot be opened or is larger than `limit` bytes throws
  /// THostError (kAbsent, kDenied or kMalformed) with a message that names it.
  virtual std::string Read(const std::string& path, std::size_t limit) = 0;
  /// Whether what was read last lies in the folder or below, all links resolved; the empty path is the current folder.
  /// A pipe lies in every folder: whoever names one has its content already. A reader that cannot tell says no.
  virtual bool LiesIn(const std::string& folder);
  /// Throws TEndedReading once the run that reads is stopped; never by default. Whoever makes something of a text
  /// that may be large calls it every now and then.
  virtual void CheckStop();
};

/// Reads files. A folder, a device or a pipe is no input: what a file names, and the user does not, must not make its
/// reader wait.
class VELHOST_API TFileReader : public ISourceReader {
 public:
  TFileReader() = default;
  /// These paths, which the user has named, may be pipes. Each can be read once, until its writers have closed it. One
  /// that nothing comes from for so long throws THostError (kAbsent). CheckStop is asked meanwhile, at once when a
  /// signal is handled.
  explicit TFileReader(std::vector<std::string> pipes, std::chrono::milliseconds patience = std::chrono::minutes(1))
      : pipes_(std::move(pipes)), patience_(patience) {}
  std::string Read(const std::string& path, std::size_t limit) override;
  bool LiesIn(const std::string& folder) override;

 private:
  std::string ReadPipe(int descriptor, const std::string& path, std::size_t limit);

  std::vector<std::string> pipes_;
  std::chrono::milliseconds patience_{0};
  std::string realPath_;                          // of the file read last; empty where it is not known
  bool readPipe_ = false;                         // whether that was a pipe
  std::map<std::string, std::string> realPaths_;  // of the folders asked for
};

/// Serves texts from memory. There are no links.
class VELHOST_API TMemoryReader : public ISourceReader {
 public:
  void Add(const std::string& path, const std::string& content) { contents_[path] = content; }
  std::string Read(const std::string& path, std::size_t limit) override;
  bool LiesIn(const std::string& folder) override;

 private:
  std::map<std::string, std::string> contents_;
  std::string path_;  // of the text read last
};

}  // namespace velhost
