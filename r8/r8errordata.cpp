#include "r8/r8errordata.h"

#include <array>
#include <ctime>

#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/constants.h"
#include "wire/registerread.h"

namespace torgareg {

using namespace NKROVEL20;

R8ErrorData::R8ErrorData(boost::shared_ptr<ICIMClass> requestedClass)
    : logger(LogMessage::getInstance()),
      collectedClass(requestedClass),
      transport(std::make_unique<IPMIRequestTorgaReg>()) {}

R8ErrorData::~R8ErrorData() = default;

std::vector<TPropertyMap> R8ErrorData::getData() {
  std::vector<TPropertyMap> maps;
  try {
    const int count = getInstanceCount();
    logger->writeDebug("Class supports " + dataToString<int>(count) + " instances on this machine");
    const std::string& className = collectedClass->GetName({});
    const bool isMemoryController = className == voMemCtlClass || className == t4MemCtlClass;
    const std::string& description = isMemoryController ? voMemCtlChipDesc : voPciBridgeChipDesc;
    for (int index = 0; index < count; ++index) {
      logger->writeDebug("Current instance index " + dataToString<int>(index));
      maps.push_back(getInstanceData(description + "," + dataToString<int>(index), index));
    }
  } catch (const TVELException& exception) {
    logger->writeDebug(std::string("Encountered exception ") + exception.what() +
                       " during\t\t\t\t\t\t\t\tthe collection of register data.");
  }
  return maps;
}

TPropertyMap R8ErrorData::getInstanceData(const std::string& elementName, int index) {
  TPropertyMap map = getRegisterValues(index);
  if (map.empty()) return map;
  const std::string machineType = getMachineType();
  map.insert({instanceIDProp,
              TCIMValue("KROSG:" + collectedClass->GetName({}) + ":" + machineType + ":" + dataToString<int>(index))});
  map.insert({elementNameProp, TCIMValue(elementName)});
  map.insert({machineTypeProp, TCIMValue(machineType)});
  // Deliberately read twice: the second answer is the one that counts.
  if (!getTimeStampValue().IsNull()) map.insert({statisticalTimeProp, getTimeStampValue()});
  return map;
}

int R8ErrorData::getInstanceCount() {
  const auto qualifier = collectedClass->GetQualifier("MaxInstanceCount", {});
  return static_cast<unsigned short>(qualifier->GetValue());
}

std::string R8ErrorData::getMachineType() {
  if (!collectedClass) return {};
  return TCIMSchemaHelper::GetMachineType(collectedClass->GetNamespace({}));
}

TCIMValue R8ErrorData::getTimeStampValue() {
  std::array<unsigned char, wire::RegisterRead::kTimestampSize> bytes{};
  unsigned short length = static_cast<unsigned short>(bytes.size());
  TCIMValue result;
  std::string transcript;
  if (transport->getTimeStamp(bytes.data(), &length)) {
    transcript = "TimeStamp Size and Value" + dataToString<unsigned short>(length) + "\n";
    // Deliberately 16 bits: the first two bytes have no effect on the time.
    transcript += formatTimeStamp(static_cast<unsigned int>(bytes[2] << 8U) | bytes[3], result);
  } else {
    transcript = "Unable to determine the timestamp associated with the collected register data";
  }
  logger->writeDebug(transcript);
  return result;
}

// Sets `result` and returns the text for the transcript. The fields are in UTC although the offset is that of
// the local zone; this mismatch is deliberate.
std::string R8ErrorData::formatTimeStamp(unsigned int rawTime, TCIMValue& result) {
  const std::time_t seconds = rawTime;
  std::tm utc{};
  if (gmtime_r(&seconds, &utc) == nullptr) {
    logger->writeStatus("Unable to determine the timestamp associated with the collected register data.");
    return "An invalid date time was detected with a raw time value of " + std::to_string(rawTime);
  }
  tzset();
  const TCIMDateTime dateTime(static_cast<unsigned short>(utc.tm_year + 1900),
                              static_cast<unsigned short>(utc.tm_mon + 1), static_cast<unsigned int>(utc.tm_mday),
                              static_cast<unsigned short>(utc.tm_hour), static_cast<unsigned short>(utc.tm_min),
                              static_cast<unsigned short>(utc.tm_sec), 0, static_cast<short>(-(timezone / 60)));
  result.Set(dateTime);
  return "\nDate and Time" + dateTime.ToString();
}

}  // namespace torgareg
