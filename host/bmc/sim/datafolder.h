// The folder of a server file, which its data files are read from.
#pragma once

#include <cstddef>
#include <string>

#include "host/base/api.h"
#include "host/base/storedbytes.h"

namespace velhost {

class VELHOST_API IDataFolder {
 public:
  virtual ~IDataFolder();
  /// The content of a data file. `name` is relative and has no "..". Throws THostError with a message that names the
  /// file: kAbsent or kDenied if it cannot be opened, kAbsent if it is not a regular file, kTooLarge if it is larger
  /// than `limit` bytes, kMalformed if it is outside the folder.
  virtual TStoredBytes Open(const std::string& name, std::size_t limit) = 0;
};

/// A folder of the file system. Names lead to files in it or below it; symbolic links cannot lead out.
class VELHOST_API TDataFolder : public IDataFolder {
 public:
  /// How names are resolved: by the kernel, which follows links that stay in the folder, or, on a kernel without
  /// openat2, folder by folder without following any link.
  enum class EWay { kKernel, kStepByStep };

  /// The folder of the file `path`. It is opened when the first data file is.
  explicit TDataFolder(const std::string& path, EWay way = EWay::kKernel);
  TStoredBytes Open(const std::string& name, std::size_t limit) override;

 private:
  TDescriptor OpenFile(const std::string& name);
  TDescriptor OpenStepByStep(const std::string& name) const;

  std::string file_;
  std::string prefix_;  // prefixed to names in messages: the folder as the user wrote it
  EWay way_;
  TDescriptor folder_;
};

}  // namespace velhost
