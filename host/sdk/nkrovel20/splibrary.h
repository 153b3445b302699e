// Access to the server's service processors: BMC nodes over IPMI, others over dot commands.
#pragma once

#include "nkrovel20/api.h"
#include "nkrovel20/dotcmd.h"

namespace NKROVEL20 {

/// A handle to one BMC node. What stands behind it (a simulator, a recording, a driver) is the
/// host's. Calls block until the exchange is over and never throw for a failed one.
class NKROVEL20_API SPLibrary {
 public:
  /// A handle to node 0, owned by the caller.
  SPLibrary();
  ~SPLibrary();
  SPLibrary(const SPLibrary&) = delete;
  SPLibrary& operator=(const SPLibrary&) = delete;

  /// The handle for one BMC node, owned by the library and valid until the process ends. Never
  /// null: with a node that does not exist every exchange fails.
  static SPLibrary* GetSplibraryInstance(int node);

  /// The number of BMC nodes.
  int GetNumberBMCNode();
  /// Whether the operating system's IPMI driver is present.
  bool IsIPMIDriversPresent();
  /// Whether the service processors can be spoken to by dot commands.
  bool checkSPComm();
  /// The number of service processors that answer dot commands.
  int discoverSPs();
  /// Whether the service processor takes dot commands rather than plain IPMI.
  bool isDotcommand();

  /// Carries out one IPMI exchange in `buffer` (wire::TCommandBuffer has the layout) of `capacity`
  /// bytes. The request's data are bytes 9 to 9 + n - 1, where n is byte 5. The response replaces
  /// bytes 4 (completion code), 5 (number of data bytes) and everything from 9 on, with zeros behind
  /// the data; `*length` becomes 9 + the number of data bytes. A capacity below 256 cuts the answer
  /// to it, byte 5 and length with it; behind 256 bytes nothing changes. Returns false, and leaves buffer and
  /// length as they were, when no exchange took place. `flag` is true in all known callers and has
  /// no effect here.
  bool sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool flag);

  /// Sends one dot command to service processor `spIndex` (from 0). At most `bufferSize` bytes of
  /// the response go to `response`; `*responseLength` becomes their number. Returns false, and
  /// leaves both as they were, when there was no answer.
  bool sendDotCommand(dotCmd* command, unsigned char* response, int* responseLength, int spIndex, int bufferSize);

 private:
  explicit SPLibrary(int node);
  int node_;
};

}  // namespace NKROVEL20
