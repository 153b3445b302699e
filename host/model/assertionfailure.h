// What a null host object ends in: the host's handler for Boost's assertions throws this.
#pragma once

#include <exception>
#include <string>

#include "host/base/api.h"

namespace velhost {

/// Thrown by boost::assertion_failed. Deliberately no TVELException: collectors handle those, while
/// a null host object has to leave the request and reach the host.
class VELHOST_API TAssertionFailure : public std::exception {
 public:
  TAssertionFailure(const char* expression, const char* function, const char* file, long line);
  ~TAssertionFailure() override;

  /// "assertion px != 0 failed in FUNCTION (FILE:LINE)", the file without its folders.
  const char* what() const noexcept override { return text_.c_str(); }
  const std::string& GetExpression() const noexcept { return expression_; }
  /// What the pointer should have held, from its type: "ICIMClass"; empty where it is not known.
  const std::string& GetPointee() const noexcept { return pointee_; }

 private:
  std::string expression_;
  std::string pointee_;
  std::string text_;
};

}  // namespace velhost
