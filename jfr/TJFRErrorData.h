// The collector of the JFR chipset statistic classes.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jfr/TNOVRequesttorgareg.h"
#include "nkrovel20/icimobjects.h"
#include "plugin/logmessage.h"
#include "plugin/registerdump.h"

namespace torgareg {

/// Collects one class once: fetches the register block of every service processor and decodes one map per
/// chip instance from it.
class TJFRErrorData {
 public:
  /// `baseClass` determines the identity of the instances, `requestedClass` the registers.
  TJFRErrorData(boost::shared_ptr<NKROVEL20::ICIMClass> baseClass,
                boost::shared_ptr<NKROVEL20::ICIMClass> requestedClass);
  virtual ~TJFRErrorData();

  /// One map per service processor and instance, in this order. A block that cannot be decoded discards all
  /// maps collected so far, even those of earlier service processors.
  std::vector<NKROVEL20::TPropertyMap> getData();
  /// The requested class's "MaxInstanceCount".
  int getInstanceCount();
  /// The machine type known to the requested class's namespace; empty without a class.
  std::string getMachineType();
  /// The description that element names begin with; empty if the class has none.
  std::string getChipDescription(const std::string& name);
  /// Identifier, element name and machine type of one instance.
  NKROVEL20::TPropertyMap getCIMInstanceInfo(boost::shared_ptr<NKROVEL20::ICIMClass> cimClass, int instanceNumber);

  // Implemented in jfr/registerdecoding.cpp. `data` is a register block of 4096 bytes.

  /// The capture time from the first header copy with a non-zero month and day; remembers which copy that
  /// was. Throws TVELException with status 21 if neither has them.
  NKROVEL20::TCIMDateTime getTimeStamp(const unsigned char* data);
  /// The value of one register property: an array of 14 values of the declared type, or an empty array if
  /// `data` is null.
  NKROVEL20::TCIMValue getRegisterData(boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> property, unsigned char* data,
                                       int instance);
  /// Name and value of every register property of the requested class.
  NKROVEL20::TPropertyMap getChipsetErrorRegisterValues(unsigned char* data, int instance);
  /// The same, plus the capture time.
  NKROVEL20::TPropertyMap getChipErrorInfo(unsigned char* data, int instance);

 private:
  void collectServiceProcessor(int serviceProcessor, int count, std::vector<NKROVEL20::TPropertyMap>& maps);
  void decodeInstances(unsigned char* block, int count, std::vector<NKROVEL20::TPropertyMap>& maps);

  friend struct TTestPeer;
  std::int32_t timeStampFromSecondCopy;
  LogMessage* log;  // not owned
  boost::shared_ptr<NKROVEL20::ICIMClass> baseClass;
  boost::shared_ptr<NKROVEL20::ICIMClass> requestedClass;
  std::unique_ptr<TNOVRequestTorgaReg> transport;
  std::string className;  // initially empty
  std::uint8_t fSPInstances;
};

inline std::string print2Array(unsigned char* data, unsigned long last) { return dumpBytes(data, last); }

}  // namespace torgareg
