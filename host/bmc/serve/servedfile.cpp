#include "host/bmc/serve/servedfile.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "host/base/storedbytes.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/bmc/serve/servedrecording.h"
#include "host/bmc/serve/servedserver.h"

namespace velhost {

bool IsRecording(const std::string& path, ISourceReader& reader) {
  const TStoredBytes bytes =
      TStoredBytes::OfInput(path, std::numeric_limits<std::size_t>::max(), reader, kLargestRecordingOfAPipe);
  return bytes.Read(0, 1) == std::vector<std::uint8_t>{'{'};
}

std::unique_ptr<TServedNode> OpenServedNode(const std::string& path, int node, ISourceReader& reader) {
  if (IsRecording(path, reader)) {
    return std::make_unique<TServedRecording>(path, TCheckedRecording::Open(path, reader), &reader, node);
  }
  TServerFile server = ReadServerFile(path, reader);
  RefuseNotServed(ReasonNotToServe(server, node), path);
  return std::make_unique<TServedServer>(std::move(server), node);
}

}  // namespace velhost
