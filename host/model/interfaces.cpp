// The destructors of the contract's interfaces. Defining them here puts the type information and virtual
// table of each interface into this library only, so that casts agree across libraries.
#include "nkrovel20/icimobjects.h"
#include "nkrovel20/ilogger.h"
#include "nkrovel20/iplugincallbacks.h"

namespace NKROVEL20 {

ICIMQualifier::~ICIMQualifier() = default;
ICIMNamed::~ICIMNamed() = default;
ICIMQualifierHolder::~ICIMQualifierHolder() = default;
ICIMPropertyDecl::~ICIMPropertyDecl() = default;
ICIMNamespace::~ICIMNamespace() = default;
ICIMClass::~ICIMClass() = default;
ICIMInstance::~ICIMInstance() = default;
ILogger::~ILogger() = default;
IPluginCallbacks::~IPluginCallbacks() = default;
IPluginBasicQueryCallbacks::~IPluginBasicQueryCallbacks() = default;

}  // namespace NKROVEL20
