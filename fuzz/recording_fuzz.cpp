// Arbitrary bytes as a recording: it is read or refused, using it never reads past a buffer, and an image that is asked
// for everything in recorded order gives what a replay gives.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "host/base/hosterror.h"
#include "host/bmc/record/image.h"
#include "host/bmc/record/replay.h"
#include "host/bmc/serve/servedrecording.h"

using namespace NKROVEL20;
using namespace velhost;

namespace {

void Require(bool condition) {
  if (!condition) __builtin_trap();
}

void AskIpmi(const TRecordedLine& line, TReplay& replay, TImage& image) {
  wire::TCommandBuffer buffer;
  std::copy(line.request.begin(), line.request.end(), buffer.Data());
  const TIpmiRequest request(line.node, buffer);
  const auto replayed = replay.SendIpmi(request, {});
  const auto imaged = image.SendIpmi(request, {});
  if (!imaged) return Require(!replayed && image.WhyNoAnswer() == ENoAnswer::kLost);
  Require(imaged->InBufferOf(request) == replayed.value().InBufferOf(request));
  Require(imaged->Length() == replayed->Length() && imaged->Length() <= 256 && imaged->data.size() <= 247);
}

void AskDot(const TRecordedLine& line, TReplay& replay, TImage& image) {
  const dotCmd command(line.command, static_cast<int>(line.identifier.size()), static_cast<int>(line.parameters.size()),
                       line.identifier.data(), line.parameters.data());
  const auto replayed = replay.SendDot({line.node, command, 8}, {});
  const auto imaged = image.SendDot({line.node, command, 8}, {});
  Require(replayed.has_value() == imaged.has_value());
  if (imaged) Require(imaged->data == replayed->data && imaged->data.size() <= 8);
}

void Use(const TStoredBytes& bytes) {
  TReplay replay("r.jsonl", bytes);
  TImage image("r.jsonl", bytes);
  const TCheckedRecording recording("r.jsonl", bytes, nullptr, [&](const TRecordedLine& line, auto, auto) {
    if (line.kind == TRecordedLine::EKind::kIpmi) return AskIpmi(line, replay, image);
    if (line.kind == TRecordedLine::EKind::kDot) return AskDot(line, replay, image);
    Require(replay.LocalTime().ToIso8601() == image.LocalTime().ToIso8601());
  });
  Require(!replay.Mismatch() && recording.CutWarning().has_value() == replay.CutWarning().has_value());
  TServedRecording("r.jsonl", bytes, nullptr, 0).Answer(0x3A, 0, 0x6F, {}, 36);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  Use(std::vector<std::uint8_t>(data, data + size));
  return 0;
} catch (const velhost::THostError&) {
  return 0;
}
