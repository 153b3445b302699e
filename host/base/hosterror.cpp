#include "host/base/hosterror.h"

namespace NKROVEL20 {

THostError::THostError(EExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}

THostError::~THostError() = default;

}  // namespace NKROVEL20
