// The chunk loop of a storage-area read.
#include <gtest/gtest.h>

#include <limits>

#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

const TBytes kHandle = {1, 2, 3, 4};

// Ten bytes counting up from `first`.
TBytes Counting(std::uint8_t first, std::size_t count = 10) {
  TBytes bytes;
  for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(first + i));
  return bytes;
}

class ReadLoop : public TPluginTest {
 protected:
  // Reads into a buffer of exactly the size that the contract requires, so that a sanitizer detects any
  // overrun.
  int Read(int size) {
    out.assign(static_cast<std::size_t>(std::max(size, 10)), 0);
    unsigned char handle[4] = {1, 2, 3, 4};
    return plugin.ReadStorageArea(size, handle, out.data(), SPLibrary::GetSplibraryInstance(0));
  }
  void Chunk(std::uint32_t offset, std::uint8_t count, const TBytes& data) {
    sp.Expect(tests::Read(kHandle, offset, count).Answers(ReadData(data)));
  }

  TBytes out;
};

TEST_F(ReadLoop, TheWholeTraceOfOneChunk) {
  sp.Expect(Ipmi(0, {0x01, 0x20, 0x2E, 0x00, 0x90, 0x0E, 0x00, 0x00, 0x00, 0x39, 0x30, 0x00,
                     0x02, 1,    2,    3,    4,    0,    0,    0,    0,    0x0A, 0x00})
                .Answers({0x39, 0x30, 0x00, 0x0A, 0x00, 0x0A, 0xFF, 0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(Read(10), 10);
  EXPECT_EQ(out, (TBytes{0x0A, 0xFF, 0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(
      logger.Lines(),
      (std::vector<TLine>{
          Debug("Enter ReadStorageArea funtion"),
          Debug("ReadStorageArea IPMI command data:01 20 2e 00 90 0e 00 00 00 39 30 00 02 01 02 03 04 00 00 00 00 "
                "0a 00 "),
          Debug("completeCode:0\n"),
          Debug("Response raw data size:10, loopoffset:0, raw data info:0a ff 00 01 02 03 04 05 06 07 "),
          Debug("returned smbioslen:10\n"), Debug("Exit ReadStorageArea funtion")}));
}

TEST_F(ReadLoop, ASizeOf25ReadsTenTenAndFive) {
  Chunk(0, 10, Counting(1));
  Chunk(10, 10, Counting(11));
  Chunk(20, 5, Counting(21, 5));
  EXPECT_EQ(Read(25), 25);
  EXPECT_EQ(out, Counting(1, 25));
  EXPECT_EQ(logger.StartingWith("Response"),
            (std::vector<TLine>{
                Debug("Response raw data size:10, loopoffset:0, raw data info:01 02 03 04 05 06 07 08 09 0a "),
                Debug("Response raw data size:10, loopoffset:1, raw data info:0b 0c 0d 0e 0f 10 11 12 13 14 "),
                Debug("Response raw data size:5, loopoffset:2, raw data info:15 16 17 18 19 ")}));
  EXPECT_EQ(logger.StartingWith("ReadStorageArea IPMI").back(),
            Debug("ReadStorageArea IPMI command data:01 20 2e 00 90 0e 00 00 00 39 30 00 02 01 02 03 04 14 00 00 00 05 "
                  "00 "));
  EXPECT_EQ(logger.Lines().size(), 1 + 3 * 3 + 2U);
}

TEST_F(ReadLoop, ASizeOf20ReadsTwoChunks) {
  Chunk(0, 10, Counting(1));
  Chunk(10, 10, Counting(11));
  EXPECT_EQ(Read(20), 20);
  EXPECT_EQ(out, Counting(1, 20));
}

TEST_F(ReadLoop, ASizeOf11ReadsTenAndOne) {
  Chunk(0, 10, Counting(1));
  Chunk(10, 1, {99});
  EXPECT_EQ(Read(11), 11);
  EXPECT_EQ(out[10], 99);
}

TEST_F(ReadLoop, ASmallSizeStillReadsTenBytesAndReturnsTen) {
  for (const int size : {0, 1, 5, 9}) {
    Chunk(0, 10, Counting(1));
    EXPECT_EQ(Read(size), 10);
    EXPECT_EQ(out, Counting(1));
  }
}

TEST_F(ReadLoop, TheOffsetIsLittleEndianInFourBytes) {
  // 70010 bytes: the last chunk starts at 70000 = 0x011170.
  for (std::uint32_t offset = 0; offset < 70010; offset += 10)
    Chunk(offset, 10, Counting(static_cast<std::uint8_t>(offset)));
  EXPECT_EQ(Read(70010), 70010);
  EXPECT_EQ(out[70000], 0x70);
  const auto requests = logger.StartingWith("ReadStorageArea IPMI");
  ASSERT_EQ(requests.size(), 7001U);
  EXPECT_TRUE(requests.back().message.ends_with("01 02 03 04 70 11 01 00 0a 00 "));
  EXPECT_EQ(logger.StartingWith("Response raw").back(),
            Debug("Response raw data size:10, loopoffset:7000, raw data info:70 71 72 73 74 75 76 77 78 79 "));
  EXPECT_EQ(logger.StartingWith("returned").back(), Debug("returned smbioslen:70010\n"));
}

TEST_F(ReadLoop, ACompletionCodeEndsItAtAnyChunk) {
  for (std::uint32_t failing = 0; failing < 3; ++failing) {
    logger.Clear();
    for (std::uint32_t chunk = 0; chunk < failing; ++chunk) Chunk(chunk * 10, 10, Counting(1));
    const std::uint8_t count = failing == 2 ? 5 : 10;
    sp.Expect(tests::Read(kHandle, failing * 10, count).Fails(0xC9));
    EXPECT_EQ(Read(25), static_cast<int>(failing) * 10);
    EXPECT_EQ(logger.StartingWith("Response").size(), failing);
    EXPECT_EQ(logger.StartingWith("completeCode:").back(), Debug("completeCode:c9\n"));
    const auto& lines = logger.Lines();
    EXPECT_EQ(lines[lines.size() - 2], Debug("returned smbioslen:" + std::to_string(failing * 10) + "\n"));
    EXPECT_EQ(lines.back(), Debug("Exit ReadStorageArea funtion"));
    for (std::size_t i = failing * 10; i < out.size(); ++i) EXPECT_EQ(out[i], 0) << i;
  }
}

TEST_F(ReadLoop, CompletionCodesAreHexadecimalWithoutLeadingZeros) {
  for (const auto& [code, text] : std::vector<std::pair<std::uint8_t, std::string>>{
           {0x01, "1"}, {0x0F, "f"}, {0x10, "10"}, {0xAB, "ab"}, {0xFF, "ff"}}) {
    logger.Clear();
    sp.Expect(tests::Read(kHandle, 0, 10).Fails(code));
    EXPECT_EQ(Read(10), 0);
    EXPECT_EQ(logger.Lines()[2], Debug("completeCode:" + text + "\n"));
  }
}

// Without an answer, the buffer still holds the request, whose byte 4 is the command.
TEST_F(ReadLoop, ALostAnswerShowsTheCommandAsItsCode) {
  Chunk(0, 10, Counting(1));
  sp.Expect(tests::Read(kHandle, 10, 10).Lost());
  EXPECT_EQ(Read(30), 10);
  EXPECT_EQ(logger.StartingWith("completeCode:").back(), Debug("completeCode:90\n"));
}

// The length counts the whole response, so five less is always more than the data: the whole chunk is copied,
// including zeros from after the answer.
TEST_F(ReadLoop, FewerBytesLeaveZerosWhileTheOffsetMovesByTheChunk) {
  Chunk(0, 10, {7, 8, 9});
  Chunk(10, 10, Counting(11));
  EXPECT_EQ(Read(20), 20);
  EXPECT_EQ(out, (TBytes{7, 8, 9, 0, 0, 0, 0, 0, 0, 0, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}));
  EXPECT_EQ(logger.StartingWith("Response").front(),
            Debug("Response raw data size:10, loopoffset:0, raw data info:07 08 09 00 00 00 00 00 00 00 "));
}

TEST_F(ReadLoop, TheLengthDecidesHowMuchIsCopied) {
  // length 5 + n copies n bytes, at most the chunk; a length below 5 copies none.
  struct TCase {
    int length;
    std::size_t copied;
  };
  for (const TCase& one : {TCase{5, 0}, TCase{6, 1}, TCase{9, 4}, TCase{14, 9}, TCase{15, 10}, TCase{16, 10},
                           TCase{256, 10}, TCase{70000, 10}, TCase{4, 0}, TCase{0, 0}, TCase{-1, 0}, TCase{-70000, 0},
                           TCase{std::numeric_limits<int>::max(), 10}, TCase{std::numeric_limits<int>::min(), 0}}) {
    logger.Clear();
    sp.Expect(tests::Read(kHandle, 0, 10).Answers(ReadData(Counting(1))).WithLength(one.length));
    EXPECT_EQ(Read(10), 10);
    TBytes expected = Counting(1, one.copied);
    expected.resize(10);
    EXPECT_EQ(out, expected) << one.length;
    EXPECT_TRUE(logger.Lines()[3].message.starts_with("Response raw data size:" + std::to_string(one.copied) + ","))
        << logger.Lines()[3].message;
  }
}

TEST_F(ReadLoop, TheLastChunkIsLimitedToItsOwnLength) {
  Chunk(0, 10, Counting(1));
  Chunk(10, 3, Counting(50, 20));
  EXPECT_EQ(Read(13), 13);
  EXPECT_EQ(TBytes(out.begin() + 10, out.end()), (TBytes{50, 51, 52}));
  EXPECT_EQ(logger.StartingWith("Response").back(),
            Debug("Response raw data size:3, loopoffset:1, raw data info:32 33 34 "));
}

TEST_F(ReadLoop, ASizeJustBelowZeroReadsOneChunk) {
  for (const int size : {-1, -9}) {
    Chunk(0, 10, Counting(1));
    EXPECT_EQ(Read(size), 10);
  }
}

// The number of full chunks is negative, so the unsigned comparison never ends the loop.
TEST_F(ReadLoop, ANegativeSizeReadsOnUntilACodeEndsIt) {
  for (const int size : {-10, -25, std::numeric_limits<int>::min()}) {
    for (std::uint32_t chunk = 0; chunk < 40; ++chunk)
      Chunk(chunk * 10, 10, Counting(static_cast<std::uint8_t>(chunk + 1)));
    sp.Expect(tests::Read(kHandle, 400, 10).Fails(0xC9));
    EXPECT_EQ(Read(size), 400);
    EXPECT_EQ(out, Counting(1)) << "there is room for the first chunk alone";
  }
}

}  // namespace
}  // namespace tests
