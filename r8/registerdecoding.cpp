// Turns the property declarations of a class into register reads, and the answers into CIM values.
#include <algorithm>
#include <array>
#include <boost/function.hpp>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "nkrovel20/taddtovectorcallback.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/constants.h"
#include "r8/r8errordata.h"
#include "wire/registerread.h"

namespace torgareg {

using namespace NKROVEL20;
namespace Record = wire::RegisterRecord;

namespace {

constexpr unsigned int kFoldedMode = 4;
constexpr std::size_t kUsualTranscript = 160;  // of a register with one address

// Machine types whose registers are read as raw values. For all others, including the empty one, the
// transport returns labelled records.
bool isEightByteFamily(const std::string& machineType) {
  return machineType == "4411" || machineType == "4414" || machineType == "4523" || machineType == "4524";
}

unsigned int familyLength(bool eightByteFamily) {
  return static_cast<unsigned int>(eightByteFamily ? Record::kValueSize : Record::kSize);
}

bool isIdentification(std::string_view name) {
  return name == "MachineType" || name == "DateTimeOfCollection" || name == "StatisticTime" || name == "InstanceID" ||
         name == "ElementName";
}

// One address per element of an array; a scalar, which a missing offset also is, counts as one address.
std::vector<TCIMValue> addressesOf(const TCIMValue& offset) {
  if (!offset.IsArray()) return std::vector<TCIMValue>(1, offset);
  return static_cast<const std::vector<TCIMValue>&>(offset);
}

std::string decimals(const std::vector<unsigned char>& bytes) {
  std::string text;
  appendDecimals(text, bytes.data(), bytes.size());
  return text;
}

using TRecordBytes = std::array<unsigned char, Record::kSize>;

void reverseRaw(const TRecordBytes& source, TRecordBytes& target, unsigned int mode) {
  for (std::size_t k = Record::kDecodedValue; k < 11 - mode; ++k) {
    target.at(k) = source.at(7 - mode - (k - Record::kDecodedValue));
  }
}

// The record's value bytes start one byte late: the first byte of the value is in the label.
void reverseLabelled(const TRecordBytes& source, TRecordBytes& target, unsigned int mode) {
  const std::size_t n = 10 - mode;
  for (std::size_t k = Record::kDecodedValue; k < n; ++k) {
    target.at(k) = source.at(12 - mode - (k - Record::kDecodedValue));
  }
  target.at(n) = source[2];
}

}  // namespace

TPropertyMap R8ErrorData::getRegisterValues(int index) {
  const TPropertyMap noContext;
  TPropertyMap values;
  std::vector<boost::shared_ptr<ICIMPropertyDecl>> properties;
  const boost::function<bool(boost::shared_ptr<ICIMPropertyDecl>)> addToVector =
      TAddToVectorCallback<ICIMPropertyDecl>(properties);
  collectedClass->EnumeratePropertyDecls(addToVector, noContext);
  for (const boost::shared_ptr<ICIMPropertyDecl>& property : properties) {
    const std::string& name = property->GetName(noContext);
    if (!isRegister(*property, name)) continue;
    TCIMValue value = getRegisterData(property, index);
    if (!value.IsNull()) values.emplace(name, std::move(value));
  }
  return values;
}

// One level only: properties declared above the direct superclass are not read. The classes are held while
// their names are in use, since nothing else may keep them alive.
bool R8ErrorData::isRegister(ICIMPropertyDecl& property, const std::string& name) const {
  const TPropertyMap noContext;
  const boost::shared_ptr<ICIMClass> originClass = property.GetClassOrigin(noContext);
  const std::string& origin = originClass->GetName(noContext);
  const std::string& own = collectedClass->GetName(noContext);
  const boost::shared_ptr<ICIMClass> superClass = collectedClass->GetSuperClass(noContext);
  const std::string& super = superClass->GetName(noContext);
  return (origin == own || origin == super) && !isIdentification(name);
}

// Only the PCI I/O bridge classes have several chips, numbered from 1.
unsigned char R8ErrorData::getChipSelector(int index) const {
  const std::string& name = collectedClass->GetName({});
  const bool isBridge = name == voPciBridgeClass || name == t4PciBridgeClass;
  return isBridge ? static_cast<unsigned char>(index + 1) : 0;
}

std::vector<unsigned char> R8ErrorData::readAddresses(const std::string& propertyName, const std::string& machineType,
                                                      const std::vector<TCIMValue>& addresses,
                                                      unsigned char chipSelector, unsigned int& lastAddress) {
  const bool eightByteFamily = isEightByteFamily(machineType);
  std::vector<unsigned char> bytes;
  std::string transcript;  // grows with each address
  transcript.reserve(kUsualTranscript);
  transcript.append(propertyName).append("\n\t");
  for (const TCIMValue& element : addresses) {
    const unsigned int address = element;
    lastAddress = address;
    // One extra zero byte: the dump is inclusive.
    std::array<unsigned char, Record::kSize + 1> record{};
    transcript.append(" at ").append(std::to_string(address)).append(" with length ");
    transcript.append(std::to_string(familyLength(eightByteFamily))).append("\nAbout to call the BMC.. \n");
    transcript.append(std::to_string(addresses.size())).append("MachineType = ").append(machineType).append("\n");
    logger->writeDebug(transcript);
    unsigned short length = 0;
    if (transport->getData(chipSelector, address, record.data(), &length, eightByteFamily)) {
      bytes.insert(bytes.end(), record.begin(), record.begin() + Record::kSize);
    } else {
      logger->writeDebug("Command sent to the BMC failed.");
    }
    logger->writeDebug("Contents of registerData:\n" +
                       printArray0(record.data(), std::min<unsigned long>(length, Record::kSize)));
  }
  return bytes;
}

TCIMValue R8ErrorData::getRegisterData(boost::shared_ptr<ICIMPropertyDecl> property, int index) {
  TCIMValue result;
  std::vector<TCIMValue> values;
  const std::string machineType = getMachineType();
  const unsigned int length = familyLength(isEightByteFamily(machineType));
  if (index < 0) {
    logger->writeDebug(
        "getRegisterData - Invalid data passed to getRegisterData. Unable to parse data for register value");
  } else {
    const unsigned char chipSelector = getChipSelector(index);
    const std::string& name = property->GetName({});
    TCIMValue offset;
    try {
      offset = property->GetQualifier("Offset", {})->GetValue();
    } catch (const TVELException&) {
      logger->writeDebug("Getting Qualifier 'Offset' Failed");
    }
    const std::vector<TCIMValue> addresses = addressesOf(offset);
    const unsigned int maxLen = property->GetQualifier("MaxLen", {})->GetValue();
    unsigned int lastAddress = 0;
    std::vector<unsigned char> bytes = readAddresses(name, machineType, addresses, chipSelector, lastAddress);
    ConvertToBigEndian(&bytes, lastAddress, maxLen == kFoldedMode ? kFoldedMode : 0);
    values.assign(bytes.begin(), bytes.end());
    logger->writeDebug("Displaying messenger\n");
    logger->writeDebug(decimals(bytes));
    const TCIMValue::TCIMType type = property->GetType({});
    if (values.size() == Record::kSize) {
      result.Set(type, length, values);
    } else {
      result.SetNullValue(TCIMValue::TCIMType::kUint8, length);
    }
  }
  logger->writeDebug("Size of cimvalues " + std::to_string(values.size()));
  logger->writeDebug("Register data value " + result.ToString(10));
  return result;
}

void R8ErrorData::ConvertToBigEndian(std::vector<unsigned char>* bytes, unsigned int address, unsigned int mode) {
  if (mode > kFoldedMode || bytes->size() != Record::kSize) return;
  TRecordBytes source{};
  std::copy(bytes->begin(), bytes->end(), source.begin());
  bytes->clear();
  if (mode == kFoldedMode) {
    for (std::size_t i = 0; i < 4; ++i) source.at(i) |= source.at(i + 4);
  }
  TRecordBytes target{};
  target[0] = static_cast<unsigned char>(address >> 16U);
  target[1] = static_cast<unsigned char>(address >> 8U);
  target[2] = static_cast<unsigned char>(address);
  if (isEightByteFamily(getMachineType())) {
    reverseRaw(source, target, mode);
  } else {
    reverseLabelled(source, target, mode);
  }
  if (mode == kFoldedMode) {
    std::copy(Record::kMarker.begin(), Record::kMarker.end(), target.begin() + Record::kMarkerOffset);
  }
  bytes->assign(target.begin(), target.end());
}

}  // namespace torgareg
