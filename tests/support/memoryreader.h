// Inputs from memory, in place of files, and a reader whose run is stopped at a chosen check.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Serves texts by their paths; there are no links. Fails with the messages that a reader of files has.
class TMemoryReader : public velhost::ISourceReader {
 public:
  void Add(const std::string& path, const std::string& content) { contents_[path] = content; }

  std::string Read(const std::string& path, std::size_t limit) override {
    using namespace velhost;
    const auto found = contents_.find(path);
    if (found == contents_.end()) {
      throw THostError(EFailure::kAbsent, "cannot open " + path + ": No such file or directory");
    }
    if (found->second.size() > limit) {
      throw THostError(EFailure::kTooLarge, path + " is larger than the limit of " + std::to_string(limit) + " bytes");
    }
    path_ = path;
    return found->second;
  }

  bool LiesIn(const std::string& folder) override {
    // Relative to a common root, so that the empty path is a folder like any other.
    const std::filesystem::path root("/");
    const std::string path = (root / path_).lexically_normal().string();
    return path.starts_with((root / folder / "").lexically_normal().string());
  }

 private:
  std::map<std::string, std::string> contents_;
  std::string path_;  // of the text read last
};

class TStoppingReader : public TMemoryReader {
 public:
  void StopAt(std::size_t look) { looks_ = 0, last_ = look; }
  std::size_t Looks() const { return looks_; }
  void CheckStop() override {
    if (++looks_ == last_) throw velhost::TEndedReading(velhost::EFailure::kStopped, "stopped");
  }

 private:
  std::size_t looks_ = 0;
  std::size_t last_ = 0;
};

/// The number of times that `read` checks for a stop; 0 unless a stop at each of them ends it with TEndedReading.
template <typename TRead>
std::size_t LooksThatEnd(TStoppingReader& reader, TRead&& read) {
  reader.StopAt(0);
  read();
  const std::size_t looks = reader.Looks();
  for (std::size_t look = 1; look <= looks; ++look) {
    reader.StopAt(look);
    try {
      read();
      return 0;
    } catch (const velhost::TEndedReading&) {
    }
  }
  return looks;
}

}  // namespace tests
