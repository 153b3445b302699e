#include "host/base/hosterror.h"

namespace velhost {

THostError::THostError(EExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}

THostError::~THostError() = default;

}  // namespace velhost
