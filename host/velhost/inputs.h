// What a run reads: files and pipes that the user has named, until the run is stopped.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

/// What an input is: by the beginning of its content where that tells, else by the suffix of its name (.toml, .mof).
enum class EFileKind { kUnknown, kSchema, kServerFile, kRecording, kResult, kCompressed };

/// A file and what messages call it.
struct TNamedFile {
  std::string name;  ///< "--log", "a file that --schema reads"
  std::string path;
};

/// The inputs of one run: what stops their reading, and which they were.
class TInputs {
 public:
  /// Not owned.
  explicit TInputs(const TStopSignal& stop) : stop_(stop) {}
  TInputs(const TInputs&) = delete;
  TInputs& operator=(const TInputs&) = delete;

  const TStopSignal& Stop() const { return stop_; }
  /// A file that `option` ("--schema") had read.
  void Note(const std::string& option, const std::string& path) {
    files_.push_back({"a file that " + option + " reads", path});
  }
  const std::vector<TNamedFile>& Files() const { return files_; }

 private:
  const TStopSignal& stop_;
  std::vector<TNamedFile> files_;
};

/// What a reader of inputs is to read.
struct TInputUse {
  std::string what;    ///< "the schema"
  std::string option;  ///< "--schema"
  EFileKind kind;      ///< kUnknown: whatever it is
  bool mayBePipe = true;
};

/// Reads one input with all of its files. Throws TEndedReading for a named file that is surely of another kind ("a.toml
/// is a server file, not a schema; give it as --sp sim:a.toml"), and once the run is stopped: "interrupted while the
/// schema was read; nothing was collected".
class TInputReader : public TFileReader {
 public:
  /// `paths` are those that the user has named. The inputs are not owned.
  TInputReader(TInputs& inputs, TInputUse use, const std::vector<std::string>& paths);
  std::string Read(const std::string& path, std::size_t limit) override;
  /// TStoredBytes::OfInput of the path, which is judged and noted as what Read reads.
  TStoredBytes Open(const std::string& path, std::size_t limit, std::size_t limitOfOthers);
  void CheckStop() override;

 private:
  void NoteAndJudge(const std::string& path, std::string_view start);

  TInputs& inputs_;
  TInputUse use_;
  std::vector<std::string> paths_;
};

}  // namespace velhost
