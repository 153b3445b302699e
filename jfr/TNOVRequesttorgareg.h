// The transport of the JFR collector: register blocks by dot command.
#pragma once

#include <cstdint>
#include <string>

#include "nkrovel20/splibrary.h"
#include "plugin/logmessage.h"
#include "plugin/registerdump.h"

namespace torgareg {

/// Whether anything can be collected, and from how many service processors, is settled once, when
/// the object is made. Nothing is retried and nothing thrown.
class TNOVRequestTorgaReg {
 public:
  /// Discovers the service processors.
  TNOVRequestTorgaReg();

  /// 0 where the service processor takes no dot commands or the communication check failed.
  unsigned char GetSPInstances();

  /// Fetches the register block of service processor `spIndex` (from 0) into `buffer` and returns
  /// the length that the library reports, also where it reports a failure beside it.
  int sendCommand(unsigned char* buffer, int bufferSize, int spIndex);

  // Two IPMI requests that belong to the transport although no collector sends them. `*length` gets
  // the low 16 bits of the response length on failure, else the number of data bytes.

  /// Reads one register; on true, `value` holds its eight bytes as they lie in the response.
  bool getData(unsigned char registerSelector, unsigned int address, unsigned char* value, unsigned short* length);
  /// Reads the capture time; on true, `timeStamp` holds its four bytes as they lie in the response.
  bool getTimeStamp(unsigned char* timeStamp, unsigned short* length);

 private:
  NKROVEL20::SPLibrary* spLibrary;  // not owned
  LogMessage* log;                  // not owned
  std::uint8_t SPInstances;
};

inline std::string printArray2(unsigned char* data, unsigned long last) { return dumpBytes(data, last); }

}  // namespace torgareg
