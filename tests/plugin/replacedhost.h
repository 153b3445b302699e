// This program's replacements for the service-processor library, for some of the host's root operations and
// values, and for the C library. They behave as a test configures them and record how they are called.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

struct TSent {
  int capacity;
  bool flag;
  int presetLength;
  std::vector<unsigned char> buffer;  // all 256 bytes
};

/// One object for the program, reset for each test.
struct TReplacedHost {
  // Recorded calls.
  std::vector<std::string> calls;
  std::vector<TSent> sent;
  int coreLoggerCalls = 0;
  int pluginManagerCalls = 0;

  // Configured behaviour.
  std::function<bool(unsigned char*, int*)> answer;
  std::function<void()> onInstance;  ///< called when the library is asked for an instance
  int nodes = 2;
  int serviceProcessors = 1;
  bool dotCommands = true;
  bool communicates = true;
  bool noInstance = false;
  bool brokenClock = false;
  bool noMemory = false;
  bool notesValues = false;  ///< also record values built from text, and arrays asked for their elements
};

extern TReplacedHost library;

}  // namespace tests
