// Compares the wire constants with the documented layouts.
#include "wire/commandbuffer.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/namespaces.h"
#include "wire/registerblock.h"
#include "wire/registerread.h"
#include "wire/storagearea.h"

namespace tests {
namespace {

TEST(CommandBuffer, StartsAllZeroWithOneSpareByte) {
  const wire::TCommandBuffer buffer;
  EXPECT_EQ(wire::TCommandBuffer::kSize, 256U);
  for (std::size_t i = 0; i <= 256; ++i) EXPECT_EQ(buffer[i], 0) << i;
  EXPECT_THROW(buffer[257], std::out_of_range);
}

TEST(CommandBuffer, ARequestFillsTheFieldsAtTheirOffsets) {
  const wire::TCommandBuffer request(0x3A, 0x62, 4);
  const unsigned char expected[] = {0x01, 0x20, 0x3A, 0x00, 0x62, 0x04, 0x00, 0x00, 0x00};
  for (std::size_t i = 0; i < 256; ++i) EXPECT_EQ(request.Data()[i], i < 9 ? expected[i] : 0) << i;
}

TEST(CommandBuffer, AResponseIsReadAtTheSameOffsets) {
  wire::TCommandBuffer response;
  response[4] = 0xC1;
  response[5] = 14;
  response.Data()[9] = 0xAB;
  EXPECT_EQ(response.CompletionCode(), 0xC1);
  EXPECT_EQ(response.DataLength(), 14);
  EXPECT_EQ(response[wire::TCommandBuffer::kData], 0xAB);
  EXPECT_EQ(wire::TCommandBuffer::kMaxData, 247U);
}

TEST(CommandBuffer, EqualityComparesEveryByte) {
  wire::TCommandBuffer a(0x3A, 0x62, 4);
  const wire::TCommandBuffer b = a;
  EXPECT_EQ(a, b);
  a[255] = 1;
  EXPECT_NE(a, b);
}

TEST(WireConstants, RegisterReads) {
  namespace Wire = wire::RegisterRead;
  EXPECT_EQ(Wire::kNetworkFunction, 0x3A);
  EXPECT_EQ(Wire::kRegisterRead, 0x62);
  EXPECT_EQ(Wire::kTimestampRead, 0x6F);
  EXPECT_EQ(Wire::kChipSelector, 9U);
  EXPECT_EQ(Wire::kAddress, 10U);
  EXPECT_EQ(Wire::kRequestSize, 4);
  EXPECT_EQ(Wire::kHeaderSize, 6U);
  EXPECT_EQ(Wire::kValue, 15U);
  EXPECT_EQ(Wire::kResponseSize, 14U);
  EXPECT_EQ(Wire::kTimestamp, 9U);
  EXPECT_EQ(Wire::kTimestampSize, 4U);
}

TEST(WireConstants, RegisterBlocks) {
  namespace Wire = wire::RegisterBlockCommand;
  EXPECT_EQ(Wire::kCommand, 0x02);
  EXPECT_EQ(Wire::kIdentifier[0], 0x0E);
  EXPECT_EQ(Wire::kIdentifier[1], 0x06);
  EXPECT_EQ(Wire::kParameterSize, 4U);
  EXPECT_EQ(Wire::kParameterBufferSize, 2U);
  EXPECT_EQ(Wire::kBlockSize, 4096U);
}

TEST(WireConstants, StorageAreas) {
  namespace Wire = wire::StorageArea;
  EXPECT_EQ(Wire::kNetworkFunction, 0x2E);
  EXPECT_EQ(Wire::kSubCommand, 12U);
  EXPECT_EQ(Wire::kOpenName, 21U);
  EXPECT_EQ(Wire::kQueryName, 13U);
  EXPECT_EQ(Wire::kHandle, 13U);
  EXPECT_EQ(Wire::kReadOffset, 17U);
  EXPECT_EQ(Wire::kReadCount, 21U);
  EXPECT_EQ(Wire::kNameSize, 25U);
  EXPECT_EQ(Wire::kResponseHandle, 12U);
  EXPECT_EQ(Wire::kResponseSize, 12U);
  EXPECT_EQ(Wire::kResponseData, 14U);
}

}  // namespace
}  // namespace tests
