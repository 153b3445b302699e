// Decodes the values of one chip instance from a register block, as directed by the class's qualifiers.
#include <array>
#include <boost/function.hpp>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "jfr/TJFRErrorData.h"
#include "nkrovel20/taddtovectorcallback.h"
#include "nkrovel20/tvelexception.h"
#include "plugin/constants.h"
#include "wire/registerblock.h"

namespace torgareg {

using namespace NKROVEL20;

namespace {

// The only place that reads records. Their positions come from the schema and are deliberately not validated:
// a record beyond the end of the block is made of fill characters.
unsigned char blockByte(const unsigned char* block, int offset) {
  const bool inside = offset >= 0 && offset < static_cast<int>(wire::RegisterBlock::kSize);
  return inside ? block[offset] : wire::RegisterBlock::kFill;
}

// Unlike the R8 path, this one does read a register called "ElementName".
bool isIdentification(std::string_view name) {
  return name == "MachineType" || name == "DateTimeOfCollection" || name == "StatisticTime" || name == "InstanceID";
}

}  // namespace

TCIMDateTime TJFRErrorData::getTimeStamp(const unsigned char* data) {
  namespace Block = wire::RegisterBlock;
  for (const std::size_t copy : {Block::kFirstCopy, Block::kSecondCopy}) {
    const unsigned char* const p = data + copy;
    timeStampFromSecondCopy = copy != Block::kFirstCopy ? 1 : 0;
    log->writeDebug("TimeStamp rawdata: \n");
    log->writeDebug(print2Array(const_cast<unsigned char*>(p), Block::kHeaderSize));  // not modified
    if (p[Block::kMonth] == 0 || p[Block::kDay] == 0) continue;
    return TCIMDateTime(static_cast<unsigned short>(2000 + p[Block::kYear]), p[Block::kMonth], p[Block::kDay],
                        p[Block::kHour], p[Block::kMinute], p[Block::kSecond], 0, 0);
  }
  throw TVELException(TVELStatusCode::kNoValidTimestamp);
}

TCIMValue TJFRErrorData::getRegisterData(boost::shared_ptr<ICIMPropertyDecl> property, unsigned char* data,
                                         int instance) {
  namespace Block = wire::RegisterBlock;
  const TPropertyMap noContext;
  const TCIMValue::TCIMType type = property->GetType(noContext);
  if (data == nullptr) {
    log->writeDebug(
        "getRegisterData - Invalid data passed to getRegisterData. Unable to parse data for register value");
    return TCIMValue(type, 0, {});
  }
  const unsigned short index = property->GetQualifier("Index", noContext)->GetValue();
  property->GetQualifier("MaxLen", noContext);  // looked up but not used
  // Records of the second copy are counted from the start of the block: the copy's offset is not added.
  const int base = timeStampFromSecondCopy == 0 ? Block::kHeaderSize : 0;
  const int p = base + (index + instance * Block::kRecordsPerInstance) * Block::kRecordStride;

  std::vector<TCIMValue> elements;
  elements.reserve(Block::kDecodedSize);
  for (int i = 0; i < Block::kIdentificationSize; ++i) elements.emplace_back(blockByte(data, p + i));
  for (const int character : Block::kEqualsSign) elements.emplace_back(character);
  for (int i = 0; i < Block::kValueSize; ++i)
    elements.emplace_back(blockByte(data, p + Block::kIdentificationSize + i));
  return TCIMValue(type, Block::kDecodedSize, elements);
}

TPropertyMap TJFRErrorData::getChipsetErrorRegisterValues(unsigned char* data, int instance) {
  log->writeVerbose("In getChipsetErrorRegisterValues()");
  std::vector<boost::shared_ptr<ICIMPropertyDecl>> properties;
  const boost::function<bool(boost::shared_ptr<ICIMPropertyDecl>)> addToVector =
      TAddToVectorCallback<ICIMPropertyDecl>(properties);
  const TPropertyMap noContext;
  requestedClass->EnumeratePropertyDecls(addToVector, noContext);
  TPropertyMap values;
  std::string line;
  for (const boost::shared_ptr<ICIMPropertyDecl>& property : properties) {
    const std::string& name = property->GetName(noContext);
    // Held while their names are in use, since nothing else may keep them alive.
    const boost::shared_ptr<ICIMClass> originClass = property->GetClassOrigin(noContext);
    const std::string& origin = originClass->GetName(noContext);
    const boost::shared_ptr<ICIMClass> superClass = requestedClass->GetSuperClass(noContext);
    const std::string& super = superClass->GetName(noContext);
    line.assign("propertyDecl = ").append(name).append(". classOrigin = ").append(origin);
    line.append(". superClass = ").append(super);
    log->writeVerbose(line);
    const bool declaredHere = origin == requestedClass->GetName(noContext) || origin == super;
    if (declaredHere && !isIdentification(name)) values[name] = getRegisterData(property, data, instance);
  }
  log->writeVerbose("Completed getChipsetErrorRegisterValues()");
  return values;
}

TPropertyMap TJFRErrorData::getChipErrorInfo(unsigned char* data, int instance) {
  const TCIMDateTime captureTime = getTimeStamp(data);
  TPropertyMap map = getChipsetErrorRegisterValues(data, instance);
  map.insert({statisticalTimeProp, TCIMValue(captureTime)});
  return map;
}

}  // namespace torgareg
