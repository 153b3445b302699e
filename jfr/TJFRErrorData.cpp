#include "jfr/TJFRErrorData.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <new>
#include <utility>

#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/constants.h"
#include "wire/registerblock.h"

namespace torgareg {

using namespace NKROVEL20;

TJFRErrorData::TJFRErrorData(boost::shared_ptr<ICIMClass> base, boost::shared_ptr<ICIMClass> requested)
    : timeStampFromSecondCopy(0),
      log(LogMessage::getInstance()),
      baseClass(base),
      requestedClass(requested),
      transport(std::make_unique<TNOVRequestTorgaReg>()),
      fSPInstances(transport->GetSPInstances()) {}

TJFRErrorData::~TJFRErrorData() = default;

std::vector<TPropertyMap> TJFRErrorData::getData() {
  std::vector<TPropertyMap> maps;
  try {
    const int count = getInstanceCount();
    log->writeDebug("Class supports " + dataToString<int>(count) + " instances on this machine");
    log->writeDebug("fSPInstances = " + dataToString<int>(fSPInstances) + ".");
    for (int s = 0; s < fSPInstances; ++s) collectServiceProcessor(s, count, maps);
  } catch (const TVELException& exception) {
    log->writeDebug(std::string("Encountered exception ") + exception.what() +
                    " during\t\t\t\t\t\t\t\tthe collection of register data.");
  }
  return maps;
}

void TJFRErrorData::collectServiceProcessor(int serviceProcessor, int count, std::vector<TPropertyMap>& maps) {
  // One extra zero byte: the dump of the block is inclusive.
  const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[wire::RegisterBlock::kSize + 1]);
  if (!block) {
    log->writeDebug("Unable to retrieve engineering information.");
    log->writeVerbose("Failed to allocate memory to store register data.");
    return;
  }
  // Deliberately not zero: whatever the response leaves out reads as 48, even a month or a day.
  std::fill_n(block.get(), wire::RegisterBlock::kSize, wire::RegisterBlock::kFill);
  block[wire::RegisterBlock::kSize] = 0;
  const auto length = static_cast<unsigned short>(
      transport->sendCommand(block.get(), static_cast<int>(wire::RegisterBlock::kSize), serviceProcessor));
  if (length == 0) {
    log->writeDebug("Unable to retrieve engineering information.");
    log->writeVerbose("");
    return;
  }
  log->writeDebug("Returned Data:\n");
  log->writeDebug(print2Array(block.get(), std::min<unsigned long>(length, wire::RegisterBlock::kSize)));
  decodeInstances(block.get(), count, maps);
}

void TJFRErrorData::decodeInstances(unsigned char* block, int count, std::vector<TPropertyMap>& maps) {
  for (int i = 0; i < count; ++i) {
    try {
      // Deliberately 0 for every instance: all of them have the same identity.
      TPropertyMap info = getCIMInstanceInfo(baseClass, 0);
      TPropertyMap map = getChipErrorInfo(block, i);
      // Identification properties override registers of the same name.
      for (auto& [name, value] : info) map[name] = std::move(value);
      maps.push_back(std::move(map));
    } catch (const TVELException& exception) {
      log->writeDebug(std::string("Unable to create chip instance due to caught exception ") + exception.what());
      maps.clear();
      if (exception.GetStatusCode().GetCode() == TVELStatusCode::kNoValidTimestamp) return;
    }
  }
}

int TJFRErrorData::getInstanceCount() {
  const auto qualifier = requestedClass->GetQualifier("MaxInstanceCount", {});
  return static_cast<unsigned short>(qualifier->GetValue());
}

std::string TJFRErrorData::getMachineType() {
  if (!requestedClass) return {};
  return TCIMSchemaHelper::GetMachineType(requestedClass->GetNamespace({}));
}

// All but one of the R8 classes are left out deliberately.
std::string TJFRErrorData::getChipDescription(const std::string& name) {
  const std::map<std::string, std::string> descriptions = {{pciBridgeClass, pciBridgeChipDesc},
                                                           {memCtlClass, memCtlChipDesc},
                                                           {voMemCtlClass, voMemCtlChipDesc},
                                                           {l3CacheClass, l3CacheChipDesc}};
  const auto found = descriptions.find(name);
  return found == descriptions.end() ? std::string() : found->second;
}

TPropertyMap TJFRErrorData::getCIMInstanceInfo(boost::shared_ptr<ICIMClass> cimClass, int instanceNumber) {
  log->writeVerbose("In getCIMInstanceInfo()");
  const std::string number = dataToString<int>(instanceNumber);
  const std::string& name = cimClass->GetName({});
  const std::string elementName = getChipDescription(name) + "," + number;
  const std::string machineType = getMachineType();
  const std::string instanceID = "KROSG:" + name + ":" + machineType + ":" + number;
  log->writeVerbose("chipDesc | instancdID = " + elementName + " | " + instanceID);
  TPropertyMap info = {{instanceIDProp, TCIMValue(instanceID)},
                       {elementNameProp, TCIMValue(elementName)},
                       {machineTypeProp, TCIMValue(machineType)}};
  log->writeVerbose("Completed getCIMInstanceInfo()");
  return info;
}

}  // namespace torgareg
