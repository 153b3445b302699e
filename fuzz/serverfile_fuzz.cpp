// Arbitrary bytes as a server file: it is read or refused, and what it describes answers any request.
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/bmc/sim/faults.h"
#include "host/bmc/sim/simulatedserver.h"
#include "tests/support/memoryreader.h"
#include "tests/support/readerfolder.h"
#include "wire/registerblock.h"

using namespace NKROVEL20;
using namespace velhost;
using tests::TMemoryReader;
using tests::TReaderFolder;

namespace {

// Requests in the collector's layouts, with the last bytes of the input as data.
void AskEverything(IServiceProcessor& processor, const std::string& input) {
  const TStopSignal stop;
  for (const int networkFunction : {0x06, 0x2E, 0x3A}) {
    for (const int command : {0x01, 0x62, 0x6F, 0x90}) {
      for (const int subCommand : {0x00, 0x01, 0x02, 0x05, 0x06}) {
        wire::TCommandBuffer buffer(static_cast<std::uint8_t>(networkFunction), static_cast<std::uint8_t>(command),
                                    static_cast<std::uint8_t>(input.size()));
        for (std::size_t i = 0; i < 32 && i < input.size(); ++i) {
          buffer[13 + i] = static_cast<std::uint8_t>(input[input.size() - 1 - i]);
        }
        buffer[9] = 0x39;
        buffer[10] = 0x30;
        buffer[12] = static_cast<std::uint8_t>(subCommand);
        const auto answer = processor.SendIpmi(TIpmiRequest(0, buffer), stop);
        if (answer && answer->Length() != 9 + answer->DataLength()) __builtin_trap();
      }
    }
  }
  const std::array<std::uint8_t, 4> size = {0, 0, 64, 0};
  const dotCmd command(wire::RegisterBlockCommand::kCommand, 2, 4, wire::RegisterBlockCommand::kIdentifier.data(),
                       size.data());
  const auto block = processor.SendDot({0, command, 64}, stop);
  if (block && block->data.size() > 64) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(data, data + size);
  TMemoryReader reader;
  reader.Add("s.toml", input);
  reader.Add("data.bin", "\x01\x02\x03");
  try {
    TReaderFolder folder("s.toml", reader);
    TServerFile server = ReadServerFile("s.toml", reader, folder);
    for (TFault& fault : server.faults) fault.delay = std::chrono::milliseconds(0);
    TSimulatedServer simulator(server);
    TFaultInjector faults(simulator, server.faults);
    AskEverything(faults, input);
  } catch (const THostError&) {
  }
  return 0;
}
