// Arbitrary bytes, split at newlines, as the arguments of velhost: they must be parsed within the options'
// limits, answered with a text, or refused with a message.
#include <algorithm>
#include <array>
#include <cstdint>
#include <sstream>

#include "host/base/hosterror.h"
#include "host/velhost/commandline.h"
#include "tests/support/require.h"

using namespace NKROVEL20;
using namespace velhost;
using tests::Require;

namespace {

template <std::size_t N>
bool IsOneOf(const std::string& word, const std::array<const char*, N>& words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

void Check(const TCommandLine& parsed) {
  Require(IsOneOf<4>(parsed.common.privilege, {"", "user", "operator", "admin"}));
  Require(IsOneOf<6>(parsed.collect.format, {"", "table", "json", "jsonl", "mof", "cimxml"}));
  const int suite = parsed.common.cipherSuite.value_or(0);
  Require(suite >= 0 && suite <= 17);
  const double timeout = parsed.collect.timeoutSeconds.value_or(1);
  Require(timeout >= 0.001 && timeout <= 1e9);
  Require(parsed.simulate.node >= 0 && parsed.simulate.node <= 255);
  for (const int port : {parsed.simulate.port, parsed.simulate.serialPort.value_or(1)}) {
    Require(port >= 1 && port <= 65535);
  }
  Require(parsed.verb != EVerb::kSimulate || !parsed.simulate.file.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream text(std::string(data, data + size));
  std::vector<std::string> arguments;
  for (std::string line; std::getline(text, line);) arguments.push_back(line);
  std::string answer;
  try {
    const std::optional<TCommandLine> parsed = ParseCommandLine(arguments, answer);
    Require(parsed.has_value() == answer.empty());
    if (parsed) Check(*parsed);
  } catch (const THostError& error) {
    Require(error.Kind() == EFailure::kInvalidArgument && *error.what() != '\0');
  }
  return 0;
}
