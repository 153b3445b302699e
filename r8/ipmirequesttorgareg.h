// The transport of the R8 collector: register and timestamp reads over IPMI.
#pragma once

#include <string>

#include "nkrovel20/splibrary.h"
#include "plugin/logmessage.h"
#include "plugin/registerdump.h"

namespace torgareg {

/// Each call sends one request. Nothing is retried, nothing is thrown, and no state is kept between calls.
class IPMIRequestTorgaReg {
 public:
  /// Talks to BMC node 0.
  IPMIRequestTorgaReg();

  /// Reads one register of a chip; only the low 24 bits of the address count. `out` has 14 bytes. Returns
  /// true on success: with `rawValue`, the first eight bytes of `out` are the value; otherwise `out` is the
  /// labelled record, that is, the last two header bytes and the first value byte, " = ", and the eight bytes
  /// from the second value byte on. Returns false, and leaves `out` alone, if there was no answer, if it has
  /// fewer than 14 data bytes, or if the completion code is not zero.
  ///
  /// `*length` becomes the number of data bytes or, without an answer, whatever the library left in its
  /// length argument.
  bool getData(unsigned char chipSelector, unsigned int address, unsigned char* out, unsigned short* length,
               bool rawValue);

  /// Reads the four raw bytes of the capture time into `out`; `*length` becomes the number of data bytes. On
  /// failure it returns false, leaves `out` alone, and sets `*length` to what the library left in its length
  /// argument: the size of the whole answer, if there was one.
  bool getTimeStamp(unsigned char* out, unsigned short* length);

 private:
  friend struct TTestPeer;
  NKROVEL20::SPLibrary* library;  // not owned
  LogMessage* logger;             // not owned
};

inline std::string printArray(unsigned char* data, unsigned long last) { return dumpBytes(data, last); }

}  // namespace torgareg
