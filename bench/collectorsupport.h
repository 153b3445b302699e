// The environment of the collector in a benchmark: a host that discards everything, and schemas of classes
// with any number of registers.
#pragma once

#include <array>
#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/cimnamespace.h"
#include "host/model/hostservices.h"
#include "nkrovel20/taddtovectorcallback.h"
#include "nkrovel20/tpluginmanagernamespace.h"
#include "plugin/torgaplugin.h"

namespace bench {

using NKROVEL20::TCIMValue;
using velhost::TNamespace;
using velhost::TPropertyDefinition;
using velhost::TQualifierDefinition;

class TDroppingPluginManager : public NKROVEL20::TPluginManagerNamespace {
 public:
  NKROVEL20::TPluginManagerProvider* RegisterPlugin(NKROVEL20::IPluginCallbacks*) override {
    return reinterpret_cast<NKROVEL20::TPluginManagerProvider*>(this);  // any handle but null enables logging
  }
  boost::shared_ptr<NKROVEL20::ICIMClass> GetClass(const std::string&, const NKROVEL20::TPropertyMap&) override {
    return {};
  }
  std::string GetMachineType() const override { return {}; }
};

class TDroppingLogger : public NKROVEL20::ILogger {
 public:
  std::size_t bytes = 0;
  void Log(EVELLogSeverity, const std::string& message) override { bytes += message.size(); }
};

/// Installs the host's services during its lifetime, except for clock and machine type. The trace is counted
/// and dropped.
class THost {
 public:
  explicit THost(velhost::IServiceProcessor& serviceProcessor) {
    velhost::THostServices::SetPluginManager(boost::shared_ptr<NKROVEL20::ICIMNamespace>(new TDroppingPluginManager()));
    velhost::THostServices::SetCoreLogger(&logger);
    velhost::TServiceProcessorHub::Install(&serviceProcessor, nullptr);
  }
  ~THost() {
    velhost::TServiceProcessorHub::Install(nullptr, nullptr);
    velhost::THostServices::SetCoreLogger(nullptr);
    velhost::THostServices::SetPluginManager({});
  }
  THost(const THost&) = delete;
  THost& operator=(const THost&) = delete;

