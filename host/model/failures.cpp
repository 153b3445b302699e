#include "host/model/failures.h"

#include <cstring>

#include "nkrovel20/api.h"
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

namespace velhost {

namespace {
thread_local std::string lastDetail;
}

void ThrowHostFailure(std::int32_t status, const std::string& detail) {
  lastDetail = detail;
  throw TVELException(status);
}

std::string LastFailureDetail() { return lastDetail; }
void ClearFailureDetail() { lastDetail.clear(); }

namespace {

// The function's signature ends in "[with T = NKROVEL20::ICIMClass; ...]" (GCC) or "[T = ...]" (Clang).
std::string PointeeOf(const std::string& function) {
  const std::string key = "T = ";
  const std::size_t start = function.rfind(key);
  if (start == std::string::npos) return {};
  std::string name = function.substr(start + key.size());
  name = name.substr(0, name.find_first_of(";]"));
  if (const std::size_t scope = name.rfind("::"); scope != std::string::npos) name = name.substr(scope + 2);
  return name;
}

}  // namespace

TAssertionFailure::TAssertionFailure(const char* expression, const char* function, const char* file, long line)
    : expression_(expression), pointee_(PointeeOf(function)) {
  const char* slash = std::strrchr(file, '/');
  text_ = "assertion " + expression_ + " failed in " + function + " (" + (slash ? slash + 1 : file) + ":" +
          std::to_string(line) + ")";
}

TAssertionFailure::~TAssertionFailure() = default;

}  // namespace velhost

// Boost calls these when a null shared pointer is dereferenced.
namespace boost {

VELHOST_API void assertion_failed(char const* expression, char const* function, char const* file, long line) {
  throw velhost::TAssertionFailure(expression, function, file, line);
}

VELHOST_API void assertion_failed_msg(char const* expression, char const* /*message*/, char const* function,
                                      char const* file, long line) {
  throw velhost::TAssertionFailure(expression, function, file, line);
}

}  // namespace boost
