// Capture files: decoded from instances, and written as raw bytes into a folder.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/ciminstance.h"
#include "host/output/outputfile.h"

namespace velhost {

/// The property that holds the bytes of a capture file.
inline constexpr std::string_view kCaptureDataProperty = "ErrRawData";

struct TCaptureFile {
  std::string fileName;    ///< the storage area
  std::string sourceNode;  ///< decimal, from 1
  std::string recordId;    ///< decimal, from 0
  std::string localTime;   ///< ISO 8601
  std::vector<std::uint8_t> data;
};

/// Decodes text such as "0a ff 00 ": two hex digits of either case and a blank per byte, the last blank optional.
/// Empty for any other text.
std::optional<std::vector<std::uint8_t>> DecodeHexPairs(std::string_view text);

/// The capture file in the instance. Empty if the instance is of another class, or if its data is unset, null or not
/// hex pairs. Unset properties give empty strings.
std::optional<TCaptureFile> CaptureFileOf(const TInstance& instance);

/// "node1-cpu_err-0.bin", from the instance's SourceNode, FileName and RecordID. Slashes and unsafe characters (see
/// IsUnsafe) become underscores, and each part is cut to 76 bytes, so that there is room for kPartialSuffix.
std::string CaptureFileName(const TCaptureFile& capture);

/// Follows the whole name of a capture file that is not complete.
inline constexpr std::string_view kPartialSuffix = ".partial";

class TCaptureFolder {
 public:
  /// Creates the folder if it does not exist; its parent must exist. The folder is held open, so that all files go
  /// into the same one. Throws THostError (kNotCreated), also if the path is a link that the kernel refuses to
  /// follow.
  explicit TCaptureFolder(const std::string& path);

  /// Writes the capture file in the instance and returns its path; empty if the instance holds none (see
  /// CaptureFileOf). If `isCut`, since a read failed, kPartialSuffix is part of its name. The file appears complete or
  /// not at all, and replaces whatever has its name; whatever has the other form of the name, with or without the
  /// suffix, is removed. A link is replaced or removed, never followed. Throws THostError (kNotCreated, kNotWritten)
  /// that names the file.
  std::optional<std::string> Write(const TInstance& instance, bool isCut) const;

 private:
  void Remove(const std::string& name) const;
  [[noreturn]] void FailToCreate(const std::string& reason) const;

  std::string path_;
  TDescriptor folder_;
};

}  // namespace velhost