  TDroppingLogger logger;
};

inline TQualifierDefinition Number(const std::string& name, int value) { return {name, TCIMValue(value), {}, {}}; }

inline TPropertyDefinition RegisterProperty(int number, const std::vector<TQualifierDefinition>& qualifiers) {
  TPropertyDefinition property;
  property.name = "Register" + std::to_string(number);
  property.type = TCIMValue::TCIMType::kUint8;
  property.isArray = true;
  property.qualifiers = qualifiers;
  return property;
}

inline TPropertyDefinition Scalar(const std::string& name, TCIMValue::TCIMType::ECIMType type) {
  TPropertyDefinition property;
  property.name = name;
  property.type = type;
  return property;
}

/// The qualifiers of every class in these schemas.
inline std::vector<TQualifierDefinition> ClassQualifiers(int instances) {
  const TCIMValue::TCIMType text(TCIMValue::TCIMType::kString);
  return {{"SupportedMachineTypes", TCIMValue(text, 1, {TCIMValue("6203")}), {}, {}},
          Number("MaxInstanceCount", instances)};
}

/// The root class and the three base classes that a collector looks for, for machine type 6203.
inline boost::shared_ptr<TNamespace> MakeSchema() {
  using TType = TCIMValue::TCIMType;
  const auto schema = TNamespace::Create();
  schema->SetMachineType("6203");
  velhost::TClassDefinition top;
  top.name = "CIM_Top";
  top.properties = {Scalar("InstanceID", TType::kString), Scalar("ElementName", TType::kString),
                    Scalar("MachineType", TType::kString), Scalar("StatisticTime", TType::kDateTime)};
  schema->AddClass(top);
  for (const char* base :
       {"KROSG_PCIIOBRIDGE_StatisticData", "KROSG_MEMCTL_StatisticData", "KROSG_L3Cache_StatisticData"}) {
    velhost::TClassDefinition definition;
    definition.name = base;
    definition.superClass = "CIM_Top";
    schema->AddClass(definition);
  }
  return schema;
}

inline constexpr const char* kR8Class = "KROSG_VO_PCIIOBRIDGE_StatisticData";
inline constexpr const char* kJfrClass = "KROSG_X_PCIIOBRIDGE_StatisticData";

inline void AddR8Class(TNamespace& schema, int registers, int instances) {
  velhost::TClassDefinition definition;
  definition.name = kR8Class;
  definition.superClass = "CIM_Top";
  definition.qualifiers = ClassQualifiers(instances);
  for (int i = 0; i < registers; ++i) {
    definition.properties.push_back(RegisterProperty(i, {Number("Offset", 0x1000 + 8 * i), Number("MaxLen", 8)}));
  }
  schema.AddClass(definition);
}

inline void AddJfrClass(TNamespace& schema, int registers) {
  velhost::TClassDefinition definition;
  definition.name = kJfrClass;
  definition.superClass = "KROSG_PCIIOBRIDGE_StatisticData";
  definition.qualifiers = ClassQualifiers(1);
  for (int i = 0; i < registers; ++i) {
    definition.properties.push_back(RegisterProperty(i, {Number("Index", 2 * i)}));
  }
  schema.AddClass(definition);
}

inline void AddCaptureClass(TNamespace& schema) {
  velhost::TClassDefinition definition;
  definition.name = "KROSG_DCAPFile";
  for (const char* name :
       {"FileName", "ErrRawData", "SourceNode", "CreationClassName", "LogCreationClassName", "LogName", "RecordID"}) {
    definition.properties.push_back(Scalar(name, TCIMValue::TCIMType::kString));
  }
  definition.properties.push_back(Scalar("MessageTimestamp", TCIMValue::TCIMType::kDateTime));
  schema.AddClass(definition);
}

inline void Collect(torgareg::TTORGARegPluginCallbacks& plugin, const boost::shared_ptr<TNamespace>& schema,
                    const std::string& name) {
  std::vector<boost::shared_ptr<NKROVEL20::ICIMClass>> classes = {schema->FindClass(name)};
  plugin.GetData(schema, classes);
}

/// The host calls for one JFR instance, in the same number and order, with a value made beforehand. Between
/// the calls there is nothing but the map of values: no dump, no trace, no decoding.
inline void JfrHostCalls(const boost::shared_ptr<TNamespace>& schema, const TCIMValue& value) {
  const NKROVEL20::TPropertyMap noContext;
  const boost::shared_ptr<NKROVEL20::ICIMClass> requested = schema->FindClass(kJfrClass);
  std::vector<boost::shared_ptr<NKROVEL20::ICIMPropertyDecl>> properties;
  requested->EnumeratePropertyDecls(NKROVEL20::TAddToVectorCallback<NKROVEL20::ICIMPropertyDecl>(properties),
                                    noContext);
  NKROVEL20::TPropertyMap values;
  for (const auto& property : properties) {
    const std::string& name = property->GetName(noContext);
    const std::string& origin = property->GetClassOrigin(noContext)->GetName(noContext);
    requested->GetSuperClass(noContext)->GetName(noContext);
    if (origin != requested->GetName(noContext)) continue;
    property->GetType(noContext);
    static_cast<void>(static_cast<unsigned short>(property->GetQualifier("Index", noContext)->GetValue()));
    property->GetQualifier("MaxLen", noContext);
    values.emplace(name, value);
  }
  const boost::shared_ptr<NKROVEL20::ICIMInstance> instance = requested->CreateInstance(noContext);
  for (const auto& [name, registerValue] : values) instance->SetProperty(name, registerValue, noContext);
  instance->Commit(noContext);
}

/// Creates and prints the values of a JFR instance: fourteen elements each, printed once for the trace.
inline std::size_t JfrValues(int registers) {
  std::size_t size = 0;
  for (int i = 0; i < registers; ++i) {
    std::vector<TCIMValue> elements;
    elements.reserve(14);
    for (int k = 0; k < 14; ++k) elements.emplace_back(static_cast<unsigned char>(i * 37 + k * 11));
    size += TCIMValue(TCIMValue::TCIMType::kUint8, 14, elements).ToString(10).size();
  }
  return size;
}

/// Only the bookkeeping of the two functions above: per register, eight shared pointers are counted up and
/// down (three while its declaration is enumerated, origin, superclass, two qualifiers, the declaration
/// passed on), and five blocks of memory are allocated and freed (the elements as passed and as stored, the
/// shared payload, the text, a map node).
inline void JfrBookkeeping(int registers, const boost::shared_ptr<NKROVEL20::ICIMClass>& counted) {
  constexpr std::array<std::size_t, 5> kSizes = {560, 560, 96, 61, 104};
  for (int i = 0; i < registers; ++i) {
    for (int k = 0; k < 8; ++k) {
      boost::shared_ptr<NKROVEL20::ICIMClass> pointer = counted;
      asm volatile("" : : "r"(pointer.get()) : "memory");  // prevents the compiler from removing it
    }
    std::array<void*, kSizes.size()> blocks{};
    for (std::size_t k = 0; k < kSizes.size(); ++k) blocks[k] = operator new(kSizes[k]);
    asm volatile("" : : "r"(blocks.data()) : "memory");
    for (void* const block : blocks) operator delete(block);
  }
}

}  // namespace bench
