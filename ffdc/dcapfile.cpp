// Commits one capture file as a CIM instance.
#include <array>
#include <cstdio>
#include <string>

#include "nkrovel20/tcimschemahelper.h"
#include "nkrovel20/tosspecific.h"
#include "plugin/registerdump.h"
#include "plugin/torgaplugin.h"

namespace torgareg {

using namespace NKROVEL20;

namespace {

const std::string kFileClass = "KROSG_DCAPFile";

TPropertyMap makeRequestContext() {
  return {{TCIMSchemaHelper::kContextName, TCIMValue(TCIMSchemaHelper::kPluginNSPName)}};
}

// Numbers are passed to the host as C strings.
TCIMValue decimalText(int number) {
  std::array<char, sizeof "-2147483648"> text{};
  std::snprintf(text.data(), text.size(), "%d", number);
  return TCIMValue(text.data());
}

}  // namespace

void TTORGARegPluginCallbacks::AddErrFFDCinstance(boost::shared_ptr<ICIMNamespace> ns, unsigned char* data, int length,
                                                  const std::string& name, int node) {
  const TPropertyMap requestContext = makeRequestContext();
  const TCIMDateTime localTime = TOSSpecific::GetLocalTime();
  logger->writeDebug("Enter AddErrFFDCinstance funtion");
  const boost::shared_ptr<ICIMClass> fileClass = ns->GetClass(kFileClass, requestContext);
  std::string rawData;
  if (length > 0) appendHexPairs(rawData, data, static_cast<std::size_t>(length));
  logger->writeDebug("Data added into KROSG_DCAPFile class:" + rawData);
  publishCaptureFile(fileClass, rawData, localTime, name, node);
}

void TTORGARegPluginCallbacks::AddErrFFDCinstance(boost::shared_ptr<ICIMNamespace> ns, std::string rawData,
                                                  int /*length*/, const std::string& name, int node) {
  const TPropertyMap requestContext = makeRequestContext();
  const TCIMDateTime localTime = TOSSpecific::GetLocalTime();
  logger->writeDebug("Enter AddErrFFDCinstance funtion");
  publishCaptureFile(ns->GetClass(kFileClass, requestContext), rawData, localTime, name, node);
}

void TTORGARegPluginCallbacks::publishCaptureFile(const boost::shared_ptr<ICIMClass>& fileClass,
                                                  const std::string& rawData, const TCIMDateTime& localTime,
                                                  const std::string& name, int node) {
  const TPropertyMap noContext;
  const boost::shared_ptr<ICIMInstance> instance = fileClass->CreateInstance(noContext);
  instance->SetProperty("FileName", TCIMValue(name), noContext);
  instance->SetProperty("ErrRawData", TCIMValue(rawData), noContext);
  instance->SetProperty("MessageTimestamp", TCIMValue(localTime), noContext);
  instance->SetProperty("SourceNode", decimalText(node + 1), noContext);
  instance->SetProperty("CreationClassName", TCIMValue(kFileClass), noContext);
  instance->SetProperty("LogCreationClassName", TCIMValue(kFileClass), noContext);
  instance->SetProperty("LogName", TCIMValue(kFileClass), noContext);
  instance->SetProperty("RecordID", decimalText(recordCounter), noContext);
  // Incremented before the commit: the number of a failed commit is not reused.
  ++recordCounter;
  instance->Commit(noContext);
  logger->writeDebug("Exit AddErrFFDCinstance funtion");
}

}  // namespace torgareg
