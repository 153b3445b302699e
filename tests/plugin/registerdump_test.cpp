// The decimal dumps of the trace. All four functions return the same text.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "jfr/TJFRErrorData.h"
#include "jfr/TNOVRequesttorgareg.h"
#include "plugin/registerdump.h"
#include "r8/ipmirequesttorgareg.h"
#include "r8/r8errordata.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

struct TDump {
  const char* name;
  std::string (*print)(unsigned char*, unsigned long);
};
void PrintTo(const TDump& dump, std::ostream* out) { *out << dump.name; }

class RegisterDump : public ::testing::TestWithParam<TDump> {
 protected:
  static std::string Dump(std::vector<unsigned char> bytes) { return GetParam().print(bytes.data(), bytes.size() - 1); }
};

INSTANTIATE_TEST_SUITE_P(AllNames, RegisterDump,
                         ::testing::Values(TDump{"printArray", &printArray}, TDump{"printArray0", &printArray0},
                                           TDump{"print2Array", &print2Array}, TDump{"printArray2", &printArray2}));

TEST_P(RegisterDump, LastZeroPrintsOneByte) {
  EXPECT_EQ(Dump({7}), "\n7 \n");
  EXPECT_EQ(Dump({0}), "\n0 \n");
}

TEST_P(RegisterDump, BytesAreDecimalEachFollowedByASpace) {
  EXPECT_EQ(Dump({1, 2, 255}), "\n1 2 255 \n");
  EXPECT_EQ(Dump({9, 10, 99, 100, 127, 128}), "\n9 10 99 100 127 128 \n");
}

TEST_P(RegisterDump, EveryValueHasItsOwnText) {
  for (unsigned int value = 0; value < 256; ++value) {
    EXPECT_EQ(Dump({static_cast<unsigned char>(value)}), "\n" + std::to_string(value) + " \n");
  }
}

TEST_P(RegisterDump, EachLineHasEightValues) {
  EXPECT_EQ(Dump({1, 2, 3, 4, 5, 6, 7, 8}), "\n1 2 3 4 5 6 7 8 \n");
  EXPECT_EQ(Dump({0, 0, 0, 0, 0, 0, 0, 0, 0}), "\n0 0 0 0 0 0 0 0 \n0 \n");
  EXPECT_EQ(Dump({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}),
            "\n1 2 3 4 5 6 7 8 \n9 10 11 12 13 14 15 16 \n17 \n");
}

TEST_P(RegisterDump, LinesOfZerosMayBeBetweenOthers) {
  EXPECT_EQ(Dump({0,   0,   0,   0,   0,   0,   0,   1,    //
                  0,   0,   0,   0,   0,   0,   0,   0,    //
                  255, 255, 255, 255, 255, 255, 255, 255,  //
                  0,   0,   0,   0,   0,   0,   0,   0,    //
                  0,   200}),
            "\n0 0 0 0 0 0 0 1 \n0 0 0 0 0 0 0 0 \n255 255 255 255 255 255 255 255 \n0 0 0 0 0 0 0 0 \n0 200 \n");
  EXPECT_EQ(Dump({1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "\n1 0 0 0 0 0 0 0 \n0 0 0 0 0 0 0 0 \n");
}

TEST_P(RegisterDump, OnlyItsOwnBytesMakeALineOfZeros) {
  std::vector<unsigned char> bytes = {255, 0, 0, 0, 0, 0, 0, 0,  //
                                      0,   0, 0, 0, 0, 0, 0, 0,  //
                                      0,   1};
  EXPECT_EQ(GetParam().print(bytes.data(), 15), "\n255 0 0 0 0 0 0 0 \n0 0 0 0 0 0 0 0 \n");
}

TEST_P(RegisterDump, LastIsAnIndexOfAnyWidth) {
  // 8 values of two characters and a newline make a line of 17 characters.
  EXPECT_EQ(Dump(std::vector<unsigned char>(257, 0)).size(), 32 * 17 + 3 + 1U);
  EXPECT_EQ(Dump(std::vector<unsigned char>(4097, 0)).size(), 512 * 17 + 3 + 1U);
  EXPECT_EQ(Dump(std::vector<unsigned char>(65536, 0)).size(), 8192 * 17 + 1U);
  EXPECT_EQ(Dump(std::vector<unsigned char>(70001, 0)).size(), 8750 * 17 + 3 + 1U);
}

TEST(Decimals, AreOnOneLine) {
  const std::vector<unsigned char> bytes = {1, 2, 3, 4, 5, 6, 7, 8, 10, 255};
  std::string text = "data:";
  appendDecimals(text, bytes.data(), bytes.size());
  EXPECT_EQ(text, "data:1 2 3 4 5 6 7 8 10 255 ");
  appendDecimals(text, bytes.data(), 0);
  EXPECT_EQ(text, "data:1 2 3 4 5 6 7 8 10 255 ");
}

TEST(HexPairs, AreTwoLowerCaseDigitsAndASpace) {
  const std::vector<unsigned char> bytes = {0x00, 0x0A, 0xFF, 0x7B};
  std::string text = "data:";
  appendHexPairs(text, bytes.data(), bytes.size());
  EXPECT_EQ(text, "data:00 0a ff 7b ");
  appendHexPairs(text, bytes.data(), 0);
  EXPECT_EQ(text, "data:00 0a ff 7b ");
}

}  // namespace
}  // namespace tests
