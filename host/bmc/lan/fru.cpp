#include "host/bmc/lan/fru.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <boost/endian/conversion.hpp>
#include <numeric>
#include <string_view>
#include <vector>

#include "host/base/digits.h"
#include "host/base/utf8.h"
#include "wire/fru.h"

namespace velhost {

namespace {

namespace Fru = wire::Fru;
using boost::endian::load_little_u16;
using TBytes = std::span<const std::uint8_t>;
using TData = std::vector<std::uint8_t>;

constexpr std::size_t kChunk = 16;  // more does not fit into every BMC's messages

/// Why the inventory, or the rest of it, cannot be used.
struct TDefect {
  std::string text;
  bool isLost = false;
};

void CheckVersionAndSum(TBytes bytes, const std::string& what) {
  const unsigned version = bytes[0] & Fru::kVersionMask;
  if (version != Fru::kVersion) throw TDefect{fmt::format("{} has format version {}, expected 1", what, version)};
  const unsigned sum = std::accumulate(bytes.begin(), bytes.end(), 0U);
  if (sum % 256 != 0) throw TDefect{what + " has a wrong checksum"};
}

std::size_t OffsetOfProductArea(TBytes header) {
  if (header.size() < Fru::kHeaderSize) throw TDefect{"its common header is cut short"};
  CheckVersionAndSum(header.first(Fru::kHeaderSize), "its common header");
  if (header[Fru::kProductAreaOffset] == 0) throw TDefect{"it has no product area"};
  return header[Fru::kProductAreaOffset] * Fru::kAreaUnit;
}

/// The area without what follows it.
TBytes CheckedArea(TBytes bytes) {
  const std::size_t size = bytes.size() > Fru::kAreaLength ? bytes[Fru::kAreaLength] * Fru::kAreaUnit : 0;
  if (size == 0 || size > bytes.size()) throw TDefect{"its product area is cut short"};
  CheckVersionAndSum(bytes.first(size), "its product area");
  return bytes.first(size);
}

std::string BcdPlusText(TBytes bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += Fru::kBcdPlusDigits.at(byte >> 4U);
    text += Fru::kBcdPlusDigits.at(byte & 0x0FU);
  }
  return text;
}

/// Six bits a character, beginning with the least significant ones of the first byte.
std::string SixBitText(TBytes bytes) {
  std::string text;
  unsigned bits = 0;
  unsigned count = 0;
  for (const std::uint8_t byte : bytes) {
    bits |= static_cast<unsigned>(byte) << count;
    for (count += 8; count >= 6; count -= 6, bits >>= 6U) text += static_cast<char>(' ' + (bits & 0x3FU));
  }
  return text;
}

std::string CharacterText(TBytes bytes, std::size_t characterSize) {
  std::string text;
  for (std::size_t i = 0; i + characterSize <= bytes.size(); i += characterSize) {
    AppendUtf8(text, characterSize == 1 ? bytes[i] : load_little_u16(bytes.subspan(i, 2).data()));
  }
  return text;
}

std::string FieldText(unsigned type, TBytes content, std::uint8_t language) {
  const bool isEnglish = language == 0 || language == Fru::kEnglish;
  std::string text;
  switch (type) {
    case Fru::kBcdPlus: text = BcdPlusText(content); break;
    case Fru::kSixBitAscii: text = SixBitText(content); break;
    case Fru::kText: text = CharacterText(content, isEnglish ? 1 : 2); break;
    default: break;
  }
  constexpr std::string_view kPadding("\0 ", 2);
  text.erase(text.find_last_not_of(kPadding) + 1);
  return text.erase(0, std::min(text.find_first_not_of(kPadding), text.size()));
}

void ReadFields(TBytes area, TFruProduct& product) {
  std::string ignored;
  std::string* const texts[] = {&ignored, &product.name, &product.partNumber, &ignored, &product.serialNumber};
  TBytes rest = area.first(area.size() - 1).subspan(Fru::kAreaFields);  // without the checksum
  for (std::string* const text : texts) {
    if (rest.empty()) throw TDefect{"the fields of its product area have no end"};
    const std::uint8_t typeAndLength = rest[0];
    if (typeAndLength == Fru::kEndOfFields) return;
    const std::size_t length = typeAndLength & Fru::kLengthMask;
    if (length >= rest.size()) throw TDefect{"a field of its product area reaches beyond the area"};
    *text = FieldText(typeAndLength >> Fru::kTypeShift, rest.subspan(1, length), area[Fru::kAreaLanguage]);
    rest = rest.subspan(1 + length);
  }
}

/// Reads bytes of a node's FRU 0. Throws TDefect if the node does not return them.
class TFruReader {
 public:
  TFruReader(IServiceProcessor& processor, int node, const TStopSignal& stop)
      : processor_(processor), node_(node), stop_(stop) {
    const TData info = Ask(Fru::kGetInventoryInfo, {Fru::kDevice}, Fru::kInfoSize);
    size_ = load_little_u16(info.data());
    if ((info[Fru::kInfoAccess] & Fru::kAccessByWords) != 0) unit_ = 2;
  }

