// What this program has in place of the host's service-processor library, of some of its root operations and
// values, and of the C library: they do what a test says and note how they are called.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace testsupport {

struct TSent {
  int capacity;
  bool flag;
  int presetLength;
  std::vector<unsigned char> buffer;  // all 256 bytes
};

/// One object for the program; a test starts with a new one.
struct TReplacedHost {
  // What was called.
  std::vector<std::string> calls;
  std::vector<TSent> sent;
  int coreLoggerCalls = 0;
  int pluginManagerCalls = 0;

  // What it does.
  std::function<bool(unsigned char*, int*)> answer;
  std::function<void()> onInstance;  ///< done when the library is asked for an instance
  int nodes = 2;
  int serviceProcessors = 1;
  bool dotCommands = true;
  bool noInstance = false;
  bool brokenClock = false;
  bool noMemory = false;
  bool notesValues = false;  ///< values made of texts, and arrays asked for their elements, are calls too
};

extern TReplacedHost library;

}  // namespace testsupport
