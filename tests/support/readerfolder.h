// The folder of a server file that does not exist as a file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/sim/datafolder.h"
#include "tests/support/namespaces.h"

namespace tests {

/// The files of a reader, as the folder of the server file at `path`.
class TReaderFolder : public velhost::IDataFolder {
 public:
  /// `reader` is not owned.
  TReaderFolder(const std::string& path, velhost::ISourceReader& reader)
      : prefix_(path.substr(0, path.rfind('/') + 1)), reader_(reader) {}
  velhost::TStoredBytes Open(const std::string& name, std::size_t limit) override {
    const std::string content = reader_.Read(prefix_ + name, limit);
    return std::vector<std::uint8_t>(content.begin(), content.end());
  }

 private:
  std::string prefix_;
  velhost::ISourceReader& reader_;
};

}  // namespace tests
