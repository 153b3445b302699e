// Included by every header of the host: symbol visibility, and the contract's names.
#pragma once

/// Exports a symbol to the host's other libraries. Everything else stays inside its own library.
#define VELHOST_API __attribute__((visibility("default")))

namespace NKROVEL20 {}

// The host uses the contract's types everywhere and refers to them by their plain names. Its own types are in
// velhost, so a plugin's author cannot mistake one for the other.
namespace velhost {
using namespace NKROVEL20;
}  // namespace velhost
