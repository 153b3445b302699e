// The exception that results from dereferencing a null host object, thrown by the host's Boost assertion
// handler.
#pragma once

#include <exception>
#include <string>

#include "host/base/api.h"

namespace velhost {

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
