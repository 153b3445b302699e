// What every header of the host begins with: visibility across its libraries, and the contract's names.
#pragma once

/// Marks what other libraries of the host may use. Everything else stays inside its library.
#define VELHOST_API __attribute__((visibility("default")))

namespace NKROVEL20 {}

// The host works with the contract's objects everywhere and refers to them by their plain names. Its own
// types are in velhost, so that a plugin never sees the two look alike.
namespace velhost {
using namespace NKROVEL20;
}  // namespace velhost
