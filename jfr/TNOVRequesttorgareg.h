// The transport of the JFR collector: register blocks by dot command.
#pragma once

#include <cstdint>
#include <string>

#include "nkrovel20/splibrary.h"
#include "plugin/logmessage.h"
#include "plugin/registerdump.h"

namespace torgareg {

/// The constructor determines, once and for all, whether anything can be collected and from how many service
/// processors. Nothing is retried and nothing is thrown.
class TNOVRequestTorgaReg {
 public:
  /// Discovers the service processors.
  TNOVRequestTorgaReg();

  /// 0 if the service processor does not take dot commands or the communication check failed.
  unsigned char GetSPInstances();

  /// Fetches the register block of service processor `spIndex` (from 0) into `buffer`. Returns the length
  /// that the library reports, even if it also reports a failure.
  int sendCommand(unsigned char* buffer, int bufferSize, int spIndex);

  // Two IPMI requests that are part of the transport although no collector sends them. On failure, `*length`
  // is the low 16 bits of the response length; otherwise, the number of data bytes.

  /// Reads one register; on success, `value` receives its eight bytes in the order of the response.
  bool getData(unsigned char registerSelector, unsigned int address, unsigned char* value, unsigned short* length);
  /// Reads the capture time; on success, `timeStamp` receives its four bytes in the order of the response.
  bool getTimeStamp(unsigned char* timeStamp, unsigned short* length);

 private:
  friend struct TTestPeer;
  NKROVEL20::SPLibrary* spLibrary;  // not owned
  LogMessage* log;                  // not owned
  std::uint8_t SPInstances;
};

inline std::string printArray2(unsigned char* data, unsigned long last) { return dumpBytes(data, last); }

}  // namespace torgareg
