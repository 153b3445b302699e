// Assertions that a host operation is refused, and why.
#pragma once

#include <gtest/gtest.h>

#include "host/base/hosterror.h"
#include "host/model/failuredetail.h"
#include "nkrovel20/tvelexception.h"

namespace velhost {

/// Expects the operation to throw a TVELException with this status and detail.
template <typename TOperation>
void ExpectFailure(std::int32_t status, const std::string& detail, const TOperation& operation) {
  ClearFailureDetail();
  try {
    operation();
    ADD_FAILURE() << "nothing was thrown; expected: " << detail;
  } catch (const TVELException& exception) {
    EXPECT_EQ(exception.GetStatusCode().GetCode(), status);
    EXPECT_EQ(LastFailureDetail(), detail);
  }
}

template <typename TOperation>
void ExpectMismatch(const std::string& detail, const TOperation& operation) {
  ExpectFailure(13, detail, operation);
}

/// Expects the operation to throw a THostError with this exit status and message.
template <typename TOperation>
void ExpectHostError(EExitStatus status, const std::string& message, const TOperation& operation) {
  try {
    operation();
    ADD_FAILURE() << "nothing was thrown; expected: " << message;
  } catch (const THostError& error) {
    EXPECT_EQ(error.Status(), status);
    EXPECT_EQ(std::string(error.what()), message);
  }
}

}  // namespace velhost
