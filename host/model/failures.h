// Failures of host operations that a collector calls: the detail of a TVELException, and the exception that results
// from dereferencing a null host object.
//
// TVELException carries only a status code, which is all that a plugin needs. People need the name of the
// property or class as well, so the host stores it separately.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "host/base/api.h"

namespace velhost {

/// Stores `detail` for this thread and throws TVELException with the status.
[[noreturn]] VELHOST_API void ThrowHostFailure(std::int32_t status, const std::string& detail);

/// The detail of this thread's latest host failure; empty if there was none since the last clear.
VELHOST_API std::string LastFailureDetail();
VELHOST_API void ClearFailureDetail();

/// Thrown by boost::assertion_failed. Deliberately not a TVELException: collectors catch those, but a null
/// host object must end the request and be reported by the host.
class VELHOST_API TAssertionFailure : public std::exception {
 public:
  TAssertionFailure(const char* expression, const char* function, const char* file, long line);
  ~TAssertionFailure() override;

  /// "assertion px != 0 failed in FUNCTION (FILE:LINE)", with FILE stripped of its folders.
  const char* what() const noexcept override { return text_.c_str(); }
  const std::string& GetExpression() const noexcept { return expression_; }
  /// The type that the pointer should have pointed to, such as "ICIMClass"; empty if unknown.
  const std::string& GetPointee() const noexcept { return pointee_; }

 private:
  std::string expression_;
  std::string pointee_;
  std::string text_;
};

}  // namespace velhost
