// Access to private state of the collector's classes, which befriend the peer. It also states the offset of each
// field, because the objects are used by a separately built host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "jfr/TJFRErrorData.h"
#include "plugin/torgaplugin.h"
#include "r8/r8errordata.h"

namespace torgareg {

/// The fields of an object, each by reference, so that reading one gives its current value.
struct TTestPeer {
  struct TPlugin {
    NKROVEL20::TPluginManagerProvider*& pluginProvider;
    boost::shared_ptr<NKROVEL20::ICIMClass>& currentClass;
    LogMessage*& logger;
    std::string& machineType;
    std::int32_t& recordCounter;
  };
  struct TR8Transport {
    NKROVEL20::SPLibrary* const& library;
    LogMessage* const& logger;
  };
  struct TR8Collector {
    LogMessage* const& logger;
    const boost::shared_ptr<NKROVEL20::ICIMClass>& collectedClass;
    const std::string& reserved;
    const std::unique_ptr<IPMIRequestTorgaReg>& transport;
  };
  struct TJfrTransport {
    NKROVEL20::SPLibrary* const& spLibrary;
    LogMessage* const& log;
    const std::uint8_t& spInstances;
  };
  struct TJfrCollector {
    const std::int32_t& timeStampFromSecondCopy;
    LogMessage* const& log;
    const boost::shared_ptr<NKROVEL20::ICIMClass>& baseClass;
    const boost::shared_ptr<NKROVEL20::ICIMClass>& requestedClass;
    const std::unique_ptr<TNOVRequestTorgaReg>& transport;
    const std::string& className;
    const std::uint8_t& spInstances;
  };

  static TPlugin FieldsOf(TTORGARegPluginCallbacks& of) {
    return {of.pluginProvider, of.currentClass, of.logger, of.machineType, of.recordCounter};
  }
  static TR8Transport FieldsOf(const IPMIRequestTorgaReg& of) { return {of.library, of.logger}; }
  static TR8Collector FieldsOf(const R8ErrorData& of) {
    return {of.logger, of.collectedClass, of.reserved, of.transport};
  }
  static TJfrTransport FieldsOf(const TNOVRequestTorgaReg& of) { return {of.spLibrary, of.log, of.SPInstances}; }
  static TJfrCollector FieldsOf(const TJFRErrorData& of) {
    return {of.timeStampFromSecondCopy,
            of.log,
            of.baseClass,
            of.requestedClass,
            of.transport,
            of.className,
            of.fSPInstances};
  }
  static LogMessage*& Singleton() { return LogMessage::pLogMsg; }

  /// Never called: the compiler checks the offsets because this is a member. Support for `offsetof` in a class with
  /// virtual functions is up to the compiler; both of ours have it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
  static constexpr void CheckPlaces() {
    static_assert(offsetof(TTORGARegPluginCallbacks, pluginProvider) == 16);
    static_assert(offsetof(TTORGARegPluginCallbacks, currentClass) == 24);
    static_assert(offsetof(TTORGARegPluginCallbacks, logger) == 40);
    static_assert(offsetof(TTORGARegPluginCallbacks, machineType) == 48);
    static_assert(offsetof(TTORGARegPluginCallbacks, recordCounter) == 80);
    static_assert(sizeof(TTORGARegPluginCallbacks) == 88);
    static_assert(offsetof(IPMIRequestTorgaReg, library) == 0);
    static_assert(offsetof(IPMIRequestTorgaReg, logger) == 8);
    static_assert(sizeof(IPMIRequestTorgaReg) == 16);
    static_assert(offsetof(R8ErrorData, logger) == 8);
    static_assert(offsetof(R8ErrorData, collectedClass) == 16);
    static_assert(offsetof(R8ErrorData, reserved) == 32);
    static_assert(offsetof(R8ErrorData, transport) == 64);
    static_assert(sizeof(R8ErrorData) == 72);
    static_assert(offsetof(TNOVRequestTorgaReg, spLibrary) == 0);
    static_assert(offsetof(TNOVRequestTorgaReg, log) == 8);
    static_assert(offsetof(TNOVRequestTorgaReg, SPInstances) == 16);
    static_assert(sizeof(TNOVRequestTorgaReg) == 24);
    static_assert(offsetof(TJFRErrorData, timeStampFromSecondCopy) == 8);
    static_assert(offsetof(TJFRErrorData, log) == 16);
    static_assert(offsetof(TJFRErrorData, baseClass) == 24);
    static_assert(offsetof(TJFRErrorData, requestedClass) == 40);
    static_assert(offsetof(TJFRErrorData, transport) == 56);
    static_assert(offsetof(TJFRErrorData, className) == 64);
    static_assert(offsetof(TJFRErrorData, fSPInstances) == 96);
    static_assert(sizeof(TJFRErrorData) == 104);
  }
#pragma GCC diagnostic pop
};

}  // namespace torgareg
