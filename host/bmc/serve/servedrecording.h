// One BMC node of a recording, served over a wire.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/base/storedbytes.h"
#include "host/bmc/record/checkedrecording.h"
#include "host/bmc/record/image.h"
#include "host/bmc/serve/servednode.h"
#include "host/bmc/sim/serverfile.h"
#include "host/bmc/stopsignal.h"

namespace velhost {

/// Answers as an image of the recording. A request that was not recorded is answered like one to a simulated BMC that
/// has neither registers nor a timestamp nor storage areas: 0xCB for what it does not have, 0xC1 for an unknown
/// command.
class VELHOST_API TServedRecording : public TServedNode {
 public:
  /// Checks the whole recording. Throws THostError as TImage does, and if ipmi_sim cannot serve the node: it answers
  /// every request, and puts the manufacturer id into every answer to a storage-area request. `reader` (not owned) may
  /// be null.
  TServedRecording(const std::string& path, const TStoredBytes& recording, ISourceReader* reader, int node);

  const TCheckedRecording& Recording() const { return image_.Recording(); }

 private:
  std::optional<TIpmiAnswer> Send(const TIpmiRequest& request, std::size_t capacity) override;

  TImage image_;
  TServerFile bare_;
  TStopSignal never_;
};

}  // namespace velhost
