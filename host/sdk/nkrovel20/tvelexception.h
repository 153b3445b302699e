// The host's exception and its status number.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "nkrovel20/api.h"

namespace NKROVEL20 {

/// A 32-bit status number of the host. Numbers 1 to 17 are those of CIM operations (DSP0200).
class NKROVEL20_API TVELStatusCode {
 public:
  static constexpr std::int32_t kFailed = 1;
  static constexpr std::int32_t kInvalidParameter = 4;
  static constexpr std::int32_t kInvalidClass = 5;
  static constexpr std::int32_t kNoSuchProperty = 12;
  static constexpr std::int32_t kTypeMismatch = 13;
  /// A register block of a service processor carries no valid timestamp header.
  static constexpr std::int32_t kNoValidTimestamp = 21;

  // Implicit, so that a bare number can be thrown: TVELException(21).
  TVELStatusCode(std::int32_t code) noexcept : code_(code) {}

  std::int32_t GetCode() const noexcept { return code_; }

  /// The text for the number; a number without a text of its own gives "Status N.".
  std::string TranslateStatusCode() const;

 private:
  std::int32_t code_;
};

/// Thrown by host operations that fail, and by collectors for a register block they cannot use.
class NKROVEL20_API TVELException : public std::exception {
 public:
  explicit TVELException(TVELStatusCode status);
  TVELException(const TVELException&) = default;
  TVELException& operator=(const TVELException&) = default;
  ~TVELException() override;

  TVELStatusCode GetStatusCode() const noexcept { return status_; }

  /// The text of TVELStatusCode::TranslateStatusCode(), owned by the exception.
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  TVELStatusCode status_;
  std::string text_;
};

}  // namespace NKROVEL20
