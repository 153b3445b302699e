// Included by every header of the host: symbol visibility, and the contract's names.
#pragma once

/// Exports a symbol to the host's other libraries. Everything else stays inside its own library.
#define VELHOST_API __attribute__((visibility("default")))

namespace NKROVEL20 {}

// The host uses the contract's types everywhere, by their plain names. Its own types are in velhost, so that a plugin
// cannot confuse the two.
namespace velhost {
using namespace NKROVEL20;
}  // namespace velhost
