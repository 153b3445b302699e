// The transport of the R8 collector: register and timestamp reads over IPMI.
#pragma once

#include <string>

#include "nkrovel20/splibrary.h"
#include "plugin/logmessage.h"
#include "plugin/registerdump.h"

namespace torgareg {

/// One request per call; nothing is retried and nothing thrown. Keeps no state between calls.
class IPMIRequestTorgaReg {
 public:
  /// Talks to BMC node 0.
  IPMIRequestTorgaReg();

  /// Reads one register of a chip; the low 24 bits of the address count. On true, `out` (14 bytes)
  /// holds, with `rawValue`, the eight value bytes in its first eight, else the labelled record: the
  /// last two header bytes and the first value byte, " = ", and eight bytes from the second value
  /// byte on. On false `out` is untouched: no answer, less than 14 data bytes, or a completion code.
  /// `*length` gets the number of data bytes in every case, or what the library left in its length
  /// when there was no answer.
  bool getData(unsigned char chipSelector, unsigned int address, unsigned char* out, unsigned short* length,
               bool rawValue);

  /// Reads the four raw bytes of the capture time into `out`. `*length` gets the number of data bytes; on
  /// false, `out` is untouched and `*length` is what the library left in its length: the whole answer's,
  /// if there was one.
  bool getTimeStamp(unsigned char* out, unsigned short* length);

 private:
  NKROVEL20::SPLibrary* library;  // not owned
  LogMessage* logger;             // not owned
};

inline std::string printArray(unsigned char* data, unsigned long last) { return dumpBytes(data, last); }

}  // namespace torgareg
