// A minimal plugin: registers while it is being loaded, and answers a request for a class with one instance
// of it. Copy this folder to start a plugin of your own.
#include <boost/pointer_cast.hpp>
#include <string>
#include <vector>

#include "nkrovel20/iplugincallbacks.h"
#include "nkrovel20/tpluginmanagernamespace.h"
#include "nkrovel20/trootobject.h"

namespace {

using namespace NKROVEL20;

class TTemplatePlugin : public IPluginCallbacks, public IPluginBasicQueryCallbacks {
 public:
  TTemplatePlugin() {
    boost::dynamic_pointer_cast<TPluginManagerNamespace>(TRootObject::GetPluginManager())->RegisterPlugin(this);
  }

  int GetType() override { return 0; }
  std::string GetName() override { return "Template"; }
  std::string GetVersion() override { return "1.0"; }
  std::string GetInterfaceVersion() override { return "1.0"; }
  void PrepareForUnload() override { delete this; }
  void Init() override { TRootObject::GetCoreLogger()->Log(ILogger::kDebug, "Template starts"); }
  void DeInit() override { TRootObject::GetCoreLogger()->Log(ILogger::kDebug, "Template stops"); }

  // Host operations that fail throw TVELException; an exception that leaves this function ends the request.
  void GetData(boost::shared_ptr<ICIMNamespace>, std::vector<boost::shared_ptr<ICIMClass>>& classes) override {
    const TPropertyMap noContext;
    for (const boost::shared_ptr<ICIMClass>& requested : classes) {
      const boost::shared_ptr<ICIMInstance> instance = requested->CreateInstance(noContext);
      instance->SetProperty("InstanceID", TCIMValue("Template:" + requested->GetName(noContext)), noContext);
      instance->Commit(noContext);
    }
  }
};

// The object registers itself, and deletes itself when the host is about to unload the library.
[[maybe_unused]] const auto* const plugin = new TTemplatePlugin();

}  // namespace