  /// `begin` and `end` are multiples of 8.
  TData Read(std::size_t begin, std::size_t end) {
    if (end > size_) throw TDefect{fmt::format("it has {} bytes, and its areas reach to byte {}", size_, end)};
    TData bytes;
    while (begin + bytes.size() < end) Append(begin + bytes.size(), end, bytes);
    return bytes;
  }

 private:
  void Append(std::size_t at, std::size_t end, TData& bytes) {
    const std::size_t offset = at / unit_;
    const std::size_t count = std::min(kChunk, end - at) / unit_;
    const auto low = static_cast<std::uint8_t>(offset & 0xFFU);
    const auto high = static_cast<std::uint8_t>(offset >> 8U);
    const TData answer = Ask(Fru::kReadData, {Fru::kDevice, low, high, static_cast<std::uint8_t>(count)}, 1);
    const std::size_t returned = answer[0];
    if (returned == 0 || returned > count || Fru::kReadResponseData + returned * unit_ > answer.size()) {
      throw TDefect{fmt::format("a read of {} bytes returned {}", count * unit_, returned * unit_)};
    }
    const auto begin = answer.begin() + Fru::kReadResponseData;
    bytes.insert(bytes.end(), begin, begin + static_cast<std::ptrdiff_t>(returned * unit_));
  }

  /// The data of the answer, which has at least `least` bytes.
  TData Ask(std::uint8_t command, const TData& data, std::size_t least) {
    const auto answer = processor_.SendIpmi(TIpmiRequest(node_, Fru::kNetworkFunction, 0, command, data), stop_);
    if (!answer) throw TDefect{"a request for it got no answer", true};
    if (answer->completionCode != wire::TCommandBuffer::kSuccess) {
      throw TDefect{"the BMC refused to return it (completion code " + HexByte(answer->completionCode) + ")"};
    }
    if (answer->data.size() < least) throw TDefect{"an answer with it is too short"};
    return answer->data;
  }

  IServiceProcessor& processor_;
  int node_;
  const TStopSignal& stop_;
  std::size_t size_ = 0;
  std::size_t unit_ = 1;
};

}  // namespace

std::optional<std::size_t> ProductAreaOffset(std::span<const std::uint8_t> header, std::string& defect) {
  try {
    return OffsetOfProductArea(header);
  } catch (const TDefect& found) {
    defect = found.text;
    return std::nullopt;
  }
}

TFruProduct ParseProductArea(std::span<const std::uint8_t> area) {
  TFruProduct product;
  try {
    ReadFields(CheckedArea(area), product);
  } catch (const TDefect& found) {
    product.defect = found.text;
  }
  return product;
}

TFruProduct ReadFruProduct(IServiceProcessor& processor, int node, const TStopSignal& stop) {
  TFruProduct product;
  try {
    TFruReader reader(processor, node, stop);
    const std::size_t begin = OffsetOfProductArea(reader.Read(0, Fru::kHeaderSize));
    const std::size_t size = reader.Read(begin, begin + Fru::kAreaUnit)[Fru::kAreaLength] * Fru::kAreaUnit;
    return ParseProductArea(reader.Read(begin, begin + size));
  } catch (const TDefect& found) {
    product.defect = found.text;
    product.isLost = found.isLost;
  }
  return product;
}

}  // namespace velhost
