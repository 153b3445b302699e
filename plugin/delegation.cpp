// Chooses the machine-specific subclass that serves a base class.
#include <string>
#include <vector>

#include <boost/function.hpp>

#include "nkrovel20/taddtovectorcallback.h"
#include "plugin/issubstring.h"
#include "plugin/torgaplugin.h"

namespace torgareg {

using namespace NKROVEL20;

std::string TTORGARegPluginCallbacks::delegateRequest(boost::shared_ptr<ICIMClass> baseClass,
                                                      const std::string& type) const {
  std::vector<boost::shared_ptr<ICIMClass>> subClasses;
  const boost::function<bool(boost::shared_ptr<ICIMClass>)> addToVector = TAddToVectorCallback<ICIMClass>(subClasses);
  baseClass->EnumerateSubClasses(addToVector, ICIMClass::kAllDescendants, {});
  for (const boost::shared_ptr<ICIMClass>& subClass : subClasses) {
    const auto qualifier = subClass->GetQualifier("SupportedMachineTypes", {});
    const std::vector<TCIMValue> elements = static_cast<const std::vector<TCIMValue>&>(qualifier->GetValue());
    if (supportsMachineType(elements, type)) return subClass->GetName({});
  }
  return {};
}

}  // namespace torgareg
