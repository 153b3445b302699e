// The byte order of a register value; every index was worked out by hand.
#include <gtest/gtest.h>

#include "r8/r8errordata.h"
#include "tests/support/namespaces.h"
#include "tests/support/plugintest.h"

namespace tests {
namespace {

class Conversion : public TPartTest {
 protected:
  Conversion() : collector((ns->AddClass(TClassBuilder("CHIP")), Class("CHIP"))) {}

  TBytes Convert(const std::string& machineType, TBytes bytes, unsigned int mode, unsigned int address = 0x99123456) {
    SetMachineType(machineType);
    collector.ConvertToBigEndian(&bytes, address, mode);
    return bytes;
  }

  R8ErrorData collector;
};

// Byte i is 0xA0 + i.
const TBytes kSource = {0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xAB, 0xAC, 0xAD};

TEST_F(Conversion, EightByteFamily) {
  EXPECT_EQ(Convert("4411", kSource, 0),
            (TBytes{0x12, 0x34, 0x56, 0xA7, 0xA6, 0xA5, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0}));
  // Folded: A0|A4, A1|A5, A2|A6, A3|A7 = A4, A5, A6, A7.
  EXPECT_EQ(Convert("4411", kSource, 4),
            (TBytes{0x12, 0x34, 0x56, 0xA7, 0xA6, 0xA5, 0xA4, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}));
}

TEST_F(Conversion, LabelledFamily) {
  EXPECT_EQ(Convert("6203", kSource, 0),
            (TBytes{0x12, 0x34, 0x56, 0xAC, 0xAB, 0xAA, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0}));
  // Byte 2 is folded with byte 6: A2|A6 = A6.
  EXPECT_EQ(Convert("6203", kSource, 4),
            (TBytes{0x12, 0x34, 0x56, 0xA8, 0xA7, 0xA6, 0xA6, 0, 0, 0, 0xEF, 0xFE, 0xFE, 0xEF}));
}

TEST_F(Conversion, IntermediateModesFollowTheSameFormulas) {
  EXPECT_EQ(Convert("4414", kSource, 1),
            (TBytes{0x12, 0x34, 0x56, 0xA6, 0xA5, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("4414", kSource, 2), (TBytes{0x12, 0x34, 0x56, 0xA5, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("4414", kSource, 3), (TBytes{0x12, 0x34, 0x56, 0xA4, 0xA3, 0xA2, 0xA1, 0xA0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("", kSource, 1), (TBytes{0x12, 0x34, 0x56, 0xAB, 0xAA, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("", kSource, 2), (TBytes{0x12, 0x34, 0x56, 0xAA, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Convert("", kSource, 3), (TBytes{0x12, 0x34, 0x56, 0xA9, 0xA8, 0xA7, 0xA6, 0xA2, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Conversion, WiderModesChangeNothing) {
  for (const unsigned int mode : {5U, 8U, 0xFFFFFFFFU}) EXPECT_EQ(Convert("4411", kSource, mode), kSource);
}

TEST_F(Conversion, OnlyFourteenBytesAreConverted) {
  for (const std::size_t size : {0U, 1U, 13U, 15U, 28U}) {
    const TBytes bytes(size, 0x5A);
    EXPECT_EQ(Convert("6203", bytes, 0), bytes);
    EXPECT_EQ(Convert("4411", bytes, 4), bytes);
  }
}

TEST_F(Conversion, FourMachineTypesFormTheEightByteFamily) {
  for (const char* const type : {"4411", "4414", "4523", "4524"})
    EXPECT_EQ(Convert(type, kSource, 0)[10], 0xA0) << type;
  for (const char* const type : {"", "6203", "4412", "441", "44111", " 4411", "4525"}) {
    EXPECT_EQ(Convert(type, kSource, 0)[10], 0xA2) << type;
  }
}

}  // namespace
}  // namespace tests
