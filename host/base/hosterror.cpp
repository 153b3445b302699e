#include "host/base/hosterror.h"

namespace velhost {

THostError::THostError(EFailure kind, const std::string& message) : std::runtime_error(message), kind_(kind) {}

THostError::~THostError() = default;

}  // namespace velhost
