#include "host/velhost/simulate/fruinventory.h"

#include <algorithm>
#include <numeric>

#include "wire/fru.h"

namespace velhost {

namespace {

namespace Fru = wire::Fru;
using TData = std::vector<std::uint8_t>;

/// The last byte, which makes the sum of all zero.
void AppendChecksum(TData& bytes) {
  bytes.push_back(static_cast<std::uint8_t>(0U - std::accumulate(bytes.begin(), bytes.end(), 0U)));
}

void AppendField(TData& area, std::string text) {
  if (text.size() == 1) text += ' ';  // a single character would be taken for the end mark
  text.resize(std::min<std::size_t>(text.size(), Fru::kLengthMask));
  area.push_back(static_cast<std::uint8_t>(Fru::kText << Fru::kTypeShift | text.size()));
  area.insert(area.end(), text.begin(), text.end());
}

TData ProductArea(const std::string& machineType) {
  TData area = {Fru::kVersion, 0, Fru::kEnglish};
  for (const std::string& text : {std::string("velhost"), std::string("Simulated server"), machineType}) {
    AppendField(area, text);
  }
  for (int i = 0; i < 4; ++i) AppendField(area, "");  // version, serial number, asset tag, FRU file
  area.push_back(Fru::kEndOfFields);
  while ((area.size() + 1) % Fru::kAreaUnit != 0) area.push_back(0);
  area[Fru::kAreaLength] = static_cast<std::uint8_t>((area.size() + 1) / Fru::kAreaUnit);
  AppendChecksum(area);
  return area;
}

}  // namespace

TData FruInventory(const std::string& machineType) {
  TData inventory(Fru::kHeaderSize - 1);
  inventory[0] = Fru::kVersion;
  inventory[Fru::kProductAreaOffset] = Fru::kHeaderSize / Fru::kAreaUnit;
  AppendChecksum(inventory);
  const TData area = ProductArea(machineType);
  inventory.insert(inventory.end(), area.begin(), area.end());
  return inventory;
}

}  // namespace velhost
