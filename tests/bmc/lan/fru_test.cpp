#include "host/bmc/lan/fru.h"

#include <deque>
#include <numeric>

#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Appends the byte that makes the sum of all zero.
TBytes WithChecksum(TBytes bytes) {
  bytes.push_back(static_cast<std::uint8_t>(256 - std::accumulate(bytes.begin(), bytes.end(), 0) % 256));
  return bytes;
}

/// A product area of this many bytes, with the correct length and checksum.
TBytes AreaOf(std::size_t size, std::uint8_t language, const TBytes& fields) {
  TBytes area = {0x01, static_cast<std::uint8_t>(size / 8), language};
  area.insert(area.end(), fields.begin(), fields.end());
  area.resize(size - 1);
  return WithChecksum(area);
}

TBytes Joined(TBytes first, const TBytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

const TBytes kHeader = {0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0xFE};

// Manufacturer "Ace", product name "IPMI" in 6-bit ASCII, part number 6203 in BCD plus, no version, serial number
// "S1 ", no asset tag, no FRU file.
const TBytes kArea = {0x01, 0x04, 0x00, 0xC3, 0x41, 0x63, 0x65, 0x83, 0x29, 0xDC, 0xA6, 0x42, 0x62, 0x03, 0xC0, 0xC3,
                      0x53, 0x31, 0x20, 0xC0, 0xC0, 0xC1, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xF2};

/// A BMC that only has a FRU inventory.
class TInventory : public IServiceProcessor {
 public:
  explicit TInventory(TBytes inventory) : bytes(std::move(inventory)) {}
  TBytes bytes;
  std::uint8_t access = 0;         ///< 1: by words
  int completionCode = 0;          ///< of reads
  std::size_t most = 255;          ///< bytes of an answer
  std::size_t answers = SIZE_MAX;  ///< requests that are answered
  std::vector<TBytes> requests;    ///< network function, command, data

  TDiscovery Discover() override { return {1, true}; }
  std::optional<TIpmiAnswer> SendIpmi(const TIpmiRequest& request, const TStopSignal& /*stop*/) override {
    const TBytes data(request.Data().begin(), request.Data().end());
    requests.push_back(Joined({request.NetworkFunction(), request.Command()}, data));
    if (requests.size() > answers) return std::nullopt;
    if (request.Command() == 0x10) {
      return TIpmiAnswer{
          0, {static_cast<std::uint8_t>(bytes.size() & 0xFF), static_cast<std::uint8_t>(bytes.size() >> 8), access}};
    }
    if (completionCode != 0) return TIpmiAnswer{static_cast<std::uint8_t>(completionCode)};
    const std::size_t unit = access == 1 ? 2 : 1;
    const std::size_t at = (data[1] + 256U * data[2]) * unit;
    const std::size_t count = std::min({data[3] * unit, most, bytes.size() - std::min(at, bytes.size())});
    TBytes answer = {static_cast<std::uint8_t>(count / unit)};
    answer.insert(answer.end(), bytes.begin() + static_cast<long>(at), bytes.begin() + static_cast<long>(at + count));
    return TIpmiAnswer{0, answer};
  }
};

TFruProduct Read(TInventory& inventory) {
  const TStopSignal never;
  return ReadFruProduct(inventory, 0, never);
}

std::string DefectOf(TInventory inventory) { return Read(inventory).defect; }

TEST(FruProductArea, GivesNamePartNumberAndSerialNumber) {
  const TFruProduct product = ParseProductArea(kArea);
  EXPECT_EQ(product.name, "IPMI");
  EXPECT_EQ(product.partNumber, "6203");
  EXPECT_EQ(product.serialNumber, "S1");
  EXPECT_EQ(product.defect, "");
}

TEST(FruProductArea, IsNotUsedUnlessItIsWhole) {
  for (std::size_t size = 0; size < kArea.size(); ++size) {
    // An exact-size copy, so that a sanitizer detects reads past the end.
    const TFruProduct product = ParseProductArea(TBytes(kArea.begin(), kArea.begin() + static_cast<long>(size)));
    EXPECT_EQ(product.partNumber, "") << size;
    EXPECT_EQ(product.defect, "its product area is cut short") << size;
  }
  EXPECT_EQ(ParseProductArea(Joined(kArea, {0xFF})).partNumber, "6203");
}

TEST(FruProductArea, ReadsEveryTypeOfText) {
  const auto nameOf = [](std::uint8_t language, const TBytes& field) {
    return ParseProductArea(AreaOf(24, language, Joined(Joined({0xC0}, field), {0xC1}))).name;
  };
  EXPECT_EQ(nameOf(25, {0xC3, 0x41, 0xE4, 0x42}), "A\u00e4B");
  EXPECT_EQ(nameOf(9, {0xC4, 0x41, 0x00, 0xE4, 0x16}), "A\u16e4");
  EXPECT_EQ(nameOf(9, {0xC3, 0x41, 0x00, 0xE4}), "A");
  EXPECT_EQ(nameOf(9, {0xC2, 0x00, 0xD8}), "\uFFFD");
  EXPECT_EQ(nameOf(0, {0x82, 0x29, 0xDC}), "IP");
  EXPECT_EQ(nameOf(0, {0x81, 0x3F}), "_");
  EXPECT_EQ(nameOf(0, {0x44, 0x01, 0x9B, 0xCD, 0xEF}), "019-.???");
  EXPECT_EQ(nameOf(0, {0x02, 0x36, 0x32}), "");
}

TEST(FruProductArea, TextsHaveNoPadding) {
  const auto area = AreaOf(16, 0, {0xC0, 0xC6, 0x20, 0x00, 0x41, 0x20, 0x42, 0x00, 0xC2, 0x20, 0x20, 0xC1});
  EXPECT_EQ(ParseProductArea(area).name, "A B");
  EXPECT_EQ(ParseProductArea(area).partNumber, "");
}

TEST(FruProductArea, MayEndAfterAnyField) {
  const TFruProduct product = ParseProductArea(AreaOf(8, 0, {0xC0, 0xC2, 0x41, 0x42}));
  EXPECT_EQ(product.defect, "the fields of its product area have no end");
  EXPECT_EQ(product.name, "AB");
  EXPECT_EQ(ParseProductArea(AreaOf(8, 0, {0xC0, 0xC1, 0x41, 0x42})).defect, "");
  EXPECT_EQ(ParseProductArea(AreaOf(8, 0, {0xC1, 0xFF, 0xFF, 0xFF})).defect, "");
}

TEST(FruProductArea, FieldsStayInside) {
  EXPECT_EQ(ParseProductArea(AreaOf(8, 0, {0xC3, 0x41, 0x42, 0x43})).defect,
            "the fields of its product area have no end");
  EXPECT_EQ(ParseProductArea(AreaOf(8, 0, {0xC4, 0x41, 0x42, 0x43})).defect,
            "a field of its product area reaches beyond the area");
  EXPECT_EQ(ParseProductArea(AreaOf(8, 0, {0xC2, 0x41, 0x42, 0xFF})).defect,
            "a field of its product area reaches beyond the area");
}

TEST(FruProductArea, NeedsItsVersionAndChecksum) {
  for (std::size_t i = 2; i < kArea.size(); ++i) {
    TBytes area = kArea;
    area[i] = static_cast<std::uint8_t>(area[i] + 1);
    EXPECT_EQ(ParseProductArea(area).defect, "its product area has a wrong checksum") << i;
    EXPECT_EQ(ParseProductArea(area).partNumber, "") << i;
  }
  TBytes area = kArea;
  area[0] = 0x02;
  EXPECT_EQ(ParseProductArea(area).defect, "its product area has format version 2, expected 1");
}

TEST(FruHeader, GivesTheOffsetOfTheProductArea) {
  std::string defect;
  EXPECT_EQ(ProductAreaOffset(kHeader, defect), 8U);
  EXPECT_EQ(ProductAreaOffset(WithChecksum({0x01, 0, 0x01, 0, 0xFF, 0, 0}), defect), 2040U);
  EXPECT_EQ(defect, "");
  for (std::size_t size = 0; size < 8; ++size) {
    EXPECT_EQ(ProductAreaOffset(TBytes(kHeader.begin(), kHeader.begin() + static_cast<long>(size)), defect),
              std::nullopt);
    EXPECT_EQ(defect, "its common header is cut short");
  }
}

TEST(FruHeader, IsRefusedWithItsDefect) {
  std::string defect;
  EXPECT_EQ(ProductAreaOffset(TBytes{0x01, 0, 0, 0, 0x01, 0, 0, 0xFF}, defect), std::nullopt);
  EXPECT_EQ(defect, "its common header has a wrong checksum");
  EXPECT_EQ(ProductAreaOffset(TBytes{0x00, 0, 0, 0, 0x00, 0, 0, 0x00}, defect), std::nullopt);
  EXPECT_EQ(defect, "its common header has format version 0, expected 1");
  EXPECT_EQ(ProductAreaOffset(TBytes{0x01, 0, 0, 0, 0x00, 0, 0, 0xFF}, defect), std::nullopt);
  EXPECT_EQ(defect, "it has no product area");
}

TEST(FruReading, AsksForSixteenBytesAtATime) {
  TInventory inventory(Joined(kHeader, kArea));
  EXPECT_EQ(Read(inventory).partNumber, "6203");
  EXPECT_THAT(inventory.requests,
              ElementsAre(TBytes{0x0A, 0x10, 0x00}, TBytes{0x0A, 0x11, 0x00, 0x00, 0x00, 0x08},
                          TBytes{0x0A, 0x11, 0x00, 0x08, 0x00, 0x08}, TBytes{0x0A, 0x11, 0x00, 0x08, 0x00, 0x10},
                          TBytes{0x0A, 0x11, 0x00, 0x18, 0x00, 0x10}));
}

TEST(FruReading, CountsInWordsIfTheInventoryDoes) {
  TInventory inventory(Joined(kHeader, kArea));
  inventory.access = 1;
  EXPECT_EQ(Read(inventory).partNumber, "6203");
  EXPECT_THAT(inventory.requests,
              ElementsAre(TBytes{0x0A, 0x10, 0x00}, TBytes{0x0A, 0x11, 0x00, 0x00, 0x00, 0x04},
                          TBytes{0x0A, 0x11, 0x00, 0x04, 0x00, 0x04}, TBytes{0x0A, 0x11, 0x00, 0x04, 0x00, 0x08},
                          TBytes{0x0A, 0x11, 0x00, 0x0C, 0x00, 0x08}));
}

TEST(FruReading, ContinuesAfterAShortAnswer) {
  TInventory inventory(Joined(kHeader, kArea));
  inventory.most = 5;
  EXPECT_EQ(Read(inventory).partNumber, "6203");
  EXPECT_EQ(inventory.requests.size(), 1U + 2 + 2 + 7);
}

TEST(FruReading, EndsAtAnAnswerWithoutData) {
  TInventory inventory(Joined(kHeader, kArea));
  inventory.most = 0;
  EXPECT_EQ(Read(inventory).defect, "a read of 8 bytes returned 0");
  EXPECT_EQ(inventory.requests.size(), 2U);
}

TEST(FruReading, EndsAtTheFirstLostRequest) {
  for (std::size_t answers = 0; answers < 5; ++answers) {
    TInventory inventory(Joined(kHeader, kArea));
    inventory.answers = answers;
    const TFruProduct product = Read(inventory);
    EXPECT_TRUE(product.isLost);
    EXPECT_EQ(product.defect, "a request for it got no answer");
    EXPECT_EQ(product.partNumber, "");
    EXPECT_EQ(inventory.requests.size(), answers + 1);
  }
}

TEST(FruReading, ReadsNothingBeyondTheInventory) {
  const TBytes whole = Joined(kHeader, kArea);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const std::string end = size < 8 ? "8" : size < 16 ? "16" : "40";
    EXPECT_EQ(DefectOf(TInventory(TBytes(whole.begin(), whole.begin() + static_cast<long>(size)))),
              "it has " + std::to_string(size) + " bytes, and its areas reach to byte " + end);
  }
}

TEST(FruReading, NamesTheCompletionCode) {
  TInventory busy(Joined(kHeader, kArea));
  busy.completionCode = 0x81;
  EXPECT_EQ(DefectOf(busy), "the BMC refused to return it (completion code 0x81)");
  EXPECT_FALSE(Read(busy).isLost);
}

}  // namespace
}  // namespace tests
