// The collector of the R8 chipset statistic classes.
#pragma once

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "nkrovel20/icimobjects.h"
#include "plugin/logmessage.h"
#include "plugin/registerdump.h"
#include "r8/ipmirequesttorgareg.h"

namespace torgareg {

/// Collects one class once. Nothing is cached: machine type, time and qualifiers are looked up again for
/// every instance and property.
class R8ErrorData {
 public:
  explicit R8ErrorData(boost::shared_ptr<NKROVEL20::ICIMClass> requestedClass);
  virtual ~R8ErrorData();

  /// One map per instance, in order. If none of an instance's registers answered, its map is empty. A
  /// TVELException ends the loop; the maps collected so far are returned.
  std::vector<NKROVEL20::TPropertyMap> getData();
  /// The map of one instance: its registers, identity and capture time.
  NKROVEL20::TPropertyMap getInstanceData(const std::string& elementName, int index);
  /// The class's "MaxInstanceCount".
  int getInstanceCount();
  /// The machine type known to the class's namespace; empty without a class.
  std::string getMachineType();
  /// The capture time, read from the BMC; null if unknown.
  NKROVEL20::TCIMValue getTimeStampValue();

  // r8/registerdecoding.cpp

  /// Name and value of every register property that answered, for one instance.
  NKROVEL20::TPropertyMap getRegisterValues(int index);
  /// The value of one register property: an array of 14 unsigned 8-bit values, or a null value.
  NKROVEL20::TCIMValue getRegisterData(boost::shared_ptr<NKROVEL20::ICIMPropertyDecl> property, int index);
  /// Rewrites the 14 bytes of a read in place: address, value (most significant byte first), tail. `mode` is
  /// 4 for the 32-bit conversion, otherwise 0. Any other number of bytes is left unchanged.
  void ConvertToBigEndian(std::vector<unsigned char>* bytes, unsigned int address, unsigned int mode);

 private:
  bool isRegister(NKROVEL20::ICIMPropertyDecl& property, const std::string& name) const;
  unsigned char getChipSelector(int index) const;
  std::vector<unsigned char> readAddresses(const std::string& propertyName, const std::string& machineType,
                                           const std::vector<NKROVEL20::TCIMValue>& addresses,
                                           unsigned char chipSelector, unsigned int& lastAddress);
  std::string formatTimeStamp(unsigned int rawTime, NKROVEL20::TCIMValue& result);

  friend struct TTestPeer;
  LogMessage* logger;  // not owned
  boost::shared_ptr<NKROVEL20::ICIMClass> collectedClass;
  std::string reserved;  // always empty
  std::unique_ptr<IPMIRequestTorgaReg> transport;
};

inline std::string printArray0(unsigned char* data, unsigned long last) { return dumpBytes(data, last); }

}  // namespace torgareg
