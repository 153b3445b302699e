#include "nkrovel20/tvelexception.h"

namespace NKROVEL20 {

std::string TVELStatusCode::TranslateStatusCode() const {
  const std::string number = std::to_string(code_);
  switch (code_) {
    case kFailed: return "The operation failed (status " + number + ").";
    case kInvalidParameter: return "Invalid parameter (status " + number + ").";
    case kInvalidClass: return "Invalid class (status " + number + ").";
    case kNoSuchProperty: return "No such property (status " + number + ").";
    case kTypeMismatch: return "Type mismatch (status " + number + ").";
    case kNoValidTimestamp: return "No valid timestamp header (status " + number + ").";
    default: return "Status " + number + ".";
  }
}

TVELException::TVELException(TVELStatusCode status) : status_(status), text_(status.TranslateStatusCode()) {}

TVELException::~TVELException() = default;

}  // namespace NKROVEL20
