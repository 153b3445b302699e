// The abstract service processor: what stands behind SPLibrary, be it simulated, recorded, behind
// the operating system's driver or on the network.
#pragma once

#include <cstdint>
#include <span>

#include "host/base/api.h"
#include "host/bmc/stopsignal.h"
#include "nkrovel20/dotcmd.h"
#include "wire/commandbuffer.h"

namespace velhost {

class VELHOST_API IServiceProcessor {
 public:
  virtual ~IServiceProcessor();

  /// Discovery; see the operations of SPLibrary with these meanings.
  virtual int BmcNodeCount() = 0;
  virtual bool IpmiDriverPresent() = 0;
  virtual bool TakesDotCommands() = 0;
  virtual bool CheckCommunication() = 0;
  virtual int DiscoverServiceProcessors() = 0;

  /// One IPMI exchange with a BMC node (from 0). On true, `buffer` holds the response: bytes 0-3 and
  /// 6-8 as they were, completion code, data length, data, zeros behind; `length` is 9 + the number
  /// of data bytes. On false (no answer, no such node, no driver, stopped) both are as they were.
  virtual bool SendIpmi(int node, wire::TCommandBuffer& buffer, int& length, const TStopSignal& stop) = 0;

  /// One dot command to a service processor (from 0). On true, the response's first bytes are in
  /// `response` (never more than fit) and `length` is their number. On false both are as they were.
  virtual bool SendDot(int serviceProcessor, const dotCmd& command, std::span<std::uint8_t> response, int& length,
                       const TStopSignal& stop) = 0;
};

}  // namespace velhost
