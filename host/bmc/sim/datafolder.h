// The folder of a server file, which its data files are taken from.
#pragma once

#include <cstddef>
#include <string>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"

namespace velhost {

class VELHOST_API IDataFolder {
 public:
  virtual ~IDataFolder();
  /// The content of a data file. `name` is relative and has no "..". What cannot be opened, is not a
  /// regular file, or is larger than `limit` bytes throws THostError (kAbsent, kDenied or
  /// kMalformed) with a message that names it.
  virtual TStoredBytes Open(const std::string& name, std::size_t limit) = 0;
};

/// A folder of the file system. A name leads to files in it or below; no symbolic link leads out.
class VELHOST_API TDataFolder : public IDataFolder {
 public:
  /// How names are followed: by the kernel, which takes links that stay in the folder, or, for a
  /// kernel without openat2, folder by folder without taking any link.
  enum class EWay { kKernel, kStepByStep };

  /// The folder of the file `path`. It is opened at the first data file.
  explicit TDataFolder(const std::string& path, EWay way = EWay::kKernel);
  TStoredBytes Open(const std::string& name, std::size_t limit) override;

 private:
  TDescriptor OpenFile(const std::string& name);
  TDescriptor OpenStepByStep(const std::string& name) const;

  std::string file_;
  std::string prefix_;  // of a name in messages: the folder as the user wrote it
  EWay way_;
  TDescriptor folder_;
};

/// The files of a reader, for tests.
class VELHOST_API TReaderFolder : public IDataFolder {
 public:
  /// `reader` is not owned.
  TReaderFolder(const std::string& path, ISourceReader& reader)
      : prefix_(path.substr(0, path.rfind('/') + 1)), reader_(reader) {}
  TStoredBytes Open(const std::string& name, std::size_t limit) override;

 private:
  std::string prefix_;
  ISourceReader& reader_;
};

}  // namespace velhost
