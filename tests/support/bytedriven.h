// A service processor whose answers are derived from input bytes, for the fuzz targets. Header-only: it is built
// without the tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/bmc/iserviceprocessor.h"
#include "host/model/failures.h"
#include "tests/support/classbuilder.h"
#include "tests/support/namespaces.h"

namespace tests {

/// Consumes bytes from the front; zeros past the end.
class TByteStream {
 public:
  TByteStream(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool AtEnd() const { return place_ >= size_; }
  std::uint8_t Next() { return AtEnd() ? std::uint8_t{0} : data_[place_++]; }
  std::uint16_t Next16() {
    const unsigned int low = Next();
    return static_cast<std::uint16_t>(low | static_cast<unsigned int>(Next()) << 8U);
  }
  std::int32_t Next32() {
    const std::uint32_t low = Next16();
    return static_cast<std::int32_t>(low | static_cast<std::uint32_t>(Next16()) << 16U);
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t place_ = 0;
};

/// Each exchange consumes a control byte: 0 gives a correct answer; its bits select a lost answer (1), a completion
/// code (2), a false byte 5 (4) and a false length (8). When the bytes are used up, every exchange is lost, so every
/// collection ends.
class TByteDrivenServiceProcessor : public velhost::IServiceProcessor {
 public:
  explicit TByteDrivenServiceProcessor(TByteStream& bytes) : bytes_(bytes) {}

  int nodes = 1;
  int serviceProcessors = 0;

  velhost::TDiscovery Discover() override { return {nodes, true, serviceProcessors != 0, true, serviceProcessors}; }

  std::optional<velhost::TIpmiAnswer> SendIpmi(const velhost::TIpmiRequest& /*request*/,
                                               const velhost::TStopSignal& /*stop*/) override {
    if (bytes_.AtEnd()) return std::nullopt;
    const unsigned int control = bytes_.Next();
    if ((control & 1U) != 0) return std::nullopt;
    velhost::TIpmiAnswer answer;
    answer.data.resize(std::min<std::size_t>(bytes_.Next(), wire::TCommandBuffer::kMaxData));
    if ((control & 2U) != 0) answer.completionCode = bytes_.Next();
    if ((control & 4U) != 0) answer.claimedDataLength = bytes_.Next();
    if ((control & 8U) != 0) answer.claimedLength = bytes_.Next32();
    for (std::uint8_t& byte : answer.data) byte = bytes_.Next();
    return answer;
  }

  std::optional<velhost::TDotAnswer> SendDot(const velhost::TDotRequest& request,
                                             const velhost::TStopSignal& /*stop*/) override {
    if (bytes_.AtEnd()) return std::nullopt;
    const unsigned int control = bytes_.Next();
    velhost::TDotAnswer answer;
    answer.data.resize(std::min<std::size_t>(bytes_.Next16(), request.capacity));
    if ((control & 8U) != 0) answer.claimedLength = bytes_.Next32();
    for (std::uint8_t& byte : answer.data) byte = bytes_.Next();
    answer.failed = (control & 1U) != 0;
    return answer;
  }

 private:
  TByteStream& bytes_;
};

/// Adds an array property whose shape comes from the input. Two bits for each of up to two `qualifiers` decide
/// whether it has its value (0 and 1), a text that is not a number (2), or is missing (3). The upper half of the byte
/// selects the property's type: 0 is uint8, and every type can be selected.
inline void AddShaped(TClassBuilder& to, const std::string& name, const TQualifiers& qualifiers, TByteStream& bytes) {
  unsigned int shape = bytes.Next();
  const auto type = static_cast<TType::ECIMType>(1 + ((shape >> 4U) + 1) % 15);
  TQualifiers chosen;
  for (const auto& [qualifier, value] : qualifiers) {
    const unsigned int choice = shape & 3U;
    shape >>= 2U;
    if (choice != 3) chosen.emplace_back(qualifier, choice == 2 ? NKROVEL20::TCIMValue("x") : value);
  }
  to.Property(type, name, true, chosen);
}

/// Collects, and passes each instance's properties to `check`. As in the product, a missing qualifier ends the
/// collection in an assertion.
template <typename TCollector, typename TCheck>
void CheckCollection(TCollector& collector, TCheck check) {
  std::vector<NKROVEL20::TPropertyMap> maps;
  try {
    maps = collector.getData();
  } catch (const velhost::TAssertionFailure&) {
    return;
  }
  for (const NKROVEL20::TPropertyMap& map : maps) check(map);
}

}  // namespace tests
