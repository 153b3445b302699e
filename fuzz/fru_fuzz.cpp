// Arbitrary bytes as a FRU inventory, parsed and read from a BMC; the first byte says how the BMC answers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "host/bmc/lan/fru.h"
#include "wire/fru.h"

using namespace velhost;

namespace {

using TBytes = std::vector<std::uint8_t>;

std::uint8_t Low(std::size_t number) { return static_cast<std::uint8_t>(number & 0xFFU); }

class TBmc : public IServiceProcessor {
 public:
  TBmc(std::uint8_t manner, const TBytes& inventory) : manner_(manner), inventory_(inventory) {}
  TDiscovery Discover() override { return {1, true}; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& /*stop*/) override {
    const std::size_t size = inventory_.size();
    if (request.Command() == wire::Fru::kGetInventoryInfo) return TIpmiAnswer{0, {Low(size), Low(size >> 8U), manner_}};
    if (++reads_ > 2100) std::abort();
    const std::size_t begin = std::min<std::size_t>(request.Data()[1] + 256U * request.Data()[2], size);
    const std::size_t end = std::min<std::size_t>(begin + request.Data()[3], size);
    TBytes answer(inventory_.begin() + static_cast<long>(begin), inventory_.begin() + static_cast<long>(end));
    answer.insert(answer.begin(), Low(request.Data()[3] - std::size_t{manner_} / 16));
    return TIpmiAnswer{0, answer};
  }

 private:
  std::uint8_t manner_;
  const TBytes& inventory_;
  int reads_ = 0;
};

/// Hardly any other input has correct checksums.
void CorrectSum(TBytes& bytes, std::size_t begin, std::size_t size) {
  if (size == 0 || begin + size > bytes.size()) return;
  const auto first = bytes.begin() + static_cast<long>(begin);
  first[static_cast<long>(size) - 1] = Low(0U - std::accumulate(first, first + static_cast<long>(size) - 1, 0U));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  TBytes inventory(data + 1, data + size);
  CorrectSum(inventory, 0, 8);
  if (inventory.size() > 9) CorrectSum(inventory, 8, inventory[9] * std::size_t{8});
  const TFruProduct product =
      ParseProductArea(std::span(inventory).subspan(std::min<std::size_t>(8, inventory.size())));
  TBmc bmc(data[0], inventory);
  const TStopSignal never;
  if (product.name.size() > 3 * 63 || ReadFruProduct(bmc, 0, never).isLost) std::abort();
  return 0;
}
