#include "host/velhost/resultinput.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/base/text.h"
#include "host/output/outputfile.h"
#include "host/readback/resultreader.h"
#include "host/velhost/messages.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

namespace fs = std::filesystem;

std::string TextOf(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

/// A folder that only this user can read, which is gone afterwards.
class TWorkFolder {
 public:
  TWorkFolder() {
    std::error_code failed;
    std::string name = (fs::temp_directory_path(failed) / "velhost-XXXXXX").string();
    if (failed || mkdtemp(name.data()) == nullptr) {
      throw THostError(EFailure::kNotCreated, "cannot create a temporary folder for the replay");
    }
    path_ = name;
  }
  ~TWorkFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TWorkFolder(const TWorkFolder&) = delete;
  TWorkFolder& operator=(const TWorkFolder&) = delete;
  std::string File(const char* name) const { return (path_ / name).string(); }

 private:
  fs::path path_;
};

// A pipe has been read already, so the replay reads a copy.
void Copy(const TStoredBytes& bytes, const std::string& path) {
  TOutputFile file(path);
  file.Write(TextOf(bytes.Read(0, bytes.Size())));
  file.Commit();
}

TStoredBytes Replayed(const std::string& path, const TStoredBytes& recording, const TCommandLine& commandLine,
                      const TInstallation& installation) {
  const TWorkFolder folder;
  std::error_code ignored;
  const bool isFile = fs::is_regular_file(path, ignored);
  const std::string source = isFile ? path : folder.File("recording.jsonl");
  if (!isFile) Copy(recording, source);
  TCommandLine replay;
  replay.common = commandLine.common;
  replay.common.serviceProcessors = {"replay:" + source};
  replay.collect.format = "json";
  replay.collect.output = folder.File("result.json");
  replay.collect.progress = EWhen::kNever;
  try {
    Collect(replay, installation);
  } catch (const THostError& failure) {
    if (!fs::exists(replay.collect.output, ignored)) throw;
    Say(SafeText(path) + ": " + failure.what());  // the result says it too
  }
  TFileReader reader;
  return TStoredBytes::OfInput(replay.collect.output, kLargestResult, reader, 0);
}

}  // namespace

TStoredBytes OpenResult(const std::string& path, const TCommandLine& commandLine, const TInstallation& installation,
                        TInputReader& reader) {
  TStoredBytes bytes = reader.Open(path, kLargestResult, kLargestResultOfAPipe);
  const std::string start = TextOf(bytes.Read(0, kFileKindBytes));
  const std::size_t endSize = std::min(bytes.Size(), kFileKindBytes);
  const std::string end = TextOf(bytes.Read(bytes.Size() - endSize, endSize));
  const EFileKind kind = KindOfFile(path, start, end);
  if (kind == EFileKind::kRecording) return Replayed(path, bytes, commandLine, installation);
  const std::string wrong = WrongKindText(EFileKind::kResult, path, start, end);
  if (!wrong.empty()) throw THostError(EFailure::kMalformed, wrong);
  return bytes;
}

TInputReader ReaderOfResults(TInputs& inputs, const std::string& command, const std::vector<std::string>& paths) {
  return {inputs, {"the results", command, EFileKind::kUnknown}, paths};
}

}  // namespace velhost
