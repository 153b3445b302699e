// Access to the server's service processors: BMC nodes over IPMI, others by dot command.
#pragma once

#include "nkrovel20/api.h"
#include "nkrovel20/dotcmd.h"

namespace NKROVEL20 {

/// A handle to one BMC node. Whether that is a simulator, a recording or a driver is up to the host. Calls
/// block until the exchange is over, and never throw because one failed.
class NKROVEL20_API SPLibrary {
 public:
  /// A handle to node 0, owned by the caller.
  SPLibrary();
  ~SPLibrary();
  SPLibrary(const SPLibrary&) = delete;
  SPLibrary& operator=(const SPLibrary&) = delete;

  /// The handle to a BMC node, owned by the library and valid until the process ends. Never null: for a node
  /// that does not exist, every exchange fails.
  static SPLibrary* GetSplibraryInstance(int node);

  /// The number of BMC nodes.
  int GetNumberBMCNode();
  /// Whether the operating system's IPMI driver is present.
  bool IsIPMIDriversPresent();
  /// Whether the service processors can be reached by dot commands.
  bool checkSPComm();
  /// The number of service processors that answer dot commands.
  int discoverSPs();
  /// Whether the service processor takes dot commands rather than plain IPMI.
  bool isDotcommand();

  /// Carries out one IPMI exchange in `buffer`, which is laid out as in wire::TCommandBuffer and `capacity`
  /// bytes long. The request's data are the n bytes from byte 9 on, where n is byte 5.
  ///
  /// The response replaces byte 4 (completion code), byte 5 (number of data bytes) and everything from byte 9
  /// on; zeros follow its data. `*length` becomes 9 + the number of data bytes. If `capacity` is less than
  /// 256, the response is truncated to it, and byte 5 and `*length` are reduced accordingly; nothing beyond
  /// 256 bytes is changed.
  ///
  /// Returns false, and leaves `buffer` and `*length` unchanged, if no exchange took place. All known callers
  /// pass true for `flag`; it has no effect.
  bool sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool flag);

  /// Sends one dot command to service processor `spIndex` (from 0). Stores at most `bufferSize` bytes of the
  /// response in `response`, and their number in `*responseLength`. Returns false, and changes neither, if
  /// there was no answer.
  bool sendDotCommand(dotCmd* command, unsigned char* response, int* responseLength, int spIndex, int bufferSize);

 private:
  explicit SPLibrary(int node);
  int node_;
};

}  // namespace NKROVEL20
