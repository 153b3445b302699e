// Expectations that an operation is refused, and why.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "host/base/hosterror.h"
#include "host/model/failures.h"
#include "nkrovel20/tvelexception.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Expects the operation to throw a TVELException with this status and this detail.
template <typename TOperation>
void ExpectFailure(std::int32_t status, const std::string& detail, const TOperation& operation) {
  velhost::ClearFailureDetail();
  try {
    operation();
    ADD_FAILURE() << "nothing was thrown; expected: " << detail;
  } catch (const NKROVEL20::TVELException& exception) {
    EXPECT_EQ(exception.GetStatusCode().GetCode(), status);
    EXPECT_EQ(velhost::LastFailureDetail(), detail);
  }
}

template <typename TOperation>
void ExpectMismatch(const std::string& detail, const TOperation& operation) {
  ExpectFailure(13, detail, operation);
}

/// Expects the operation to throw a THostError of this kind and with this message.
template <typename TOperation>
void ExpectHostError(velhost::EFailure kind, const std::string& message, const TOperation& operation) {
  try {
    operation();
    ADD_FAILURE() << "nothing was thrown; expected: " << message;
  } catch (const velhost::THostError& error) {
    EXPECT_EQ(error.Kind(), kind);
    EXPECT_EQ(std::string(error.what()), message);
  }
}

/// The message of the THostError that `action` throws, which must be of this kind; for a message that is not expected
/// as a whole.
template <typename TAction>
std::string MessageOf(const TAction& action, velhost::EFailure kind = velhost::EFailure::kMalformed) {
  try {
    action();
  } catch (const velhost::THostError& error) {
    EXPECT_EQ(error.Kind(), kind);
    return error.what();
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

/// The type that a null pointer should have pointed to, taken from the assertion that ends the operation.
template <typename TOperation>
std::string PointeeOfAssertion(const TOperation& operation) {
  try {
    operation();
  } catch (const velhost::TAssertionFailure& failure) {
    EXPECT_EQ(failure.GetExpression(), "px != 0");
    EXPECT_TRUE(std::string(failure.what()).starts_with("assertion px != 0 failed in ")) << failure.what();
    return failure.GetPointee();
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

/// Kind and message of the THostError about an output that the operation throws, as "not created: MESSAGE"; "none" if
/// it does not throw.
template <typename TOperation>
std::string FailureOf(const TOperation& operation) {
  try {
    operation();
  } catch (const velhost::THostError& error) {
    const bool isCreation = error.Kind() == velhost::EFailure::kNotCreated;
    const bool isWrite = error.Kind() == velhost::EFailure::kNotWritten;
    return (isCreation ? "not created: " : isWrite ? "not written: " : "another kind: ") + std::string(error.what());
  }
  return "none";
}

}  // namespace tests
