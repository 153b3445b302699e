// Capture files: as instances carry them, and raw, in a folder.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/ciminstance.h"
#include "host/output/outputplace.h"

namespace velhost {

/// The property that holds a capture file's bytes.
inline constexpr std::string_view kCaptureDataProperty = "ErrRawData";

struct TCaptureFile {
  std::string fileName;    ///< the storage area
  std::string sourceNode;  ///< decimal, from 1
  std::string recordId;    ///< decimal, from 0
  std::string localTime;   ///< ISO 8601
  std::vector<std::uint8_t> data;
};

/// The bytes of "0a ff 00 ": two digits of either case and a blank for each, the last blank optional.
/// Empty for any other text.
std::optional<std::vector<std::uint8_t>> DecodeHexPairs(std::string_view text);

/// The capture file that the instance is: empty for an instance of another class, or one whose data
/// are not set, null or no hex pairs. Properties that are not set give empty texts.
std::optional<TCaptureFile> CaptureFileOf(const TInstance& instance);

/// "node1-cpu_err-0.bin", from the instance's SourceNode, FileName and RecordID. Slashes and unsafe
/// characters (see IsUnsafe) become underscores, and each part is cut to 80 bytes.
std::string CaptureFileName(const TCaptureFile& capture);

class TCaptureFolder {
 public:
  /// Creates the folder if it does not exist; its parent has to. It is held open, so that all files go into
  /// the same one. Throws THostError (kNotCreated), also if the path is a link that the kernel refuses to
  /// follow.
  explicit TCaptureFolder(const std::string& path);

  /// Writes the capture file that the instance holds and returns its path; empty for an instance that
  /// holds none (see CaptureFileOf). The file is there whole or not at all, and takes the place of
  /// whatever has its name: a link is replaced and never followed. Throws THostError (kNotCreated, kNotWritten) that
  /// names the file.
  std::optional<std::string> Write(const TInstance& instance) const;

 private:
  [[noreturn]] void FailToCreate(const std::string& reason) const;

  std::string path_;
  TDescriptor folder_;
};

}  // namespace velhost
