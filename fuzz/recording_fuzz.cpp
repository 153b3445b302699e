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
  const std::array<std::uint8_t, 4> chipAndAddress{};
  const TIpmiRequest timestamp(0, wire::RegisterRead::kNetworkFunction, 0, wire::RegisterRead::kTimestampRead, {});
  const TIpmiRequest entry(0, wire::RegisterRead::kNetworkFunction, 0, wire::RegisterRead::kRegisterRead,
                           chipAndAddress);
  const std::array<std::uint8_t, 4> size = {0, 0, 0, 0x10};
  const dotCmd command(wire::RegisterBlockCommand::kCommand, 2, 4, wire::RegisterBlockCommand::kIdentifier.data(),
                       size.data());
  replay.SendIpmi(timestamp, stop);
  const auto block = replay.SendDot({0, command, 8}, stop);
  if (block && (block->data.size() > 8 || block->Length() != static_cast<int>(block->data.size()))) __builtin_trap();
  static_cast<void>(replay.LocalTime().ToIso8601());
  const auto answer = replay.SendIpmi(entry, stop);
  if (answer && (answer->Length() < 0 || answer->Length() > 256 || answer->data.size() > 247)) __builtin_trap();
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
