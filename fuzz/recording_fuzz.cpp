// Arbitrary bytes as a recording: it is read or refused, and replaying it never reads past a buffer.
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/base/hosterror.h"
#include "host/base/sourcereader.h"
#include "host/bmc/record/replay.h"
#include "wire/registerblock.h"
#include "wire/registerread.h"

using namespace NKROVEL20;
using namespace velhost;

namespace {

// In the order of the seeds: a timestamp, a block, the clock, a register.
void Replay(TReplay& replay) {
  const TStopSignal stop;
  wire::TCommandBuffer timestamp(wire::RegisterRead::kNetworkFunction, wire::RegisterRead::kTimestampRead, 0);
  wire::TCommandBuffer entry(wire::RegisterRead::kNetworkFunction, wire::RegisterRead::kRegisterRead, 4);
  std::array<std::uint8_t, 8> block{};
  const std::array<std::uint8_t, 4> size = {0, 0, 0, 0x10};
  const dotCmd command(wire::RegisterBlockCommand::kCommand, 2, 4, wire::RegisterBlockCommand::kIdentifier.data(),
                       size.data());
  int length = 0;
  replay.SendIpmi(0, timestamp, length, stop);
  if (replay.SendDot(0, command, block, length, stop) && (length < 0 || length > 8)) __builtin_trap();
  static_cast<void>(replay.LocalTime().ToIso8601());
  replay.SendIpmi(0, entry, length, stop);
  if (length < 0 || length > 256) __builtin_trap();
  if (replay.Mismatch() && replay.Mismatch()->empty()) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    TReplay replay("r.jsonl", std::vector<std::uint8_t>(data, data + size));
    Replay(replay);
    static_cast<void>(replay.CutWarning());
  } catch (const THostError&) {
  }
  return 0;
}
