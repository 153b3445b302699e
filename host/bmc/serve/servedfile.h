// A file to be served over a wire: a server file or a recording.
#pragma once

#include <memory>
#include <string>

#include "host/base/api.h"
#include "host/base/sourcereader.h"
#include "host/bmc/serve/servednode.h"

namespace velhost {

/// Whether a file is a recording, which begins with a brace; a server file cannot. Throws THostError like `reader` if
/// it cannot be read.
VELHOST_API bool IsRecording(const std::string& path, ISourceReader& reader);

/// Opens a file of either kind. Throws THostError if it is invalid, or the node cannot be served.
VELHOST_API std::unique_ptr<TServedNode> OpenServedNode(const std::string& path, int node, ISourceReader& reader);

}  // namespace velhost
