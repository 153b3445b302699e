#include "tests/result/numberingprocessor.h"

#include <algorithm>
#include <array>

namespace tests {

namespace {

constexpr std::array<std::int32_t, 9> kSizes = {0, 3, 9, 10, 11, 25, 40, -1, (32 << 20) + 1};

TBytes AllBytes(std::uint64_t value) {
  return LittleEndian(static_cast<std::uint32_t>(value)) + LittleEndian(static_cast<std::uint32_t>(value >> 32U));
}

std::string NameAt(const wire::TCommandBuffer& request, std::size_t offset) {
  return reinterpret_cast<const char*>(request.Data() + offset);
}

}  // namespace

std::optional<TIpmiAnswer> TNumberingProcessor::Failing(std::optional<TIpmiAnswer> answer) {
  ++failures;
  return answer;
}

std::optional<std::optional<TIpmiAnswer>> TNumberingProcessor::Failed() {
  switch (dice_.Below(16)) {
    case 0: return Failing(std::nullopt);
    case 1: return Failing(TIpmiAnswer{0xC3, {}});
    case 2:
    case 3: return Failing(TIpmiAnswer{0xCB, {}});
    default: return std::nullopt;
  }
}

std::optional<TIpmiAnswer> TNumberingProcessor::SendIpmi(const TIpmiRequest& request, const TStopSignal& /*stop*/) {
  ++exchanges;
  const wire::TCommandBuffer& buffer = request.Buffer();
  if (buffer[2] == 0x3A && buffer[4] == 0x62) return ReadRegister(buffer);
  if (!discovery_.ipmiDriver || request.Node() >= discovery_.bmcNodes) return Failing(std::nullopt);
  if (buffer[2] == 0x3A) return ReadTime();
  return UseArea(request.Node(), buffer);
}

std::optional<TIpmiAnswer> TNumberingProcessor::ReadRegister(const wire::TCommandBuffer& request) {
  const auto address = static_cast<std::uint32_t>(request[10] << 16 | request[11] << 8 | request[12]);
  const unsigned reading = readings_[{request[9], address}]++;
  if (!discovery_.ipmiDriver || discovery_.bmcNodes < 1) return Failing(std::nullopt);
  if (const auto failed = Failed()) return *failed;
  if (dice_.Percent(5)) return Failing(TIpmiAnswer{0x00, dice_.Bytes(13)});
  // The upper half is random, and often zero.
  const std::uint64_t upper = dice_.Percent(50) ? dice_.Below(0xFFFFFFFF) : 0;
  const std::uint64_t value = upper << 32U | (++values_ * 0x01000193U);
  sources[value] = {request[9], address, reading};
  return TIpmiAnswer{0x00, dice_.Bytes(6) + AllBytes(value)};
}

std::optional<TIpmiAnswer> TNumberingProcessor::ReadTime() {
  if (const auto failed = Failed()) return *failed;
  if (dice_.Percent(5)) return Failing(TIpmiAnswer{0x00, dice_.Bytes(3)});
  ++times_;
  lastTime = dice_.Bytes(2) + TBytes{ByteOf(times_, 1), ByteOf(times_, 0)};
  return TIpmiAnswer{0x00, lastTime};
}

std::optional<TIpmiAnswer> TNumberingProcessor::UseArea(int node, const wire::TCommandBuffer& request) {
  if (request[12] == 0x02) return ReadFile(request);
  if (const auto failed = Failed()) return *failed;
  if (request[12] == 0x01) {
    file = {node, NameAt(request, 21), 0, 0, std::nullopt};
    return TIpmiAnswer{0x00, TBytes{0x39, 0x30, 0x00} + dice_.Bytes(4)};
  }
  if (request[12] != 0x06) return TIpmiAnswer{0x00, {0x39, 0x30, 0x00}};
  file.size = kSizes.at(dice_.Below(kSizes.size()));
  return TIpmiAnswer{0x00, TBytes{0x39, 0x30, 0x00} + LittleEndian(static_cast<std::uint32_t>(file.size))};
}

std::optional<TIpmiAnswer> TNumberingProcessor::ReadFile(const wire::TCommandBuffer& request) {
  const std::int64_t offset = request[17] | request[18] << 8 | request[19] << 16;
  if (const auto failed = Failed()) return LoseRead(offset, *failed);
  const std::int64_t should = std::clamp<std::int64_t>(file.size - offset, 0, request[21]);
  const std::int64_t brings = dice_.Percent(10) ? dice_.Below(static_cast<unsigned>(should) + 1) : should;
  file.received += brings;
  if (brings < should) {
    ++failures;
    if (!file.firstMissing) file.firstMissing = offset + brings;
  }
  const TBytes header = {0x39, 0x30, 0x00, static_cast<std::uint8_t>(brings), 0x00};
  return TIpmiAnswer{0x00, header + dice_.Bytes(static_cast<std::size_t>(brings))};
}

std::optional<TIpmiAnswer> TNumberingProcessor::LoseRead(std::int64_t offset, std::optional<TIpmiAnswer> answer) {
  if (!file.firstMissing) file.firstMissing = offset;
  return answer;
}

// Random bytes with a valid header at the first or the second place, or at neither.
std::optional<TDotAnswer> TNumberingProcessor::SendDot(const TDotRequest& request, const TStopSignal& /*stop*/) {
  ++exchanges;
  TBytes& block = blocks[request.serviceProcessor];
  block = dice_.Bytes(dice_.Percent(25) ? dice_.Below(4097) : 4096);
  const unsigned header = dice_.Below(8);
  const auto set = [&block](std::size_t at, std::uint8_t byte) {
    if (at < block.size()) block[at] = byte;
  };
  set(2, header < 5 ? 12 : 0);
  set(2042, header < 7 ? 12 : 0);
  set(3, 31);
  set(2043, 31);
  if (dice_.Percent(10)) {
    block.clear();
    return std::nullopt;
  }
  return TDotAnswer{block};
}

}  // namespace tests
