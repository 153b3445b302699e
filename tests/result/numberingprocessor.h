// A service processor that numbers what it sends, so that each value that was collected tells which exchange it came
// from.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "tests/support/namespaces.h"
#include "tests/support/scriptedserviceprocessor.h"

namespace tests {

/// Random numbers that are the same everywhere.
class TDice {
 public:
  explicit TDice(unsigned seed) : random_(seed) {}
  unsigned Below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }
  bool Percent(unsigned chance) { return Below(100) < chance; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Below(256)); }
  TBytes Bytes(std::size_t count) {
    TBytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = Byte();
    return bytes;
  }

 private:
  std::mt19937 random_;
};

/// Some exchanges are lost, refused or cut, as the dice fall. A node that does not exist does not answer, and without
/// a driver none does.
class TNumberingProcessor : public IServiceProcessor {
 public:
  TNumberingProcessor(TDice& dice, const TDiscovery& discovery) : dice_(dice), discovery_(discovery) {}

  /// Where a value of a register came from: the chip's register at this address, read for the n-th time (from 0).
  struct TSource {
    int chip;
    std::uint32_t address;
    unsigned reading;
  };
  /// What was sent of the storage area that was opened last.
  struct TFile {
    int node = 0;
    std::string area;
    std::int32_t size = 0;
    std::int64_t received = 0;
    std::optional<std::int64_t> firstMissing;  ///< offset of the first byte that should have come
  };

  std::map<std::uint64_t, TSource> sources;  ///< by the value
  TBytes lastTime;                           ///< of the last timestamp that was good
  std::map<int, TBytes> blocks;              ///< what each service processor sent last
  TFile file;
  std::uint64_t exchanges = 0;
  std::uint64_t failures = 0;  ///< of IPMI exchanges: no answer, a code, or one too short to be of use

  TDiscovery Discover() override { return discovery_; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) override;
  std::optional<TDotAnswer> SendDot(const TDotRequest& request, const TStopSignal& stop) override;

 private:
  std::optional<TIpmiAnswer> Failing(std::optional<TIpmiAnswer> answer);
  /// No answer or a completion code; empty if the exchange succeeds.
  std::optional<std::optional<TIpmiAnswer>> Failed();
  std::optional<TIpmiAnswer> ReadRegister(const wire::TCommandBuffer& request);
  std::optional<TIpmiAnswer> ReadTime();
  std::optional<TIpmiAnswer> UseArea(int node, const wire::TCommandBuffer& request);
  std::optional<TIpmiAnswer> ReadFile(const wire::TCommandBuffer& request);
  std::optional<TIpmiAnswer> LoseRead(std::int64_t offset, std::optional<TIpmiAnswer> answer);

  TDice& dice_;
  TDiscovery discovery_;
  std::map<std::pair<int, std::uint32_t>, unsigned> readings_;
  std::uint32_t values_ = 0;
  std::uint16_t times_ = 0;
};

}  // namespace tests
