// The plugin object, through which the host drives the library.
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "nkrovel20/icimobjects.h"
#include "nkrovel20/iplugincallbacks.h"
#include "nkrovel20/splibrary.h"
#include "nkrovel20/tpluginmanagernamespace.h"
#include "plugin/logmessage.h"

namespace torgareg {

/// Created when the library is loaded. It registers itself with the host and deletes itself when the host
/// prepares to unload the library. The host makes one call at a time, on one thread. The order of the virtual
/// functions is part of the host's contract.
class TTORGARegPluginCallbacks : public NKROVEL20::IPluginCallbacks, public NKROVEL20::IPluginBasicQueryCallbacks {
 public:
  /// Registers with the plugin manager. Without a plugin manager, it ends in boost::assertion_failed.
  TTORGARegPluginCallbacks();
  ~TTORGARegPluginCallbacks() override;
  TTORGARegPluginCallbacks(const TTORGARegPluginCallbacks&) = delete;
  TTORGARegPluginCallbacks& operator=(const TTORGARegPluginCallbacks&) = delete;

  int GetType() override;
  std::string GetName() override;
  std::string GetVersion() override;
  std::string GetInterfaceVersion() override;
  /// Deletes the object.
  void PrepareForUnload() override;
  /// Restarts the numbering of capture files.
  void Init() override;
  void DeInit() override;
  /// The machine type as the host reports it now; not cached.
  virtual std::string getMachineType();
  /// Collects the classes in order; the capture class ends the request. Catches nothing.
  void GetData(boost::shared_ptr<NKROVEL20::ICIMNamespace> ns,
               std::vector<boost::shared_ptr<NKROVEL20::ICIMClass>>& classes) override;

  /// The name of the first subclass of `baseClass` that declares the machine type; empty if there is none.
  std::string delegateRequest(boost::shared_ptr<NKROVEL20::ICIMClass> baseClass, const std::string& machineType) const;
  /// Creates and commits one instance of the current class for each non-empty map.
  void buildCIMInstances(const std::vector<NKROVEL20::TPropertyMap>& maps) const;

  // Storage areas of a BMC: ffdc/storagearea.cpp.

  /// Opens the area and fills the four bytes of `handle`. False if there was no answer or the completion code
  /// was not zero.
  bool OpenStorageArea(unsigned char* handle, const std::string& name, NKROVEL20::SPLibrary* sp);
  /// Sets `size` to the area's size in bytes, as reported by the BMC. False as for OpenStorageArea.
  bool QueryStorageAreaSize(int& size, const std::string& name, NKROVEL20::SPLibrary* sp);
  /// Reads the open area in chunks of ten bytes into `out`, which holds max(size, 10) bytes. A non-zero
  /// completion code ends the reading. Returns the number of bytes requested up to that point.
  int ReadStorageArea(int size, unsigned char* handle, unsigned char* out, NKROVEL20::SPLibrary* sp);
  void CloseStorageArea(unsigned char* handle, NKROVEL20::SPLibrary* sp);

  /// Reads the capture file of that name from every BMC node and commits an instance for each:
  /// ffdc/ffdcreader.cpp.
  void ReadErrFFDC(boost::shared_ptr<NKROVEL20::ICIMNamespace> ns, const std::string& name);

  // Capture-file instances: ffdc/dcapfile.cpp.

  /// Commits an instance whose raw data are the `length` bytes at `data`; empty raw data if `length` is 0 or
  /// less.
  void AddErrFFDCinstance(boost::shared_ptr<NKROVEL20::ICIMNamespace> ns, unsigned char* data, int length,
                          const std::string& name, int node);
  /// The same, with the raw data given as text and stored unchanged; `length` is not used.
  void AddErrFFDCinstance(boost::shared_ptr<NKROVEL20::ICIMNamespace> ns, std::string rawData, int length,
                          const std::string& name, int node);

 private:
  void collectDelegates(const boost::shared_ptr<NKROVEL20::ICIMNamespace>& ns,
                        const NKROVEL20::TPropertyMap& requestContext, std::vector<std::string>& jfrClasses,
                        std::map<std::string, std::string>& delegates) const;
  void collectJFR(const boost::shared_ptr<NKROVEL20::ICIMNamespace>& ns, const NKROVEL20::TPropertyMap& requestContext,
                  const std::map<std::string, std::string>& delegates,
                  const boost::shared_ptr<NKROVEL20::ICIMClass>& requested, const std::string& name);
  void collectR8(const boost::shared_ptr<NKROVEL20::ICIMClass>& requested, const std::string& name);
  void collectCaptureFiles(const boost::shared_ptr<NKROVEL20::ICIMNamespace>& ns);
  void publishCaptureFile(const boost::shared_ptr<NKROVEL20::ICIMClass>& fileClass, const std::string& rawData,
                          const NKROVEL20::TCIMDateTime& localTime, const std::string& name, int node);

  friend struct TTestPeer;
  NKROVEL20::TPluginManagerProvider* pluginProvider;
  boost::shared_ptr<NKROVEL20::ICIMClass> currentClass;
  LogMessage* logger;
  std::string machineType;
  std::int32_t recordCounter;
};

}  // namespace torgareg
