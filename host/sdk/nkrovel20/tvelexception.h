// The host's exception and its status code.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

/// A 32-bit status code of the host. Codes 1 to 17 are those of CIM operations (DSP0200).
class NKROVEL20_API TVELStatusCode {
 public:
  static constexpr std::int32_t kFailed = 1;
  static constexpr std::int32_t kInvalidParameter = 4;
  static constexpr std::int32_t kInvalidClass = 5;
  static constexpr std::int32_t kNoSuchProperty = 12;
  static constexpr std::int32_t kTypeMismatch = 13;
  /// A service processor's register block has no valid timestamp header.
  static constexpr std::int32_t kNoValidTimestamp = 21;

  // Implicit, so that a plain number can be passed: TVELException(21).
  TVELStatusCode(std::int32_t code) noexcept : code_(code) {}

  std::int32_t GetCode() const noexcept { return code_; }

  /// The text for the code, or "Status N." if it has none of its own.
  std::string TranslateStatusCode() const;

 private:
  std::int32_t code_;
};

/// Thrown by host operations that fail, and by collectors for a register block that they cannot use.
class NKROVEL20_API TVELException : public std::exception {
 public:
  explicit TVELException(TVELStatusCode status);
  TVELException(const TVELException&) = default;
  TVELException& operator=(const TVELException&) = default;
  ~TVELException() override;

  TVELStatusCode GetStatusCode() const noexcept { return status_; }

  /// The result of TVELStatusCode::TranslateStatusCode(); owned by the exception.
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  TVELStatusCode status_;
  std::string text_;
};

}  // namespace NKROVEL20
